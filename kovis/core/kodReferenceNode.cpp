#include <kovis/kodReferenceNode.h>

#include "koReferenceEngine.h"
#include "koReferenceFileStates.h"
#include "koReferenceLinks.h"
#include "koReferenceLoading.h"
#include "koReferenceSaving.h"
#include "koSceneStore.h"

#include <kovis/koHost.h>

namespace {

koReferenceEngine* engineFor(const kodObject& handle)
{
    return handle.isNull() ? nullptr : koHost::engine();
}

const koReferenceContent* contentOf(const kodObject& handle)
{
    const koSceneStore* store = koSceneStore::the();
    return store && !handle.isNull() ? store->contentOfNode(handle.getObjectId()) : nullptr;
}

quint64 shareKeyOf(const kodObject& handle)
{
    const koNodeRecord* node = handle.isNull() ? nullptr : koSceneStore::the()->node(handle.getObjectId());
    return node ? node->shareKey : 0;
}

} // namespace

kodReferenceNode::kodReferenceNode(quint64 id)
{
    initialize(id);
}

bool kodReferenceNode::hasSourceReference() const
{
    const koReferenceContent* content = contentOf(*this);
    return content && content->hasSource;
}

bool kodReferenceNode::hasSmartReference() const
{
    const koReferenceContent* content = contentOf(*this);
    return content && content->hasSmart;
}

bool kodReferenceNode::isLoaded() const
{
    const koReferenceContent* content = contentOf(*this);
    return content && content->loaded;
}

bool kodReferenceNode::isChanged() const
{
    return contentOf(*this) && koSceneStore::the()->isChanged(shareKeyOf(*this));
}

bool kodReferenceNode::isSubReferenceChanged() const
{
    return contentOf(*this) && koSceneStore::the()->isAnyReferenceBelowChanged(getObjectId());
}

bool kodReferenceNode::isSelfOrSubReferenceChanged() const
{
    return isChanged() || isSubReferenceChanged();
}

bool kodReferenceNode::isRootNode() const
{
    const koSceneStore* store = koSceneStore::the();
    return !isNull() && store && store->rootId() == getObjectId();
}

void kodReferenceNode::createSmartReference()
{
    if (koReferenceEngine* engine = engineFor(*this))
        engine->links().createSmartLink(getObjectId());
}

void kodReferenceNode::createSourceReference()
{
    if (koReferenceEngine* engine = engineFor(*this))
        engine->links().createSourceLink(getObjectId());
}

void kodReferenceNode::removeSmartReference()
{
    if (koReferenceEngine* engine = engineFor(*this))
        engine->links().removeSmartLink(getObjectId());
}

void kodReferenceNode::removeSourceReference()
{
    if (koReferenceEngine* engine = engineFor(*this))
        engine->links().removeSourceLink(getObjectId());
}

void kodReferenceNode::unload()
{
    if (koReferenceEngine* engine = engineFor(*this))
        engine->loading().unload(getObjectId());
}

void kodReferenceNode::load()
{
    if (koReferenceEngine* engine = engineFor(*this))
        engine->loading().load(getObjectId());
}

void kodReferenceNode::loadSourceReference()
{
    if (koReferenceEngine* engine = engineFor(*this))
        engine->loading().importSource(getObjectId());
}

void kodReferenceNode::loadSmartReference()
{
    if (koReferenceEngine* engine = engineFor(*this))
        engine->loading().loadSmart(getObjectId());
}

koReferenceTypes::State kodReferenceNode::getState() const
{
    const koReferenceContent* content = contentOf(*this);
    return content && !content->loaded ? koReferenceTypes::Unloaded : koReferenceTypes::Loaded;
}

bool kodReferenceNode::saveSmartReference()
{
    koReferenceEngine* engine = engineFor(*this);
    return engine && engine->saving().save(getObjectId());
}

bool kodReferenceNode::saveSmartReferenceAs(const QString& path, bool withSubReferences)
{
    koReferenceEngine* engine = engineFor(*this);
    return engine && engine->saving().saveAs(getObjectId(), path, withSubReferences);
}

void kodReferenceNode::setSourcePath(const QString& path)
{
    if (koReferenceEngine* engine = engineFor(*this))
        engine->links().setSourcePath(getObjectId(), path);
}

QString kodReferenceNode::getSourcePath() const
{
    const koReferenceContent* content = contentOf(*this);
    return content ? content->sourcePath : QString();
}

koReferenceTypes::FileState kodReferenceNode::getSourceFileState() const
{
    koReferenceEngine* engine = engineFor(*this);
    return engine ? engine->fileStates().sourceFileState(getObjectId()) : koReferenceTypes::NoFile;
}

QString kodReferenceNode::getSourceOwner() const
{
    koReferenceEngine* engine = engineFor(*this);
    const koFileSnapshot* file = engine ? engine->fileStates().sourceSnapshot(getObjectId()) : nullptr;
    return file ? file->owner : QString();
}

QDateTime kodReferenceNode::getSourceLastModified() const
{
    koReferenceEngine* engine = engineFor(*this);
    const koFileSnapshot* file = engine ? engine->fileStates().sourceSnapshot(getObjectId()) : nullptr;
    return file ? file->modified.toLocalTime() : QDateTime();
}

QDateTime kodReferenceNode::getSourceImportDate() const
{
    const koReferenceContent* content = contentOf(*this);
    return content ? content->sourceImportDate : QDateTime();
}

void kodReferenceNode::setSmartPath(const QString& path)
{
    if (koReferenceEngine* engine = engineFor(*this))
        engine->links().setSmartPath(getObjectId(), path);
}

QString kodReferenceNode::getSmartPath() const
{
    const koReferenceContent* content = contentOf(*this);
    return content ? content->smartPath : QString();
}

QString kodReferenceNode::createSmartPath(koReferenceTypes::ExportLocation location, QString customFolder) const
{
    koReferenceEngine* engine = engineFor(*this);
    return engine ? engine->links().proposeSmartPath(getObjectId(), location, customFolder) : QString();
}

koReferenceTypes::FileState kodReferenceNode::getSmartFileState() const
{
    koReferenceEngine* engine = engineFor(*this);
    return engine ? engine->fileStates().smartFileState(getObjectId()) : koReferenceTypes::NoFile;
}

QString kodReferenceNode::getSmartOwner() const
{
    koReferenceEngine* engine = engineFor(*this);
    const koFileSnapshot* file = engine ? engine->fileStates().smartSnapshot(getObjectId()) : nullptr;
    return file ? file->owner : QString();
}

QDateTime kodReferenceNode::getSmartLastModified() const
{
    koReferenceEngine* engine = engineFor(*this);
    const koFileSnapshot* file = engine ? engine->fileStates().smartSnapshot(getObjectId()) : nullptr;
    return file ? file->modified.toLocalTime() : QDateTime();
}

QDateTime kodReferenceNode::getSmartCreationDate() const
{
    koReferenceEngine* engine = engineFor(*this);
    const koFileSnapshot* file = engine ? engine->fileStates().smartSnapshot(getObjectId()) : nullptr;
    return file ? file->created.toLocalTime() : QDateTime();
}
