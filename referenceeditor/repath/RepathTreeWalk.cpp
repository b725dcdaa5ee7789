#include "RepathTreeWalk.h"

#ifdef Q_OS_LINUX

#include <QFile>
#include <QTextCodec>

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>

namespace {

enum class Kind { Folder, File, Other };

// QDirIterator lists a link unless it is broken or leads to a folder, whatever else it
// leads to, and never enters it.
Kind linkKind(const QByteArray& path)
{
    struct stat target;
    return stat(path.constData(), &target) == 0 && !S_ISDIR(target.st_mode) ? Kind::File : Kind::Other;
}

Kind kindOf(const QByteArray& path, unsigned char type)
{
    struct stat entry;
    switch (type) {
    case DT_DIR:
        return Kind::Folder;
    case DT_REG:
        return Kind::File;
    case DT_LNK:
        return linkKind(path);
    case DT_UNKNOWN:
        if (lstat(path.constData(), &entry) != 0)
            return Kind::Other;
        if (S_ISLNK(entry.st_mode))
            return linkKind(path);
        return S_ISDIR(entry.st_mode) ? Kind::Folder : S_ISREG(entry.st_mode) ? Kind::File : Kind::Other;
    default:
        return Kind::Other;
    }
}

// QDirIterator passes over entries whose names the local 8-bit encoding cannot decode
// without loss; this is its test, with ASCII taken as read for the encodings it knows.
bool isDecodable(const char* name)
{
    const QTextCodec* codec = QTextCodec::codecForLocale();
    const int mib = codec->mibEnum();
    const int length = int(std::strlen(name));
    constexpr int ascii = 3;
    constexpr int latin1 = 4;
    constexpr int utf8 = 106;
    if (mib == latin1)
        return true;
    const bool isAscii = std::all_of(name, name + length, [](char c) { return uchar(c) < 0x80; });
    if (mib == ascii || (mib == utf8 && isAscii))
        return isAscii;
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    codec->toUnicode(name, length, &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

// A name read on its own: a byte order mark leading it is part of the name, as it is
// inside a path.
QString decodedName(const char* name)
{
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    return QTextCodec::codecForLocale()->toUnicode(name, int(std::strlen(name)), &state);
}

} // namespace

struct RepathTreeWalk::Folder
{
    DIR* handle;
    // in the file system's encoding, ending in '/'
    QByteArray path;
    QString decoded;
};

RepathTreeWalk::RepathTreeWalk(const QString& root)
{
    enter(QFile::encodeName(root));
}

RepathTreeWalk::~RepathTreeWalk()
{
    for (const Folder& folder : qAsConst(m_folders))
        closedir(folder.handle);
}

bool RepathTreeWalk::next()
{
    while (!m_folders.isEmpty()) {
        const dirent* entry = readdir(m_folders.last().handle);
        if (!entry) {
            closedir(m_folders.last().handle);
            m_folders.removeLast();
            continue;
        }
        // "." and ".." as well as hidden entries are neither listed nor entered.
        if (entry->d_name[0] == '.' || !isDecodable(entry->d_name))
            continue;
        // Plain files, nearly all entries, need no path of their own.
        const Kind kind = entry->d_type == DT_REG ? Kind::File
                                                   : kindOf(m_folders.last().path + entry->d_name, entry->d_type);
        switch (kind) {
        case Kind::Folder:
            enter(m_folders.last().path + entry->d_name);
            break;
        case Kind::File:
            m_folder = m_folders.last().decoded;
            m_fileName = decodedName(entry->d_name);
            return true;
        case Kind::Other:
            break;
        }
    }
    return false;
}

// A folder that cannot be opened is passed over, as QDirIterator does.
void RepathTreeWalk::enter(QByteArray path)
{
    DIR* handle = opendir(path.constData());
    if (!handle)
        return;
    if (!path.endsWith('/'))
        path.append('/');
    m_folders.append({handle, path, QFile::decodeName(path)});
}

#else

RepathTreeWalk::RepathTreeWalk(const QString& root)
    : m_iterator(root, QDir::Files | QDir::NoDotAndDotDot, QDirIterator::Subdirectories)
{
}

RepathTreeWalk::~RepathTreeWalk() = default;

bool RepathTreeWalk::next()
{
    if (!m_iterator.hasNext())
        return false;
    const QString path = m_iterator.next();
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    m_folder = path.left(slash + 1);
    m_fileName = path.mid(slash + 1);
    return true;
}

#endif
