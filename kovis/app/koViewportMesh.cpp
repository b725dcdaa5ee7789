#include "koViewportMesh.h"

#include "koMesh.h"

#include <algorithm>
#include <numeric>

namespace {

// Triangles whose normals differ by less than about a degree share a vertex's normal.
constexpr float sameNormal = 0.9998f;

QVector3D normalOf(const koMesh& mesh, const std::vector<quint32>& sources, const quint32* triangle)
{
    const QVector3D a = mesh.positions.at(int(sources[triangle[0]]));
    const QVector3D b = mesh.positions.at(int(sources[triangle[1]]));
    const QVector3D c = mesh.positions.at(int(sources[triangle[2]]));
    return QVector3D::crossProduct(b - a, c - a).normalized();
}

} // namespace

koViewportMesh::koViewportMesh(const koMesh& mesh)
{
    readTriangles(mesh);
    findClosed();
    turnOutward(mesh);
    assignNormals(mesh);
    if (mesh.positions.isEmpty())
        return;
    QVector3D low = mesh.positions.first();
    QVector3D high = low;
    for (const QVector3D& position : mesh.positions) {
        low = QVector3D(qMin(low.x(), position.x()), qMin(low.y(), position.y()), qMin(low.z(), position.z()));
        high = QVector3D(qMax(high.x(), position.x()), qMax(high.y(), position.y()), qMax(high.z(), position.z()));
    }
    m_centre = (low + high) / 2;
}

void koViewportMesh::readTriangles(const koMesh& mesh)
{
    const quint32 count = quint32(mesh.positions.size());
    if (count == 0)
        return;
    const int corners = mesh.triangles.size() / 3 * 3;
    m_triangles.reserve(size_t(corners));
    for (int corner = 0; corner < corners; ++corner) {
        const quint32 vertex = mesh.triangles.at(corner);
        m_triangles.push_back(vertex < count ? vertex : 0);
    }
}

void koViewportMesh::findClosed()
{
    std::vector<quint64> edges;
    edges.reserve(m_triangles.size());
    for (size_t first = 0; first < m_triangles.size(); first += 3) {
        for (size_t side = 0; side < 3; ++side) {
            const quint32 from = m_triangles[first + side];
            const quint32 to = m_triangles[first + (side + 1) % 3];
            if (from == to)
                return;
            edges.push_back(quint64(from) << 32 | to);
        }
    }
    std::sort(edges.begin(), edges.end());
    if (edges.empty() || std::adjacent_find(edges.begin(), edges.end()) != edges.end())
        return;
    m_closed = std::all_of(edges.begin(), edges.end(), [&edges](quint64 edge) {
        return std::binary_search(edges.begin(), edges.end(), edge << 32 | edge >> 32);
    });
}

void koViewportMesh::turnOutward(const koMesh& mesh)
{
    if (!m_closed)
        return;
    // Six times the signed volume, measured from a corner of the mesh to keep precision.
    const QVector3D origin = mesh.positions.at(int(m_triangles.front()));
    double volume = 0.0;
    for (size_t first = 0; first < m_triangles.size(); first += 3) {
        const QVector3D a = mesh.positions.at(int(m_triangles[first])) - origin;
        const QVector3D b = mesh.positions.at(int(m_triangles[first + 1])) - origin;
        const QVector3D c = mesh.positions.at(int(m_triangles[first + 2])) - origin;
        volume += double(QVector3D::dotProduct(a, QVector3D::crossProduct(b, c)));
    }
    if (volume >= 0.0)
        return;
    for (size_t first = 0; first < m_triangles.size(); first += 3)
        std::swap(m_triangles[first], m_triangles[first + 1]);
}

void koViewportMesh::assignNormals(const koMesh& mesh)
{
    const size_t count = size_t(mesh.positions.size());
    m_sources.resize(count);
    std::iota(m_sources.begin(), m_sources.end(), 0u);
    m_normals.assign(count, QVector3D());
    std::vector<bool> taken(count, false);
    for (size_t first = 0; first < m_triangles.size(); first += 3) {
        quint32* triangle = &m_triangles[first];
        const QVector3D normal = normalOf(mesh, m_sources, triangle);
        if (normal.isNull())
            continue;
        const auto sharesNormal = [&](int corner) {
            const quint32 vertex = triangle[corner];
            return taken[vertex] && QVector3D::dotProduct(m_normals[vertex], normal) >= sameNormal;
        };
        // A free vertex that the next triangle holds too may serve both.
        const auto isFree = [&](int corner, bool inNext) {
            const quint32 vertex = triangle[corner];
            const bool next = first + 5 < m_triangles.size()
                && std::find(triangle + 3, triangle + 6, vertex) != triangle + 6;
            return !taken[vertex] && next == inNext;
        };
        int last = -1;
        for (int corner = 0; corner < 3 && last < 0; ++corner)
            last = sharesNormal(corner) ? corner : -1;
        for (bool inNext : {true, false}) {
            for (int corner = 0; corner < 3 && last < 0; ++corner)
                last = isFree(corner, inNext) ? corner : -1;
        }
        if (last < 0) {
            last = 2;
            m_sources.push_back(m_sources[triangle[2]]);
            m_normals.emplace_back();
            taken.push_back(false);
            triangle[2] = quint32(m_sources.size() - 1);
        }
        const quint32 vertex = triangle[last];
        taken[vertex] = true;
        m_normals[vertex] = normal;
        std::rotate(triangle, triangle + last + 1, triangle + 3);
    }
}
