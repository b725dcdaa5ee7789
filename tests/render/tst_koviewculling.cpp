#include "koDepthMap.h"
#include "koViewFrustum.h"

#include <QtTest>

// What the 3D view leaves out of a frame: boxes out of view, and boxes wholly behind
// what was already drawn. Leaving out a box that shows would leave a hole in the picture.
class tst_koViewCulling : public QObject
{
    Q_OBJECT

private slots:
    void frustum_data();
    void frustum();
    void depthMap_data();
    void depthMap();
};

void tst_koViewCulling::frustum_data()
{
    QTest::addColumn<QVector3D>("low");
    QTest::addColumn<QVector3D>("high");
    QTest::addColumn<bool>("mayShow");

    // The eye at z 10 looks down the z axis, a quarter turn wide, from 1 to 100 away.
    QTest::newRow("in the middle") << QVector3D(-1, -1, -1) << QVector3D(1, 1, 1) << true;
    QTest::newRow("around the eye") << QVector3D(-1, -1, 9) << QVector3D(1, 1, 11) << true;
    QTest::newRow("across the right edge") << QVector3D(9, -1, -1) << QVector3D(12, 1, 1) << true;
    QTest::newRow("across the far plane") << QVector3D(-1, -1, -95) << QVector3D(1, 1, -85) << true;
    QTest::newRow("left of the view") << QVector3D(-30, -1, -1) << QVector3D(-25, 1, 1) << false;
    QTest::newRow("above the view") << QVector3D(-1, 25, -1) << QVector3D(1, 30, 1) << false;
    QTest::newRow("behind the eye") << QVector3D(-1, -1, 11) << QVector3D(1, 1, 12) << false;
    QTest::newRow("beyond the far plane") << QVector3D(-1, -1, -100) << QVector3D(1, 1, -95) << false;
}

void tst_koViewCulling::frustum()
{
    QFETCH(QVector3D, low);
    QFETCH(QVector3D, high);
    QFETCH(bool, mayShow);

    QMatrix4x4 projection;
    projection.perspective(90.0f, 1.0f, 1.0f, 100.0f);
    QMatrix4x4 view;
    view.lookAt(QVector3D(0, 0, 10), QVector3D(0, 0, 0), QVector3D(0, 1, 0));
    QCOMPARE(koViewFrustum(projection * view).mayShow(low, high), mayShow);
}

void tst_koViewCulling::depthMap_data()
{
    QTest::addColumn<QMatrix4x4>("viewProjection");
    QTest::addColumn<int>("drawnColumns");
    QTest::addColumn<QVector3D>("low");
    QTest::addColumn<QVector3D>("high");
    QTest::addColumn<bool>("hidden");

    // In clip space as it is, the left half of the screen was drawn at depth 0 (window
    // depth 0.5), the right half is empty.
    const QMatrix4x4 clip;
    QTest::newRow("behind what was drawn") << clip << 32 << QVector3D(-0.9f, -0.5f, 0.2f) << QVector3D(-0.2f, 0.5f, 0.5f) << true;
    QTest::newRow("in front of it") << clip << 32 << QVector3D(-0.9f, -0.5f, -0.5f) << QVector3D(-0.2f, 0.5f, -0.2f) << false;
    QTest::newRow("level with it") << clip << 32 << QVector3D(-0.9f, -0.5f, 0.0f) << QVector3D(-0.2f, 0.5f, 0.5f) << false;
    QTest::newRow("reaching past its edge") << clip << 32 << QVector3D(-0.9f, -0.5f, 0.2f) << QVector3D(0.1f, 0.5f, 0.5f) << false;
    // The eye at the origin looks down the z axis; all the screen was drawn at depth 0.5,
    // nearer than the box's far corners, farther than where it passes the near plane.
    QMatrix4x4 perspective;
    perspective.perspective(90.0f, 1.0f, 1.0f, 100.0f);
    QTest::newRow("through the near plane") << perspective << 64 << QVector3D(-40, -10, -50) << QVector3D(-10, 10, 1) << false;
}

void tst_koViewCulling::depthMap()
{
    QFETCH(QMatrix4x4, viewProjection);
    QFETCH(int, drawnColumns);
    QFETCH(QVector3D, low);
    QFETCH(QVector3D, high);
    QFETCH(bool, hidden);

    const int size = 64;
    std::vector<float> depth(size_t(size * size), 1.0f);
    for (int y = 0; y < size; ++y)
        std::fill_n(depth.begin() + y * size, drawnColumns, 0.5f);
    QCOMPARE(koDepthMap(depth, size, size).hides(low, high, viewProjection), hidden);
}

QTEST_MAIN(tst_koViewCulling)
#include "tst_koviewculling.moc"
