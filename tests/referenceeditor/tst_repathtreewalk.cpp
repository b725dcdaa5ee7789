#include <RepathTreeWalk.h>

#include <QDirIterator>
#include <QTemporaryDir>
#include <QtTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

class tst_RepathTreeWalk : public QObject
{
    Q_OBJECT

private slots:
    void listsAsQDirIterator();
};

// Hidden entries, pipes and broken links are left out; a link to a folder is never entered,
// so a link loop ends.
void tst_RepathTreeWalk::listsAsQDirIterator()
{
    const QTemporaryDir dir;
    const QDir root(dir.path());
    QVERIFY(root.mkpath("a/b") && root.mkpath("a/.d") && root.mkpath("empty"));
    for (const char* file : {"a/b/f", "a/f", ".h", "a/.d/f"})
        QVERIFY(QFile(root.filePath(file)).open(QIODevice::WriteOnly));
    QVERIFY(QFile::link(root.filePath("a/f"), root.filePath("lf")));
    QVERIFY(QFile::link(root.filePath("a"), root.filePath("a/up")));
    QVERIFY(QFile::link(root.filePath("none"), root.filePath("broken")));
    QCOMPARE(mkfifo(QFile::encodeName(root.filePath("pipe")).constData(), 0600), 0);
    // Names the local encoding cannot decode are passed over; a leading byte order mark is kept.
    for (const char* name : {"/\xff\xfe.bin", "/\xef\xbb\xbf" "bom"})
        QCOMPARE(close(creat((QFile::encodeName(dir.path()) + name).constData(), 0600)), 0);

    QStringList expected;
    QDirIterator it(dir.path(), QDir::Files | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext())
        expected << it.next();
    QStringList walked;
    RepathTreeWalk walk(dir.path());
    while (walk.next())
        walked << walk.filePath();
    QCOMPARE(walked, expected);
}

QTEST_GUILESS_MAIN(tst_RepathTreeWalk)
#include "tst_repathtreewalk.moc"
