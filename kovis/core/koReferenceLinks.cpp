#include "koReferenceLinks.h"

#include "koReferenceEngine.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>

namespace {

QString fileNameFor(const QString& nodeName)
{
    static const QRegularExpression forbidden(QStringLiteral("[/\\\\:*?\"<>|\\x00-\\x1f]"));
    QString name = nodeName.trimmed().left(200);
    name.replace(forbidden, QStringLiteral("_"));
    return name.isEmpty() ? QStringLiteral("Reference") : name;
}

} // namespace

koReferenceLinks::koReferenceLinks(koReferenceEngine& engine)
    : m_engine(engine)
{
}

QString koReferenceLinks::cleanPath(const QString& path)
{
    return path.isEmpty() ? path : QDir::cleanPath(QDir::fromNativeSeparators(QFileInfo(path).absoluteFilePath()));
}

void koReferenceLinks::createSmartLink(quint64 id)
{
    koReferenceContent links = m_engine.linksOf(id);
    if (!m_engine.store()->contentOfNode(id) || links.hasSmart)
        return;
    links.hasSmart = true;
    links.smartUnsaved = true;
    links.smartPath.clear();
    m_engine.updateLinks(id, links, true);
}

void koReferenceLinks::createSourceLink(quint64 id)
{
    koReferenceContent links = m_engine.linksOf(id);
    if (!m_engine.store()->contentOfNode(id) || links.hasSource)
        return;
    links.hasSource = true;
    m_engine.updateLinks(id, links, true);
}

void koReferenceLinks::removeSmartLink(quint64 id)
{
    koReferenceContent links = m_engine.linksOf(id);
    if (!links.hasSmart || id == m_engine.store()->rootId())
        return;
    links.hasSmart = false;
    links.smartPath.clear();
    links.smartUnsaved = false;
    links.smartUnreadable = false;
    links.smartStamp = QDateTime();
    m_engine.updateLinks(id, links, true);
}

void koReferenceLinks::removeSourceLink(quint64 id)
{
    koReferenceContent links = m_engine.linksOf(id);
    if (!links.hasSource)
        return;
    links.hasSource = false;
    links.sourcePath.clear();
    links.sourceImportDate = QDateTime();
    m_engine.updateLinks(id, links, true);
}

void koReferenceLinks::setSmartPath(quint64 id, const QString& path)
{
    setLinkPath(id, path, Link::Smart);
}

void koReferenceLinks::setSourcePath(quint64 id, const QString& path)
{
    setLinkPath(id, path, Link::Source);
}

void koReferenceLinks::setLinkPath(quint64 id, const QString& path, Link link)
{
    koReferenceContent links = m_engine.linksOf(id);
    const QString target = cleanPath(path);
    bool& linked = link == Link::Smart ? links.hasSmart : links.hasSource;
    QString& linkPath = link == Link::Smart ? links.smartPath : links.sourcePath;
    if (!m_engine.store()->contentOfNode(id) || (linked && linkPath == target))
        return;
    linked = true;
    linkPath = target;
    if (!target.isEmpty())
        m_engine.fileCache().refresh(target);
    if (link == Link::Smart) {
        // The file now linked is taken as the one the content came from; an unloaded
        // reference will load from it, a loaded one still has to be written there.
        links.smartUnreadable = false;
        if (!links.loaded)
            links.smartUnsaved = false;
        if (!target.isEmpty())
            links.smartStamp = m_engine.fileCache().lookup(target).modified;
    }
    m_engine.updateLinks(id, links, true);
}

QString koReferenceLinks::proposeSmartPath(quint64 id, koReferenceTypes::ExportLocation location,
                                           const QString& customFolder) const
{
    const koNodeRecord* node = m_engine.store()->node(id);
    if (!node)
        return QString();
    const koReferenceContent links = m_engine.linksOf(id);
    if (location == koReferenceTypes::NextToSourceFile && links.hasSource && !links.sourcePath.isEmpty()) {
        const QFileInfo source(links.sourcePath);
        return source.path() + QLatin1Char('/') + source.completeBaseName() + QStringLiteral(".kpr");
    }
    // The stored custom folder counts only while the preferences choose it.
    QString folder = customFolder;
    if (folder.isEmpty() && m_engine.settings().storeMode == koReferenceTypes::CustomFolder)
        folder = m_engine.settings().storeLocation;
    if (folder.isEmpty() && !m_engine.projectPath().isEmpty())
        folder = QFileInfo(m_engine.projectPath()).path();
    if (folder.isEmpty())
        folder = QDir::homePath();
    return QDir::cleanPath(QDir(folder).absoluteFilePath(fileNameFor(node->name) + QStringLiteral(".kpr")));
}

QStringList koReferenceLinks::fileExtensions() const
{
    QStringList extensions;
    QSet<QString> seen;
    const auto add = [&](const QString& path) {
        const QString suffix = QFileInfo(path).suffix();
        if (!suffix.isEmpty() && !seen.contains(suffix)) {
            seen.insert(suffix);
            extensions.append(suffix);
        }
    };
    for (quint64 id : m_engine.sceneReferences()) {
        const koReferenceContent links = m_engine.linksOf(id);
        if (links.hasSmart)
            add(links.smartPath);
        if (links.hasSource)
            add(links.sourcePath);
    }
    return extensions;
}
