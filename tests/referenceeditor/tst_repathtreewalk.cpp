#include <RepathTreeWalk.h>

#include <QDirIterator>
#include <QTemporaryDir>
#include <QtTest>

#include <fcntl.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A temporary folder that can hold names QDir cannot remove: they are removed byte-wise.
class RawFolder
{
public:
    ~RawFolder()
    {
        nftw(QFile::encodeName(m_dir.path()), [](const char* path, const struct stat*, int, FTW*) { return remove(path); },
             16, FTW_DEPTH | FTW_PHYS);
    }

    QString path() const { return m_dir.path(); }

private:
    QTemporaryDir m_dir;
};

// Entries below the root: "name" a file, "name/" a folder, "name>target" a symbolic link to
// target (below the root), "name|" a named pipe; names are bytes in the file system's
// encoding, so that names no text can spell are possible.
void makeEntry(const QByteArray& root, const QByteArray& entry)
{
    const int link = entry.indexOf('>');
    const QByteArray name = root + '/' + (link < 0 ? entry : entry.left(link));
    for (int slash = name.indexOf('/', root.size() + 1); slash >= 0; slash = name.indexOf('/', slash + 1))
        mkdir(name.left(slash), 0700);
    bool made = true;
    if (link >= 0)
        made = symlink(root + '/' + entry.mid(link + 1), name) == 0;
    else if (entry.endsWith('|'))
        made = mkfifo(name.left(name.size() - 1), 0600) == 0;
    else if (!entry.endsWith('/'))
        made = close(open(name, O_CREAT | O_WRONLY, 0600)) == 0;
    QVERIFY2(made, name);
}

QStringList iteratorPaths(const QString& root)
{
    QStringList paths;
    QDirIterator it(root, QDir::Files | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext())
        paths.append(it.next());
    return paths;
}

QStringList walkPaths(const QString& root)
{
    QStringList paths;
    RepathTreeWalk walk(root);
    while (walk.next())
        paths.append(walk.filePath());
    return paths;
}

} // namespace

class tst_RepathTreeWalk : public QObject
{
    Q_OBJECT

private slots:
    void listsAsQDirIterator_data();
    void listsAsQDirIterator();
};

void tst_RepathTreeWalk::listsAsQDirIterator_data()
{
    QTest::addColumn<QList<QByteArray>>("entries");
    QTest::addColumn<QString>("root");
    QTest::addColumn<int>("count");

    QTest::newRow("nested folders") << QList<QByteArray>{"a/b/c/f1", "a/f2", "f3", "a/b/g", "empty/"} << "" << 4;
    QTest::newRow("hidden entries") << QList<QByteArray>{".h", ".d/f", "a/.x", "a/y", "..z"} << "" << 1;
    QTest::newRow("links and pipes") << QList<QByteArray>{"real/f", "lf>real/f", "ld>real", "broken>none", "pipe|", "lpipe>pipe"} << "" << 3;
    QTest::newRow("link loops") << QList<QByteArray>{"a/f", "a/up>a", "self>."} << "" << 1;
    QTest::newRow("names the encoding cannot decode") << QList<QByteArray>{"Bau teile/Schraube \xc3\xbc.stp", "\xff\xfe.bin", "\xef\xbb\xbf" "bom", "d\xff/f"} << "" << 2;
    QTest::newRow("root not clean") << QList<QByteArray>{"a/f", "b/g"} << "/a/../" << 2;
    QTest::newRow("root missing") << QList<QByteArray>{"f"} << "/missing" << 0;
    QTest::newRow("root is a file") << QList<QByteArray>{"f"} << "/f" << 0;
}

void tst_RepathTreeWalk::listsAsQDirIterator()
{
    QFETCH(QList<QByteArray>, entries);
    QFETCH(QString, root);
    QFETCH(int, count);

    const RawFolder dir;
    for (const QByteArray& entry : entries)
        makeEntry(QFile::encodeName(dir.path()), entry);
    const QStringList expected = iteratorPaths(dir.path() + root);
    QCOMPARE(expected.size(), count);
    QCOMPARE(walkPaths(dir.path() + root), expected);
}

QTEST_GUILESS_MAIN(tst_RepathTreeWalk)
#include "tst_repathtreewalk.moc"
