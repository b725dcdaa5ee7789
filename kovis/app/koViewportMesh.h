#pragma once

#include <QVector3D>

#include <vector>

struct koMesh;

// A mesh as the 3D view draws it. Each triangle's normal rides on its last vertex, which
// flat shading takes for the whole triangle, so that triangles go on sharing vertices; a
// vertex is copied only where triangles of different normals would each need it last.
// A closed mesh, wound the same way throughout, is turned to face outward so that its
// back faces need not be drawn.
class koViewportMesh
{
public:
    explicit koViewportMesh(const koMesh& mesh);

    // For each drawn vertex, the position of the mesh it stands at.
    const std::vector<quint32>& sources() const { return m_sources; }
    // For each drawn vertex, the normal of the triangles it is last in.
    const std::vector<QVector3D>& normals() const { return m_normals; }
    // Three drawn vertices a triangle, counter-clockwise seen from outside when closed.
    const std::vector<quint32>& triangles() const { return m_triangles; }
    // Every edge joins two triangles that run along it in opposite directions.
    bool isClosed() const { return m_closed; }
    // The middle of the box around the mesh.
    QVector3D centre() const { return m_centre; }

private:
    void readTriangles(const koMesh& mesh);
    void findClosed();
    void turnOutward(const koMesh& mesh);
    void assignNormals(const koMesh& mesh);

    std::vector<quint32> m_sources;
    std::vector<QVector3D> m_normals;
    std::vector<quint32> m_triangles;
    bool m_closed = false;
    QVector3D m_centre;
};
