#include <kovis/koIconManager.h>

#include <QImage>
#include <QtTest>

namespace {

QImage render(const QIcon& icon)
{
    return icon.pixmap(16, 16).toImage().convertToFormat(QImage::Format_ARGB32);
}

bool hasVisiblePixel(const QImage& image)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) > 0)
                return true;
        }
    }
    return false;
}

} // namespace

class tst_koiconmanager : public QObject
{
    Q_OBJECT

private slots:
    void namedIconsRender_data();
    void namedIconsRender();
    void unknownNamesFallBack_data();
    void unknownNamesFallBack();
};

void tst_koiconmanager::namedIconsRender_data()
{
    QTest::addColumn<QString>("name");
    const char* names[] = {"ModuleReferenceEditor", "ModuleScenegraph", "ListView", "Filter", "LoadReference",
                           "UnloadReference", "RenameReference", "Duplicate", "Repath", "Remove", "ConvertToSmart",
                           "SelectNode", "SelectSubtree", "CreateNew", "FileNew", "ReimportSelected",
                           "ReimportOutdated", "ReimportUnloadedSmart", "ReimportUnloadedSource", "Replace", "Delete",
                           "FileOpen", "Save", "SaveAs", "ShowInfo", "NodeGroup", "NodeGeometry", "NodeReference",
                           "Undo", "Redo", "Preferences", "ProjectOpen", "ProjectNew", "ProjectSave"};
    for (const char* name : names)
        QTest::newRow(name) << QString::fromLatin1(name);
}

void tst_koiconmanager::namedIconsRender()
{
    QFETCH(QString, name);

    QVERIFY(koIconManager::hasIcon(name));
    const QIcon icon = koIconManager::getIcon(name, QString());
    QVERIFY(!icon.isNull());
    const QImage image = render(icon);
    QCOMPARE(image.size(), QSize(16, 16));
    QVERIFY(hasVisiblePixel(image));
    QVERIFY2(image != render(koIconManager::getIcon(QStringLiteral("Fallback"))), "the fallback stands in");
}

void tst_koiconmanager::unknownNamesFallBack_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("secondName");
    QTest::addColumn<QString>("shown");

    QTest::newRow("unknown") << QStringLiteral("NoSuchIcon") << QString() << QStringLiteral("Fallback");
    QTest::newRow("second name") << QStringLiteral("NoSuchIcon2") << QStringLiteral("Save") << QStringLiteral("Save");
    QTest::newRow("both unknown") << QStringLiteral("NoSuchIcon3") << QStringLiteral("Nope") << QStringLiteral("Fallback");
    QTest::newRow("empty") << QString() << QString() << QStringLiteral("Fallback");
    QTest::newRow("path-like") << QStringLiteral("../icons/Save") << QString() << QStringLiteral("Fallback");
}

void tst_koiconmanager::unknownNamesFallBack()
{
    QFETCH(QString, name);
    QFETCH(QString, secondName);
    QFETCH(QString, shown);

    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("no icon named"));
    const QImage image = render(koIconManager::getIcon(name, secondName));
    QVERIFY(hasVisiblePixel(image));
    QCOMPARE(image, render(koIconManager::getIcon(shown)));
}

QTEST_MAIN(tst_koiconmanager)
#include "tst_koiconmanager.moc"
