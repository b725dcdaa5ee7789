#include "koViewportGeometry.h"

#include "koSceneStore.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace {

QVector3D lowest(const QVector3D& a, const QVector3D& b)
{
    return QVector3D(qMin(a.x(), b.x()), qMin(a.y(), b.y()), qMin(a.z(), b.z()));
}

QVector3D highest(const QVector3D& a, const QVector3D& b)
{
    return QVector3D(qMax(a.x(), b.x()), qMax(a.y(), b.y()), qMax(a.z(), b.z()));
}

// Muted colours, none near the highlight's hue.
const std::array<QColor, 9>& palette()
{
    static const std::array<QColor, 9> colours = {
        QColor(0x5b, 0x8d, 0xb8), QColor(0x9a, 0xa6, 0xb2), QColor(0x4f, 0x9d, 0x8a),
        QColor(0x8e, 0x6f, 0xb0), QColor(0xc8, 0xcc, 0xd0), QColor(0x6a, 0x9e, 0x4f),
        QColor(0xb0, 0x48, 0x5e), QColor(0x4a, 0x56, 0x66), QColor(0x7f, 0xa7, 0xd9)};
    return colours;
}

} // namespace

koViewportGeometry::koViewportGeometry(koSceneStore* store, QObject* parent)
    : QObject(parent)
    , m_store(store)
{
    connect(store, &koSceneStore::sceneReset, this, [this] {
        rebuild();
        emit changed();
    });
    connect(store, &koSceneStore::subtreeInserted, this, [this](quint64, quint64 id) {
        if (isShown(id))
            addSubtree(id);
        emit changed();
    });
    connect(store, &koSceneStore::subtreeAboutToBeRemoved, this, [this](quint64, quint64 id) {
        removeSubtree(id);
        emit changed();
    });
    connect(store, &koSceneStore::nodeChanged, this, [this](quint64 id, const QByteArray& property) {
        if (property != "visible")
            return;
        refreshVisibility(id);
        emit changed();
    });
    rebuild();
}

koViewportGeometry::~koViewportGeometry() = default;

QColor koViewportGeometry::highlightColour()
{
    return QColor(255, 150, 20);
}

QColor koViewportGeometry::colourOf(quint64 shareKey)
{
    return palette()[shareKey % palette().size()];
}

void koViewportGeometry::rebuild()
{
    m_chunks.clear();
    m_items.clear();
    m_openChunk = -1;
    if (isShown(m_store->rootId()))
        addSubtree(m_store->rootId());
}

bool koViewportGeometry::isShown(quint64 id) const
{
    for (const koNodeRecord* node = m_store->node(id); node; node = m_store->node(node->parent)) {
        if (!node->visible)
            return false;
    }
    return m_store->node(id) != nullptr;
}

bool koViewportGeometry::isSelectedAtOrAbove(quint64 id) const
{
    for (const koNodeRecord* node = m_store->node(id); node; node = m_store->node(node->parent)) {
        if (m_selection.contains(node->id))
            return true;
    }
    return false;
}

koViewportGeometry::Placement koViewportGeometry::placementOf(quint64 id) const
{
    QVector<const koNodeRecord*> chain;
    for (const koNodeRecord* node = m_store->node(id); node; node = m_store->node(node->parent))
        chain.prepend(node);
    Placement placement{QMatrix4x4(), palette()[0], false};
    for (const koNodeRecord* node : qAsConst(chain)) {
        placement.world *= node->transform;
        if (node->isReference())
            placement.colour = colourOf(node->shareKey);
        placement.highlighted = placement.highlighted || m_selection.contains(node->id);
    }
    return placement;
}

void koViewportGeometry::addSubtree(quint64 id)
{
    if (const koNodeRecord* node = m_store->node(id))
        addNode(*node, placementOf(node->parent));
}

void koViewportGeometry::addNode(const koNodeRecord& node, const Placement& above)
{
    Placement placement = above;
    placement.world *= node.transform;
    if (node.isReference())
        placement.colour = colourOf(node.shareKey);
    placement.highlighted = placement.highlighted || m_selection.contains(node.id);
    if (node.mesh)
        addMesh(node.id, *node.mesh, placement);
    for (quint64 child : node.children) {
        const koNodeRecord* record = m_store->node(child);
        if (record && record->visible)
            addNode(*record, placement);
    }
}

