#include "koMesh.h"
#include "koViewportMesh.h"

#include <QtTest>

#include <algorithm>

// How the 3D view prepares a mesh: each triangle ends in a vertex that carries its own
// normal (flat shading lights the triangle with it), on the same corners as before, and
// a closed mesh comes out wound outward (its back faces are culled).
class tst_koViewportMesh : public QObject
{
    Q_OBJECT

private slots:
    void trianglesEndInTheirNormal_data();
    void trianglesEndInTheirNormal();
};

void tst_koViewportMesh::trianglesEndInTheirNormal_data()
{
    QTest::addColumn<QVector<QVector3D>>("positions");
    QTest::addColumn<QVector<quint32>>("triangles");
    QTest::addColumn<bool>("closed");

    QVector<QVector3D> cube;
    for (int corner = 0; corner < 8; ++corner)
        cube.append(QVector3D(corner & 1, (corner >> 1) & 1, (corner >> 2) & 1));
    const QVector<quint32> box = {0, 3, 1, 0, 2, 3, 4, 7, 6, 4, 5, 7, 0, 5, 4, 0, 1, 5,
                                  2, 7, 3, 2, 6, 7, 0, 6, 2, 0, 4, 6, 1, 7, 5, 1, 3, 7};
    QVector<quint32> inward = box;
    for (int first = 0; first < inward.size(); first += 3)
        std::swap(inward[first + 1], inward[first + 2]);
    QVector<quint32> oneTurned = box;
    std::swap(oneTurned[1], oneTurned[2]);
    const QVector<QVector3D> pyramid = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0.5f, 0.5f, 1}};

    QTest::newRow("box") << cube << box << true;
    QTest::newRow("box wound inward") << cube << inward << true;
    QTest::newRow("box with a triangle turned") << cube << oneTurned << false;
    // Four sides meet at the apex: more normals than one vertex can carry.
    QTest::newRow("pyramid") << pyramid << QVector<quint32>{0, 2, 1, 0, 3, 2, 0, 1, 4, 1, 2, 4, 2, 3, 4, 3, 0, 4}
                             << true;
    QTest::newRow("open sheet") << cube << QVector<quint32>{4, 5, 7, 4, 7, 6} << false;
    QTest::newRow("index out of range, part triangle") << cube << QVector<quint32>{4, 5, 9, 4, 7} << false;
}

void tst_koViewportMesh::trianglesEndInTheirNormal()
{
    QFETCH(QVector<QVector3D>, positions);
    QFETCH(QVector<quint32>, triangles);
    QFETCH(bool, closed);

    koMesh mesh;
    mesh.positions = positions;
    mesh.triangles = triangles;
    const koViewportMesh drawn(mesh);
    QCOMPARE(drawn.isClosed(), closed);
    QCOMPARE(int(drawn.triangles().size()), triangles.size() / 3 * 3);
    double volume = 0.0;
    for (size_t first = 0; first < drawn.triangles().size(); first += 3) {
        std::array<quint32, 3> corners;
        std::array<quint32, 3> given;
        for (size_t corner = 0; corner < 3; ++corner) {
            corners[corner] = drawn.sources().at(drawn.triangles()[first + corner]);
            const quint32 index = triangles.at(int(first + corner));
            given[corner] = index < quint32(positions.size()) ? index : 0;
        }
        QVERIFY(std::is_permutation(corners.begin(), corners.end(), given.begin()));
        const QVector3D a = positions.at(int(corners[0]));
        const QVector3D b = positions.at(int(corners[1]));
        const QVector3D c = positions.at(int(corners[2]));
        const QVector3D normal = QVector3D::crossProduct(b - a, c - a).normalized();
        if (!normal.isNull())
            QVERIFY(QVector3D::dotProduct(drawn.normals().at(drawn.triangles()[first + 2]), normal) > 0.999f);
        volume += double(QVector3D::dotProduct(a, QVector3D::crossProduct(b, c)));
    }
    if (closed)
        QVERIFY(volume > 0.0);
}

QTEST_MAIN(tst_koViewportMesh)
#include "tst_koviewportmesh.moc"
