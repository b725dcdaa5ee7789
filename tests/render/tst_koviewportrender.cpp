#include "koHostSession.h"
#include "koReferenceEngine.h"
#include "koSceneStore.h"
#include "koSceneViewport.h"
#include "koTestHost.h"
#include "koViewport.h"
#include "koViewportGeometry.h"

#include <kovis/koFileIOService.h>
#include <kovis/koHost.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koTreeService.h>
#include <kovis/koUndoStack.h>

#include <QTemporaryDir>
#include <QUndoStack>
#include <QtTest>

#include <functional>

Q_DECLARE_METATYPE(std::function<void(kodReferenceNode)>)

namespace {

// Triangles on the corners of the unit cube (corner i at x = bit 0, y = bit 1, z = bit 2):
// the whole cube wound outward, and its top face alone.
const QVector<quint32> box = {0, 3, 1, 0, 2, 3, 4, 7, 6, 4, 5, 7, 0, 5, 4, 0, 1, 5,
                              2, 7, 3, 2, 6, 7, 0, 6, 2, 0, 4, 6, 1, 7, 5, 1, 3, 7};
const QVector<quint32> sheet = {4, 5, 7, 4, 7, 6};

} // namespace

// Renders the demo bicycle through the host's 3D view and reads the pixels back.
class tst_koViewportRender : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();
    void demoIsDrawnWithoutHighlight();
    void selectedReferenceFollowsTheScene_data();
    void selectedReferenceFollowsTheScene();
    void meshLooksTheSameHoweverWound_data();
    void meshLooksTheSameHoweverWound();
    void hiddenPartShowsOnceTheCameraTurns();
    void largeSceneLooksTheSameWithHiddenPartsLeftOut();

private:
    QImage render() const;
    int highlightPixels(const QImage& image) const;
    int geometryPixels(const QImage& image) const;
    void openDemo();
    // A scene of parts, each a mesh on the corners of the unit cube, placed.
    void loadCubeMeshes(const QVector<QPair<QVector<quint32>, QMatrix4x4>>& parts);
    QImage renderCubeMesh(const QVector<quint32>& triangles, const QMatrix4x4& placement);
    void turnCamera(int dx);
    static int differingPixels(const QImage& a, const QImage& b);

    QTemporaryDir m_settings;
    std::unique_ptr<koHostSession> m_session;
    koSceneViewport* m_view = nullptr;
    QImage m_background;
};

void tst_koViewportRender::initTestCase()
{
    m_session = std::make_unique<koHostSession>(m_settings.filePath(QStringLiteral("kovis.ini")));
    koMainWindow& window = m_session->window();
    window.resize(900, 600);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    m_view = window.viewport()->sceneView();
    QVERIFY2(m_view, "no OpenGL context under this X server");
}

// Draws the empty scene first, as the background that geometry pixels differ from.
void tst_koViewportRender::init()
{
    koKernelServiceFactory::the()->getServiceOrNull<koFileIOService>()->newProject();
    m_background = render();
}

void tst_koViewportRender::cleanupTestCase()
{
    m_session.reset();
}

QImage tst_koViewportRender::render() const
{
    koTestHost::settle();
    return m_view->grabFramebuffer();
}

void tst_koViewportRender::openDemo()
{
    QVERIFY(koKernelServiceFactory::the()->getServiceOrNull<koFileIOService>()->loadProject(
        QStringLiteral(KOVIS_DEMO_PROJECT)));
}

int tst_koViewportRender::highlightPixels(const QImage& image) const
{
    const QColor highlight = koViewportGeometry::highlightColour();
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            count += qAbs(pixel.hsvHue() - highlight.hsvHue()) <= 8 && pixel.hsvSaturation() > 160 && pixel.value() > 40;
        }
    }
    return count;
}

int tst_koViewportRender::geometryPixels(const QImage& image) const
{
    return differingPixels(image, m_background);
}

void tst_koViewportRender::demoIsDrawnWithoutHighlight()
{
    openDemo();
    koKernelServiceFactory::the()->getServiceOrNull<koTreeService>()->clearSelection();
    const QImage image = render();
    QVERIFY2(geometryPixels(image) > 5000, qPrintable(QString::number(geometryPixels(image))));
    QCOMPARE(highlightPixels(image), 0);
    // Nothing changed: the repaint shows the frame kept from the last one. A new size
    // draws anew, also once the camera no longer frames the scene by itself.
    QCOMPARE(differingPixels(m_view->grabFramebuffer(), image), 0);
    turnCamera(40);
    const QImage turned = render();
    const QSize size = m_session->window().size();
    m_session->window().resize(size - QSize(100, 100));
    koTestHost::settle();
    m_session->window().resize(size);
    QCOMPARE(differingPixels(render(), turned), 0);
    turnCamera(-40);
}