void koViewportGeometry::addMesh(quint64 id, const koMesh& mesh, const Placement& placement)
{
    const int vertexCount = mesh.positions.size();
    const int indexCount = mesh.triangles.size() / 3 * 3;
    if (indexCount == 0 || vertexCount == 0)
        return;
    const int index = chunkWithRoom(vertexCount);
    Chunk& chunk = m_chunks[size_t(index)];
    const int firstVertex = int(chunk.vertices.size());
    const int firstIndex = int(chunk.indices.size());
    const quint8 colour[4] = {quint8(placement.colour.red()), quint8(placement.colour.green()),
                              quint8(placement.colour.blue()), 255};
    Item item{index, firstVertex, vertexCount, placement.highlighted,
              placement.world.map(mesh.positions.first()), placement.world.map(mesh.positions.first())};
    for (const QVector3D& position : mesh.positions) {
        const QVector3D world = placement.world.map(position);
        chunk.vertices.push_back({{world.x(), world.y(), world.z()}, {colour[0], colour[1], colour[2], colour[3]}});
        item.low = lowest(item.low, world);
        item.high = highest(item.high, world);
    }
    chunk.highlight.resize(size_t(firstVertex + vertexCount), placement.highlighted ? 255 : 0);
    for (int corner = 0; corner < indexCount; ++corner) {
        const quint32 vertex = mesh.triangles.at(corner);
        chunk.indices.push_back(quint32(firstVertex) + (vertex < quint32(vertexCount) ? vertex : 0));
    }
    chunk.entries.push_back({id, firstVertex, vertexCount, firstIndex, indexCount});
    chunk.verticesChanged = true;
    m_items.insert(id, item);
}

int koViewportGeometry::chunkWithRoom(int count)
{
    const auto fits = [&](int index) {
        const size_t size = m_chunks[size_t(index)].vertices.size();
        return size == 0 || size + size_t(count) <= size_t(chunkCapacity);
    };
    if (m_openChunk >= 0 && fits(m_openChunk))
        return m_openChunk;
    for (int index = 0; index < int(m_chunks.size()); ++index) {
        if (fits(index))
            return m_openChunk = index;
    }
    m_chunks.emplace_back();
    return m_openChunk = int(m_chunks.size()) - 1;
}

void koViewportGeometry::removeSubtree(quint64 id)
{
    const koNodeRecord* node = m_store->node(id);
    if (!node)
        return;
    removeNode(id);
    for (quint64 child : node->children)
        removeSubtree(child);
}

void koViewportGeometry::removeNode(quint64 id)
{
    const auto it = m_items.constFind(id);
    if (it == m_items.constEnd())
        return;
    m_chunks[size_t(it->chunk)].needsCompaction = true;
    m_items.erase(it);
}

void koViewportGeometry::refreshVisibility(quint64 id)
{
    removeSubtree(id);
    if (isShown(id))
        addSubtree(id);
}

void koViewportGeometry::compact()
{
    for (int index = 0; index < int(m_chunks.size()); ++index) {
        if (m_chunks[size_t(index)].needsCompaction)
            compactChunk(index);
    }
}

void koViewportGeometry::compactChunk(int index)
{
    Chunk& chunk = m_chunks[size_t(index)];
    Chunk kept;
    for (const Chunk::Entry& entry : chunk.entries) {
        // An entry is stale when its node was removed, or removed and added again elsewhere.
        const auto it = m_items.find(entry.node);
        if (it == m_items.end() || it->chunk != index || it->firstVertex != entry.firstVertex)
            continue;
        it->firstVertex = int(kept.vertices.size());
        kept.entries.push_back({entry.node, it->firstVertex, entry.vertexCount, int(kept.indices.size()), entry.indexCount});
        const auto vertices = chunk.vertices.begin() + entry.firstVertex;
        kept.vertices.insert(kept.vertices.end(), vertices, vertices + entry.vertexCount);
        const auto highlight = chunk.highlight.begin() + entry.firstVertex;
        kept.highlight.insert(kept.highlight.end(), highlight, highlight + entry.vertexCount);
        const quint32 shift = quint32(entry.firstVertex - it->firstVertex);
        const auto indices = chunk.indices.cbegin() + entry.firstIndex;
        std::transform(indices, indices + entry.indexCount, std::back_inserter(kept.indices),
                       [shift](quint32 vertex) { return vertex - shift; });
    }
    chunk = std::move(kept);
}

void koViewportGeometry::setSelection(const QSet<quint64>& nodes)
{
    QSet<quint64> affected = m_selection;
    affected.unite(nodes);
    m_selection = nodes;
    for (quint64 id : qAsConst(affected))
        refreshHighlight(id);
    emit changed();
}

void koViewportGeometry::refreshHighlight(quint64 id)
{
    const koNodeRecord* node = m_store->node(id);
    if (!node)
        return;
    const auto it = m_items.find(id);
    if (it != m_items.end()) {
        const bool highlighted = isSelectedAtOrAbove(id);
        if (it->highlighted != highlighted) {
            it->highlighted = highlighted;
            Chunk& chunk = m_chunks[size_t(it->chunk)];
            std::fill_n(chunk.highlight.begin() + it->firstVertex, it->vertexCount, highlighted ? 255 : 0);
            chunk.highlightChanged = true;
        }
    }
    for (quint64 child : node->children)
        refreshHighlight(child);
}

bool koViewportGeometry::bounds(bool highlightedOnly, QVector3D& low, QVector3D& high) const
{
    bool found = false;
    for (const Item& item : m_items) {
        if (highlightedOnly && !item.highlighted)
            continue;
        low = found ? lowest(low, item.low) : item.low;
        high = found ? highest(high, item.high) : item.high;
        found = true;
    }
    return found;
}
