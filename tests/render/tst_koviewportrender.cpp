#include "koHostSession.h"
#include "koSceneViewport.h"
#include "koTestHost.h"
#include "koViewport.h"
#include "koViewportGeometry.h"

#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koTreeService.h>
#include <kovis/koUndoStack.h>

#include <QTemporaryDir>
#include <QUndoStack>
#include <QtTest>

#include <functional>

Q_DECLARE_METATYPE(std::function<void(kodReferenceNode)>)

// Renders the demo bicycle through the host's 3D view and reads the pixels back.
class tst_koViewportRender : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void demoIsDrawnWithoutHighlight();
    void selectedReferenceFollowsTheScene_data();
    void selectedReferenceFollowsTheScene();

private:
    QImage render() const;
    int highlightPixels(const QImage& image) const;
    int geometryPixels(const QImage& image) const;
    // Draws the empty scene first, as the background that geometry pixels differ from.
    void openDemo();

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
    auto* fileIO = koKernelServiceFactory::the()->getServiceOrNull<koFileIOService>();
    fileIO->newProject();
    m_background = render();
    QVERIFY(fileIO->loadProject(QStringLiteral(KOVIS_DEMO_PROJECT)));
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
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += image.pixel(x, y) != m_background.pixel(x, y);
    }
    return count;
}

void tst_koViewportRender::demoIsDrawnWithoutHighlight()
{
    openDemo();
    koKernelServiceFactory::the()->getServiceOrNull<koTreeService>()->clearSelection();
    const QImage image = render();
    QVERIFY2(geometryPixels(image) > 5000, qPrintable(QString::number(geometryPixels(image))));
    QCOMPARE(highlightPixels(image), 0);
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

QTEST_MAIN(tst_koViewportRender)
#include "tst_koviewportrender.moc"
