#include <kovis/koKernelServiceFactory.h>

#include <QTemporaryFile>
#include <QtTest>

#include <cstdio>
#include <unistd.h>

class koProbeService : public koBaseService
{
    Q_OBJECT
};

class koUnregisteredService : public koBaseService
{
    Q_OBJECT
};

// Runs the call with the standard error stream sent to a file and returns what it wrote.
template<class Call>
QByteArray standardErrorOf(Call call)
{
    QTemporaryFile capture;
    if (!capture.open())
        qFatal("cannot capture stderr");
    std::fflush(stderr);
    const int saved = dup(STDERR_FILENO);
    dup2(capture.handle(), STDERR_FILENO);
    call();
    std::fflush(stderr);
    dup2(saved, STDERR_FILENO);
    close(saved);
    capture.seek(0);
    return capture.readAll();
}

class tst_koKernelServiceFactory : public QObject
{
    Q_OBJECT

private slots:
    void lookUpReportsWhatIsMissing_data();
    void lookUpReportsWhatIsMissing();
};

void tst_koKernelServiceFactory::lookUpReportsWhatIsMissing_data()
{
    QTest::addColumn<QString>("situation");
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<bool>("found");

    QTest::newRow("never registered") << "unregistered"
                                      << QByteArray("koKernelServiceFactory: couldn't find class 'koUnregisteredService'!\n")
                                      << false;
    QTest::newRow("registered as null") << "null"
                                        << QByteArray("koKernelServiceFactory: service 'koProbeService' is NULL!\n")
                                        << false;
    QTest::newRow("registered") << "registered" << QByteArray() << true;
}

void tst_koKernelServiceFactory::lookUpReportsWhatIsMissing()
{
    QFETCH(QString, situation);
    QFETCH(QByteArray, message);
    QFETCH(bool, found);

    koKernelServiceFactory* factory = koKernelServiceFactory::the();
    koProbeService probe;
    factory->registerService<koProbeService>(situation == "registered" ? &probe : nullptr);
    koBaseService* result = nullptr;
    const QByteArray printed = standardErrorOf([&] {
        if (situation == "unregistered")
            result = factory->getServiceOrNull<koUnregisteredService>();
        else
            result = factory->getServiceOrNull<koProbeService>();
    });
    factory->unregisterService<koProbeService>();

    QCOMPARE(printed, message);
    QCOMPARE(result, found ? static_cast<koBaseService*>(&probe) : nullptr);
}

QTEST_MAIN(tst_koKernelServiceFactory)
#include "tst_kokernelservicefactory.moc"
