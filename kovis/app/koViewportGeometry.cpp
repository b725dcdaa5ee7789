#include "koViewportGeometry.h"

#include "koSceneStore.h"
#include "koViewportMesh.h"

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

QVector3D turned(const QMatrix3x3& matrix, const QVector3D& normal)
{
    return QVector3D(matrix(0, 0) * normal.x() + matrix(0, 1) * normal.y() + matrix(0, 2) * normal.z(),
                     matrix(1, 0) * normal.x() + matrix(1, 1) * normal.y() + matrix(1, 2) * normal.z(),
                     matrix(2, 0) * normal.x() + matrix(2, 1) * normal.y() + matrix(2, 2) * normal.z())
        .normalized();
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

// Spreads the ten low bits of the value to every third bit.
quint32 spreadBits(quint32 value)
{
    value &= 0x3ff;
    value = (value | value << 16) & 0x030000ff;
    value = (value | value << 8) & 0x0300f00f;
    value = (value | value << 4) & 0x030c30c3;
    value = (value | value << 2) & 0x09249249;
    return value;
}

// The place along a curve that visits a grid of 1024 cells a side cell by cell, each block
// of it before the next.
quint32 mortonCode(const QVector3D& cell)
{
    return spreadBits(quint32(cell.x())) | spreadBits(quint32(cell.y())) << 1 | spreadBits(quint32(cell.z())) << 2;
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
    m_openChunks[0] = m_openChunks[1] = -1;
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
    addPendingMeshes();
}

// Meshes go into the chunks in the order of a curve through space, so that the nodes of a
// cluster lie near each other and whole clusters can be skipped where out of view or hidden.
void koViewportGeometry::addPendingMeshes()
{
    std::vector<QVector3D> centres;
    centres.reserve(m_pending.size());
    for (const PendingMesh& pending : m_pending)
        centres.push_back(pending.placement.world.map(drawnMesh(*pending.mesh).centre()));
    QVector3D low = centres.empty() ? QVector3D() : centres.front();
    QVector3D high = low;
    for (const QVector3D& centre : centres) {
        low = lowest(low, centre);
        high = highest(high, centre);
    }
    const QVector3D scale = QVector3D(1023, 1023, 1023) / highest(high - low, QVector3D(1e-9f, 1e-9f, 1e-9f));
    std::vector<std::pair<quint32, size_t>> order;
    order.reserve(m_pending.size());
    for (size_t index = 0; index < centres.size(); ++index)
        order.emplace_back(mortonCode((centres[index] - low) * scale), index);
    std::stable_sort(order.begin(), order.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& entry : order) {
        const PendingMesh& pending = m_pending[entry.second];
        addMesh(pending.node, *pending.mesh, pending.placement);
    }
    m_pending.clear();
    m_drawnMeshes.clear();
}

const koViewportMesh& koViewportGeometry::drawnMesh(const koMesh& mesh)
{
    std::unique_ptr<koViewportMesh>& drawn = m_drawnMeshes[&mesh];
    if (!drawn)
        drawn = std::make_unique<koViewportMesh>(mesh);
    return *drawn;
}

void koViewportGeometry::addNode(const koNodeRecord& node, const Placement& above)
{
    Placement placement = above;
    placement.world *= node.transform;
    if (node.isReference())
        placement.colour = colourOf(node.shareKey);
    placement.highlighted = placement.highlighted || m_selection.contains(node.id);
    if (node.mesh)
        m_pending.push_back({node.id, node.mesh.get(), placement});
    for (quint64 child : node.children) {
        const koNodeRecord* record = m_store->node(child);
        if (record && record->visible)
            addNode(*record, placement);
    }
}

void koViewportGeometry::addMesh(quint64 id, const koMesh& mesh, const Placement& placement)
{
    const koViewportMesh& drawn = drawnMesh(mesh);
    const int vertexCount = int(drawn.sources().size());
    const std::vector<quint32>& triangles = drawn.triangles();
    if (triangles.empty())
        return;
    const int index = chunkWithRoom(vertexCount, drawn.isClosed());
    Chunk& chunk = m_chunks[size_t(index)];
    const int firstVertex = int(chunk.vertices.size());
    const int firstIndex = int(chunk.indices.size());
    const quint8 colour[4] = {quint8(placement.colour.red()), quint8(placement.colour.green()),
                              quint8(placement.colour.blue()), 255};
    const QMatrix3x3 normalToWorld = placement.world.normalMatrix();
    const bool turnsNormals = !normalToWorld.isIdentity();
    Item item{index, firstVertex, vertexCount, placement.highlighted,
              placement.world.map(mesh.positions.first()), placement.world.map(mesh.positions.first())};
    for (int vertex = 0; vertex < vertexCount; ++vertex) {
        const QVector3D world = placement.world.map(mesh.positions.at(int(drawn.sources()[size_t(vertex)])));
        const QVector3D& local = drawn.normals()[size_t(vertex)];
        const QVector3D normal = (turnsNormals ? turned(normalToWorld, local) : local) * 127.0f;
        chunk.vertices.push_back({{world.x(), world.y(), world.z()},
                                  {colour[0], colour[1], colour[2], colour[3]},
                                  {qint8(qRound(normal.x())), qint8(qRound(normal.y())), qint8(qRound(normal.z())), 0}});
        item.low = lowest(item.low, world);
        item.high = highest(item.high, world);
    }
    chunk.highlight.resize(size_t(firstVertex + vertexCount), placement.highlighted ? 255 : 0);
    // A mirroring placement turns the winding over; the last corner stays last.
    const bool mirrored = placement.world.determinant() < 0.0;
    for (size_t first = 0; first < triangles.size(); first += 3) {
        chunk.indices.push_back(quint32(firstVertex) + triangles[first + (mirrored ? 1 : 0)]);
        chunk.indices.push_back(quint32(firstVertex) + triangles[first + (mirrored ? 0 : 1)]);
        chunk.indices.push_back(quint32(firstVertex) + triangles[first + 2]);
    }
    chunk.entries.push_back({id, firstVertex, vertexCount, firstIndex, int(triangles.size())});
    addToCluster(chunk, firstIndex, int(triangles.size()), item);
    chunk.verticesChanged = true;
    m_items.insert(id, item);
}

void koViewportGeometry::addToCluster(Chunk& chunk, int firstIndex, int indexCount, const Item& item)
{
    if (chunk.clusters.empty() || chunk.clusters.back().vertexCount >= clusterCapacity)
        chunk.clusters.push_back({firstIndex, 0, 0, item.low, item.high});
    Chunk::Cluster& cluster = chunk.clusters.back();
    cluster.indexCount += indexCount;
    cluster.vertexCount += item.vertexCount;
    cluster.low = lowest(cluster.low, item.low);
    cluster.high = highest(cluster.high, item.high);
}

int koViewportGeometry::chunkWithRoom(int count, bool closed)
{
    const auto fits = [&](int index) {
        const Chunk& chunk = m_chunks[size_t(index)];
        const size_t size = chunk.vertices.size();
        return size == 0 || (chunk.cullBackFaces == closed && size + size_t(count) <= size_t(chunkCapacity));
    };
    int& open = m_openChunks[closed ? 1 : 0];
    if (open < 0 || !fits(open)) {
        const auto room = std::find_if(m_chunks.begin(), m_chunks.end(),
                                       [&](const Chunk& chunk) { return fits(int(&chunk - m_chunks.data())); });
        open = int(room - m_chunks.begin());
        if (room == m_chunks.end()) {
            m_chunks.emplace_back();
            m_chunks.back().vertices.reserve(size_t(chunkCapacity));
            m_chunks.back().highlight.reserve(size_t(chunkCapacity));
        }
    }
    m_chunks[size_t(open)].cullBackFaces = closed;
    return open;
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
    kept.cullBackFaces = chunk.cullBackFaces;
    for (const Chunk::Entry& entry : chunk.entries) {
        // An entry is stale when its node was removed, or removed and added again elsewhere.
        const auto it = m_items.find(entry.node);
        if (it == m_items.end() || it->chunk != index || it->firstVertex != entry.firstVertex)
            continue;
        it->firstVertex = int(kept.vertices.size());
        kept.entries.push_back({entry.node, it->firstVertex, entry.vertexCount, int(kept.indices.size()), entry.indexCount});
        addToCluster(kept, int(kept.indices.size()), entry.indexCount, *it);
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
