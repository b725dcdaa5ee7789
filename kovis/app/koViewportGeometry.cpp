#include "koViewportGeometry.h"

#include "koSceneStore.h"

#include <array>

namespace {

qint8 packed(float component)
{
    return qint8(qBound(-127, qRound(component * 127.0f), 127));
}

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
    const int count = mesh.triangles.size() / 3 * 3;
    if (count == 0 || mesh.positions.isEmpty())
        return;
    QVector<QVector3D> world(mesh.positions.size());
    for (int i = 0; i < world.size(); ++i)
        world[i] = placement.world.map(mesh.positions.at(i));
    const int index = chunkWithRoom(count);
    Chunk& chunk = m_chunks[size_t(index)];
    const int first = int(chunk.vertices.size());
    chunk.vertices.resize(size_t(first + count));
    chunk.highlight.resize(size_t(first + count), placement.highlighted ? 255 : 0);
    const quint8 colour[4] = {quint8(placement.colour.red()), quint8(placement.colour.green()),
                              quint8(placement.colour.blue()), 255};
    Item item{index, first, count, placement.highlighted, world.first(), world.first()};
    koViewportVertex* out = chunk.vertices.data() + first;
    for (int t = 0; t < count; t += 3) {
        QVector3D corners[3];
        for (int c = 0; c < 3; ++c) {
            const quint32 vertex = mesh.triangles.at(t + c);
            corners[c] = world.at(vertex < quint32(world.size()) ? int(vertex) : 0);
        }
        const QVector3D normal = QVector3D::normal(corners[0], corners[1], corners[2]);
        for (int c = 0; c < 3; ++c, ++out) {
            *out = koViewportVertex{{corners[c].x(), corners[c].y(), corners[c].z()},
                                    {packed(normal.x()), packed(normal.y()), packed(normal.z()), qint8(c * 63)},
                                    {colour[0], colour[1], colour[2], colour[3]}};
            item.low = lowest(item.low, corners[c]);
            item.high = highest(item.high, corners[c]);
        }
    }
    chunk.entries.push_back({id, first, count});
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
    std::vector<koViewportVertex> vertices;
    std::vector<quint8> highlight;
    std::vector<Chunk::Entry> entries;
    for (const Chunk::Entry& entry : chunk.entries) {
        // An entry is stale when its node was removed, or removed and added again elsewhere.
        const auto it = m_items.find(entry.node);
        if (it == m_items.end() || it->chunk != index || it->first != entry.first)
            continue;
        it->first = int(vertices.size());
        entries.push_back({entry.node, it->first, entry.count});
        vertices.insert(vertices.end(), chunk.vertices.begin() + entry.first,
                        chunk.vertices.begin() + entry.first + entry.count);
        highlight.insert(highlight.end(), chunk.highlight.begin() + entry.first,
                         chunk.highlight.begin() + entry.first + entry.count);
    }
    chunk.vertices.swap(vertices);
    chunk.highlight.swap(highlight);
    chunk.entries.swap(entries);
    chunk.needsCompaction = false;
    chunk.verticesChanged = true;
    chunk.highlightChanged = true;
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
            std::fill_n(chunk.highlight.begin() + it->first, it->count, highlighted ? 255 : 0);
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
