#include "koTestHost.h"

#include "koReferenceEngine.h"

#include <kovis/koFileIOService.h>
#include <kovis/koHost.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koLogService.h>
#include <kovis/koNodeService.h>
#include <kovis/koPreferencesService.h>
#include <kovis/koReferenceService.h>

#include <QCoreApplication>
#include <QMenu>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QMetaEnum>

namespace {

QString settingsFile()
{
    static QTemporaryDir settingsDir;
    return settingsDir.filePath(QStringLiteral("kovis.ini"));
}

void resetScene()
{
    koService<koFileIOService>()->newProject();
    koService<koLogService>()->clear();
}

} // namespace

koTestHost::koTestHost()
{
    if (!koHost::isInitialized())
        koHost::initialize(settingsFile());
    resetScene();
}

koTestHost::~koTestHost()
{
    resetScene();
}

QString koTestHost::path(const QString& relative) const
{
    return m_dir.filePath(relative);
}

QString koTestHost::writeFile(const QString& relative, const QByteArray& content) const
{
    const QString target = path(relative);
    QDir().mkpath(QFileInfo(target).absolutePath());
    QFile file(target);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write test file %s", qPrintable(target));
    return target;
}

QString koTestHost::relative(const QString& path) const
{
    return path.isEmpty() ? QStringLiteral("-") : QDir(m_dir.path()).relativeFilePath(path);
}

QByteArray koTestHost::projectDocument(const QString& rootName, const QJsonArray& nodes)
{
    const QJsonObject document{{QStringLiteral("format"), QStringLiteral("kovis-project")},
                               {QStringLiteral("version"), 1},
                               {QStringLiteral("root"), group(rootName, nodes)}};
    return QJsonDocument(document).toJson();
}

QByteArray koTestHost::readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString koTestHost::writeProject(const QString& relative, const QJsonArray& nodes, const QString& name) const
{
    return writeFile(relative, projectDocument(name.isEmpty() ? QFileInfo(relative).completeBaseName() : name, nodes));
}

kodReferenceNode koTestHost::loadSingleReference(const QJsonObject& reference) const
{
    const QString project = writeProject(QStringLiteral("project.kpr"), {reference});
    if (!koService<koFileIOService>()->loadProject(project))
        return kodReferenceNode();
    return koService<koReferenceService>()->getSceneReferences().value(1);
}

void koTestHost::storePreference(koPreferencesService& preferences, const QString& key, const QVariant& value,
                                 bool markChanged)
{
    if (value.userType() == QMetaType::Bool)
        preferences.setBoolValue(key, value.toBool(), markChanged);
    else if (value.userType() == QMetaType::Int)
        preferences.setIntValue(key, value.toInt(), markChanged);
    else
        preferences.setStringValue(key, value.toString(), markChanged);
}

void koTestHost::setModified(const QString& path, const QDateTime& time)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite) || !file.setFileTime(time, QFileDevice::FileModificationTime))
        qFatal("cannot set the time of %s", qPrintable(path));
}

QJsonObject koTestHost::group(const QString& name, const QJsonArray& children)
{
    return {{QStringLiteral("type"), QStringLiteral("group")}, {QStringLiteral("name"), name},
            {QStringLiteral("children"), children}};
}

QJsonObject koTestHost::geometry(const QString& name)
{
    return {{QStringLiteral("type"), QStringLiteral("geometry")}, {QStringLiteral("name"), name}};
}

QJsonObject koTestHost::reference(const QString& name, const QString& smart, const QString& source,
                                  const QJsonObject& extra)
{
    QJsonObject node = extra;
    node.insert(QStringLiteral("type"), QStringLiteral("reference"));
    node.insert(QStringLiteral("name"), name);
    if (!smart.isNull())
        node.insert(QStringLiteral("smart"), smart);
    if (!source.isNull())
        node.insert(QStringLiteral("source"), source);
    return node;
}

namespace {

QJsonObject dumpNode(const koSceneStore& store, quint64 id)
{
    const koNodeRecord* node = store.node(id);
    QJsonObject object{{QStringLiteral("id"), QString::number(node->id)},
                       {QStringLiteral("type"), int(node->type)},
                       {QStringLiteral("name"), node->name},
                       {QStringLiteral("visible"), node->visible},
                       {QStringLiteral("locked"), node->userLocked},
                       {QStringLiteral("shareKey"), QString::number(node->shareKey)}};
    if (const koReferenceContent* content = store.contentOfNode(id)) {
        object.insert(QStringLiteral("smart"), content->hasSmart ? content->smartPath : QStringLiteral("-"));
        object.insert(QStringLiteral("source"), content->hasSource ? content->sourcePath : QStringLiteral("-"));
        object.insert(QStringLiteral("loaded"), content->loaded);
        object.insert(QStringLiteral("unsaved"), content->smartUnsaved);
        object.insert(QStringLiteral("changed"), store.isChanged(node->shareKey));
    }
    QJsonArray children;
    for (quint64 child : node->children)
        children.append(dumpNode(store, child));
    object.insert(QStringLiteral("children"), children);
    return object;
}

} // namespace

QByteArray koTestHost::sceneSnapshot()
{
    const koSceneStore& store = *koHost::engine()->store();
    return QJsonDocument(dumpNode(store, store.rootId())).toJson(QJsonDocument::Compact);
}

namespace {

kodNode find(const kodNode& node, const QString& name)
{
    if (node.getName() == name)
        return node;
    for (const kodNode& child : node.getChildren()) {
        const kodNode found = find(child, name);
        if (!found.isNull())
            return found;
    }
    return kodNode();
}

} // namespace

kodNode koTestHost::findNode(const QString& name)
{
    return find(koService<koNodeService>()->getRootNode(), name);
}

kodReferenceNode koTestHost::findReference(const QString& name)
{
    return kodReferenceNode(findNode(name).getObjectId());
}

QList<kodReferenceNode> koTestHost::findReferences(const QStringList& names)
{
    QList<kodReferenceNode> references;
    for (const QString& name : names)
        references << findReference(name);
    return references;
}

QAction* koTestHost::findAction(const QList<QAction*>& actions, const QString& path)
{
    const QString first = path.section(QLatin1Char('/'), 0, 0);
    for (QAction* action : actions) {
        if (action->text() != first)
            continue;
        const QString rest = path.section(QLatin1Char('/'), 1);
        if (rest.isEmpty())
            return action;
        return action->menu() ? findAction(action->menu()->actions(), rest) : nullptr;
    }
    return nullptr;
}

QStringList koTestHost::logLines()
{
    const QMetaEnum levels = QMetaEnum::fromType<koLogService::Level>();
    QStringList lines;
    for (const koLogService::Entry& entry : koService<koLogService>()->entries())
        lines << QStringLiteral("%1 %2: %3").arg(levels.valueToKey(entry.level), entry.category, entry.message);
    return lines;
}

void koTestHost::settle()
{
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}