void tst_koViewportRender::selectedReferenceFollowsTheScene_data()
{
    QTest::addColumn<QString>("reference");
    QTest::addColumn<std::function<void(kodReferenceNode)>>("change");
    QTest::addColumn<bool>("drawn");

    const auto nothing = [](kodReferenceNode) {};
    const auto unload = [](kodReferenceNode node) { node.unload(); };
    const auto hide = [](kodReferenceNode node) { node.setVisibilityFlag(false); };
    const auto undo = [](kodReferenceNode) { koUndoStack::the()->stack()->undo(); };
    const auto then = [](std::function<void(kodReferenceNode)> first, std::function<void(kodReferenceNode)> second) {
        return std::function<void(kodReferenceNode)>([=](kodReferenceNode node) {
            first(node);
            second(node);
        });
    };

    // The frame's triangles come from its smart file, the handlebar's from an OBJ import.
    QTest::newRow("selected") << "Frame" << std::function<void(kodReferenceNode)>(nothing) << true;
    QTest::newRow("unloaded") << "Frame" << std::function<void(kodReferenceNode)>(unload) << false;
    QTest::newRow("unloaded and loaded") << "Frame"
                                         << then(unload, [](kodReferenceNode node) { node.load(); }) << true;
    QTest::newRow("unload undone") << "Frame" << then(unload, undo) << true;
    QTest::newRow("sub-reference unloaded") << "Fork" << std::function<void(kodReferenceNode)>(unload) << false;
    QTest::newRow("hidden") << "Handlebar" << std::function<void(kodReferenceNode)>(hide) << false;
    QTest::newRow("hidden and shown") << "Handlebar"
                                      << then(hide, [](kodReferenceNode node) { node.setVisibilityFlag(true); }) << true;
    QTest::newRow("imported source unloaded") << "Handlebar" << std::function<void(kodReferenceNode)>(unload) << false;
}

void tst_koViewportRender::selectedReferenceFollowsTheScene()
{
    QFETCH(QString, reference);
    QFETCH(std::function<void(kodReferenceNode)>, change);
    QFETCH(bool, drawn);

    openDemo();
    const kodReferenceNode node = koTestHost::findReference(reference);
    QVERIFY(node.isValid());
    koKernelServiceFactory::the()->getServiceOrNull<koTreeService>()->setSelection(koTreeService::encodeSelection({node}));
    const QImage before = render();
    const int highlighted = highlightPixels(before);
    QVERIFY2(highlighted > 100, qPrintable(QString::number(highlighted)));

    change(node);
    const QImage after = render();
    if (drawn) {
        QVERIFY2(highlightPixels(after) > highlighted / 2, qPrintable(QString::number(highlightPixels(after))));
        return;
    }
    QCOMPARE(highlightPixels(after), 0);
    // Its pixels are gone, not merely drawn in another colour (what lay behind shows now);
    // the rest is still there.
    QVERIFY(geometryPixels(after) <= geometryPixels(before) - highlighted / 2);
    QVERIFY(geometryPixels(after) > 1000);
}

void tst_koViewportRender::loadCubeMeshes(const QVector<QPair<QVector<quint32>, QMatrix4x4>>& parts)
{
    koNodeRecord root;
    root.id = root.shareKey = 1;
    root.type = koNodeType::Reference;
    QVector<koNodeRecord> nodes;
    for (const auto& part : parts) {
        auto mesh = std::make_shared<koMesh>();
        for (int corner = 0; corner < 8; ++corner)
            mesh->positions.append(QVector3D(corner & 1, (corner >> 1) & 1, (corner >> 2) & 1));
        mesh->triangles = part.first;
        koNodeRecord node;
        node.id = node.shareKey = quint64(nodes.size()) + 2;
        node.type = koNodeType::Geometry;
        node.parent = 1;
        node.transform = part.second;
        node.mesh = mesh;
        root.children.append(node.id);
        nodes.append(node);
    }
    nodes.prepend(root);
    koHost::engine()->store()->reset(nodes, {{1, koReferenceContent()}});
}

QImage tst_koViewportRender::renderCubeMesh(const QVector<quint32>& triangles, const QMatrix4x4& placement)
{
    loadCubeMeshes({{triangles, placement}});
    m_view->fitAll();
    return render();
}

