#pragma once

#include <QColor>
#include <QHash>
#include <QMatrix4x4>
#include <QObject>
#include <QSet>
#include <QVector3D>
#include <QVector>

#include <memory>
#include <unordered_map>
#include <vector>

class koSceneStore;
class koViewportMesh;
struct koMesh;
struct koNodeRecord;

// One vertex of a drawn mesh, in world space. Triangles share their vertices; a vertex
// carries the normal of the triangles that end in it (see koViewportMesh), so that a mesh
// costs about its vertices, not three per triangle.
struct koViewportVertex
{
    float position[3];
    quint8 colour[4];
    // Scaled to -127..127; the fourth is padding.
    qint8 normal[4];
};

// The visible geometry of the scene merged into few large vertex arrays (chunks), so
// that a scene of many small references is drawn in few calls. It follows the scene
// store: a change rebuilds only the chunks that held or receive the changed nodes, and
// a selection change rewrites only the highlight bytes of the nodes concerned.
class koViewportGeometry : public QObject
{
    Q_OBJECT
public:
    struct Chunk
    {
        std::vector<koViewportVertex> vertices;
        // 255 where the vertex belongs to a selected node.
        std::vector<quint8> highlight;
        // Three vertex indices a triangle.
        std::vector<quint32> indices;
        // Set when the arrays changed since the drawing side last took them.
        bool verticesChanged = true;
        bool highlightChanged = true;
        // Holds closed meshes only, wound outward, whose back faces are hidden by their front.
        bool cullBackFaces = false;
        // Nodes near each other, drawn or skipped together: a run of indices and the box
        // around what they draw.
        struct Cluster
        {
            int firstIndex;
            int indexCount;
            int vertexCount;
            QVector3D low;
            QVector3D high;
        };
        std::vector<Cluster> clusters;

    private:
        friend class koViewportGeometry;
        struct Entry
        {
            quint64 node;
            int firstVertex;
            int vertexCount;
            int firstIndex;
            int indexCount;
        };
        std::vector<Entry> entries;
        bool needsCompaction = false;
    };

    // A chunk is closed for new nodes once it holds this many vertices.
    static constexpr int chunkCapacity = 1 << 16;
    // A cluster is closed once it holds this many vertices.
    static constexpr int clusterCapacity = 32;

    explicit koViewportGeometry(koSceneStore* store, QObject* parent = nullptr);
    ~koViewportGeometry() override;

    // Drops what removed nodes left in the chunks; call before drawing them.
    void compact();
    std::vector<Chunk>& chunks() { return m_chunks; }
    int nodeCount() const { return m_items.size(); }

    // Nodes at or below any of these are drawn highlighted.
    void setSelection(const QSet<quint64>& nodes);
    // The box around the drawn nodes, or around the highlighted ones; false when empty.
    bool bounds(bool highlightedOnly, QVector3D& low, QVector3D& high) const;

    static QColor highlightColour();
    // The colour of the geometry that the reference with this share key holds.
    static QColor colourOf(quint64 shareKey);

signals:
    void changed();

private:
    struct Item
    {
        int chunk;
        int firstVertex;
        int vertexCount;
        bool highlighted;
        QVector3D low;
        QVector3D high;
    };
    struct Placement
    {
        QMatrix4x4 world;
        QColor colour;
        bool highlighted;
    };
    struct PendingMesh
    {
        quint64 node;
        const koMesh* mesh;
        Placement placement;
    };

    void rebuild();
    void addSubtree(quint64 id);
    void addNode(const koNodeRecord& node, const Placement& placement);
    void addPendingMeshes();
    void addMesh(quint64 id, const koMesh& mesh, const Placement& placement);
    static void addToCluster(Chunk& chunk, int firstIndex, int indexCount, const Item& item);
    void removeSubtree(quint64 id);
    void removeNode(quint64 id);
    void refreshVisibility(quint64 id);
    void refreshHighlight(quint64 id);
    bool isShown(quint64 id) const;
    bool isSelectedAtOrAbove(quint64 id) const;
    Placement placementOf(quint64 id) const;
    const koViewportMesh& drawnMesh(const koMesh& mesh);
    int chunkWithRoom(int count, bool closed);
    void compactChunk(int index);

    koSceneStore* m_store;
    std::vector<Chunk> m_chunks;
    QHash<quint64, Item> m_items;
    QSet<quint64> m_selection;
    // The meshes of the subtree being added, placed once it is walked.
    std::vector<PendingMesh> m_pending;
    // Meshes are shared between nodes; how they are drawn is kept while one subtree is added.
    std::unordered_map<const koMesh*, std::unique_ptr<koViewportMesh>> m_drawnMeshes;
    // The chunk last filled, for open meshes and for closed ones.
    int m_openChunks[2] = {-1, -1};
};