void tst_koViewportRender::turnCamera(int dx)
{
    QMouseEvent press(QEvent::MouseButtonPress, QPointF(10, 10), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(m_view, &press);
    QMouseEvent move(QEvent::MouseMove, QPointF(10 + dx, 10), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(m_view, &move);
    QMouseEvent release(QEvent::MouseButtonRelease, QPointF(10 + dx, 10), Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(m_view, &release);
}

int tst_koViewportRender::differingPixels(const QImage& a, const QImage& b)
{
    int count = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x)
            count += a.pixel(x, y) != b.pixel(x, y);
    }
    return count;
}

// Back faces of closed meshes are not drawn; whatever the winding, what is seen is the same.
void tst_koViewportRender::meshLooksTheSameHoweverWound_data()
{
    QTest::addColumn<QVector<quint32>>("reference");
    QTest::addColumn<QVector<quint32>>("variant");
    QTest::addColumn<bool>("mirrored");

    // The triangles from first to last (not included) turned the other way.
    const auto turned = [](QVector<quint32> triangles, int first, int last) {
        for (int triangle = first; triangle < last; ++triangle)
            std::swap(triangles[triangle * 3 + 1], triangles[triangle * 3 + 2]);
        return triangles;
    };
    QTest::newRow("closed, wound inward") << box << turned(box, 0, 12) << false;
    QTest::newRow("closed, placed mirrored") << box << box << true;
    // On the face toward the eye.
    QTest::newRow("one triangle turned") << box << turned(box, 2, 3) << false;
    QTest::newRow("open, seen from behind") << sheet << turned(sheet, 0, 2) << false;
}

void tst_koViewportRender::meshLooksTheSameHoweverWound()
{
    QFETCH(QVector<quint32>, reference);
    QFETCH(QVector<quint32>, variant);
    QFETCH(bool, mirrored);

    const QImage expected = renderCubeMesh(reference, QMatrix4x4());
    QMatrix4x4 placement;
    if (mirrored) {
        placement.translate(1, 0, 0);
        placement.scale(-1, 1, 1);
    }
    const int differing = differingPixels(renderCubeMesh(variant, placement), expected);
    QVERIFY2(geometryPixels(expected) > 5000, qPrintable(QString::number(geometryPixels(expected))));
    QVERIFY2(differing < geometryPixels(expected) / 100, qPrintable(QString::number(differing)));
}

// A part hidden behind a wall is left out of the frames that do not show it; once the
// camera turns round the wall, the next frame draws it.
void tst_koViewportRender::hiddenPartShowsOnceTheCameraTurns()
{
    QMatrix4x4 wall;
    wall.translate(-10, -10, 2);
    wall.scale(21, 21, 1);
    loadCubeMeshes({{box, QMatrix4x4()}, {sheet, wall}});
    m_view->fitAll();
    render();
    loadCubeMeshes({{sheet, wall}});
    const QImage wallOnly = render();
    loadCubeMeshes({{box, QMatrix4x4()}, {sheet, wall}});
    QCOMPARE(differingPixels(render(), wallOnly), 0);

    // Half a turn brings the eye round to the box's side of the wall.
    turnCamera(450);
    const QImage turned = render();
    loadCubeMeshes({{sheet, wall}});
    const QImage wallOnlyTurned = render();
    // Drawn anew, every part is drawn first.
    loadCubeMeshes({{box, QMatrix4x4()}, {sheet, wall}});
    const QImage expected = render();
    QVERIFY2(differingPixels(expected, wallOnlyTurned) > 20, qPrintable(QString::number(differingPixels(expected, wallOnlyTurned))));
    QCOMPARE(differingPixels(turned, expected), 0);
}

// No frame has seen any part of a scene just loaded: the first draws those that show in
// rounds, nearest first; it and the frames after it leave out what is hidden, and show
// the same picture as a frame that draws every part.
void tst_koViewportRender::largeSceneLooksTheSameWithHiddenPartsLeftOut()
{
    const int side = 18;
    QVector<QPair<QVector<quint32>, QMatrix4x4>> parts;
    for (int index = 0; index < side * side * side; ++index) {
        QMatrix4x4 place;
        place.translate(2.0f * float(index % side), 2.0f * float(index / side % side), 2.0f * float(index / side / side));
        parts.append({box, place});
    }
    loadCubeMeshes(parts);
    m_view->fitAll();
    const QImage first = m_view->grabFramebuffer();
    const QImage later = render();
    m_view->setCullHidden(false);
    const QImage whole = render();
    m_view->setCullHidden(true);
    QVERIFY2(geometryPixels(whole) > 5000, qPrintable(QString::number(geometryPixels(whole))));
    QCOMPARE(differingPixels(first, whole), 0);
    QCOMPARE(differingPixels(later, whole), 0);
}

QTEST_MAIN(tst_koViewportRender)
#include "tst_koviewportrender.moc"
