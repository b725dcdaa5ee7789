#include "koBestOf.h"
#include "koReferenceEngine.h"
#include "koSceneStore.h"
#include "koSceneViewport.h"
#include "koTestHost.h"
#include "koViewportGeometry.h"

#include <kovis/koHost.h>
#include <kovis/kodReferenceNode.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QMouseEvent>
#include <QOpenGLContext>

#include <cstdio>
#include <memory>

// The 3D view over the plant of the other benchmarks held in memory: 100 assemblies of 10
// sub-assemblies of 100 parts, each part a reference holding one box of 12 triangles.
// Frames are drawn where OpenGL is at hand (scripts/bench runs this under Xvfb with
// Mesa's software renderer where there is no display).
namespace {

constexpr int assemblies = 100;
constexpr int subAssemblies = 10;
constexpr int partsPerSub = 100;

void report(const char* name, double ours, double floor)
{
    std::printf("%s: %.1f ms\n%s floor: %.1f ms\n%s ratio: %.2f\n", name, ours, name, floor, name, ours / floor);
}

std::shared_ptr<const koMesh> box()
{
    auto mesh = std::make_shared<koMesh>();
    for (int corner = 0; corner < 8; ++corner)
        mesh->positions.append(QVector3D(corner & 1, (corner >> 1) & 1, (corner >> 2) & 1));
    mesh->triangles = {0, 1, 3, 0, 3, 2, 4, 6, 7, 4, 7, 5, 0, 4, 5, 0, 5, 1,
                       2, 3, 7, 2, 7, 6, 0, 2, 6, 0, 6, 4, 1, 5, 7, 1, 7, 3};
    return mesh;
}

class Plant
{
public:
    Plant()
        : m_box(box())
    {
        const quint64 root = add(koNodeType::Reference, QStringLiteral("Plant"), 0, QMatrix4x4());
        for (int a = 0; a < assemblies; ++a) {
            const quint64 assembly = add(koNodeType::Reference, QStringLiteral("Assembly %1").arg(a), root, QMatrix4x4());
            for (int b = 0; b < subAssemblies; ++b) {
                const quint64 sub = add(koNodeType::Reference, QStringLiteral("Sub %1.%2").arg(a).arg(b), assembly,
                                        QMatrix4x4());
                for (int c = 0; c < partsPerSub; ++c)
                    addPart(sub, (a * subAssemblies + b) * partsPerSub + c);
            }
        }
    }

    // A part on a grid of 50 x 50 x 40 places.
    void addPart(quint64 parent, int index)
    {
        QMatrix4x4 place;
        place.translate(2.0f * float(index % 50), 2.0f * float(index / 50 % 50), 2.0f * float(index / 2500));
        const quint64 part = add(koNodeType::Reference, QStringLiteral("Part %1").arg(index), parent, place);
        m_parts.append(part);
        m_nodes[int(add(koNodeType::Geometry, QStringLiteral("Box"), part, QMatrix4x4()) - 1)].mesh = m_box;
    }

    quint64 add(koNodeType type, const QString& name, quint64 parent, const QMatrix4x4& transform)
    {
        koNodeRecord node;
        node.id = quint64(m_nodes.size()) + 1;
        node.type = type;
        node.name = name;
        node.parent = parent;
        node.transform = transform;
        node.shareKey = node.id;
        if (parent)
            m_nodes[int(parent - 1)].children.append(node.id);
        if (type == koNodeType::Reference)
            m_contents.insert(node.id, koReferenceContent());
        m_nodes.append(node);
        return node.id;
    }

    void load(koSceneStore& store) const { store.reset(m_nodes, m_contents); }
    const QVector<quint64>& parts() const { return m_parts; }
    const QVector<koNodeRecord>& nodes() const { return m_nodes; }

private:
    std::shared_ptr<const koMesh> m_box;
    QVector<koNodeRecord> m_nodes;
    QHash<quint64, koReferenceContent> m_contents;
    QVector<quint64> m_parts;
};

// The least any build must do: every corner of every box placed in the world once.
double transformFloor(const Plant& plant)
{
    return bestOf([&] {
        std::vector<QVector3D> corners;
        corners.reserve(size_t(plant.parts().size()) * 36);
        for (const koNodeRecord& node : plant.nodes()) {
            if (!node.mesh)
                continue;
            const QMatrix4x4 world = plant.nodes().at(int(node.parent - 1)).transform;
            for (quint32 index : node.mesh->triangles)
                corners.push_back(world.map(node.mesh->positions.at(int(index))));
        }
    });
}

// Unloads and loads one part; then brings the view up to date when there is one.
double reloadOnePart(const Plant& plant, koViewportGeometry* geometry)
{
    kodReferenceNode part(plant.parts().at(plant.parts().size() / 2));
    return bestOf([&] {
        part.unload();
        part.load();
        if (geometry)
            geometry->compact();
    });
}

// At this x, with these buttons down after the event.
void sendMouse(QWidget& view, QEvent::Type type, int x, Qt::MouseButtons buttons)
{
    QMouseEvent event(type, QPointF(x, 10), type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons,
                      Qt::NoModifier);
    QCoreApplication::sendEvent(&view, &event);
}

void benchFrames(koViewportGeometry& geometry, koSceneStore& store)
{
    QOpenGLContext probe;
    if (!probe.create()) {
        std::fprintf(stderr, "bench_viewport: no OpenGL context here, no frames drawn\n");
        return;
    }
    koSceneViewport view(&geometry);
    view.resize(1280, 800);
    view.show();
    QCoreApplication::processEvents();
    view.fitAll();
    QElapsedTimer first;
    first.start();
    view.grabFramebuffer();
    std::printf("viewport first frame with upload, 100,000 references: %.1f ms\n", first.nsecsElapsed() / 1e6);
    // Setting an option of the view asks for a new frame; a repaint without change shows
    // the last one again.
    const auto drawAnew = [&view] {
        view.setCullHidden(true);
        view.grabFramebuffer();
    };
    const double frame = bestOf(drawAnew);
    std::printf("viewport repaint without change, 100,000 references: %.1f ms\n",
                bestOf([&] { view.grabFramebuffer(); }));
    // Each frame a camera a little turned from the last, drawn in full once the button is up.
    int x = 10;
    std::printf("viewport frame after a small turn, 100,000 references: %.1f ms\n", bestOf([&] {
                    sendMouse(view, QEvent::MouseButtonPress, x, Qt::LeftButton);
                    sendMouse(view, QEvent::MouseMove, x += 2, Qt::LeftButton);
                    sendMouse(view, QEvent::MouseButtonRelease, x, Qt::NoButton);
                    view.grabFramebuffer();
                }));
    sendMouse(view, QEvent::MouseButtonPress, x, Qt::LeftButton);
    std::printf("viewport frame while orbiting, 100,000 references: %.1f ms\n", bestOf([&] {
                    sendMouse(view, QEvent::MouseMove, x += 2, Qt::LeftButton);
                    view.grabFramebuffer();
                }));
    sendMouse(view, QEvent::MouseButtonRelease, x, Qt::NoButton);
    store.setVisible(store.rootId(), false);
    const double empty = bestOf(drawAnew);
    store.setVisible(store.rootId(), true);
    report("viewport frame, 100,000 references", frame, empty);
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    koTestHost host;
    koSceneStore& store = *koHost::engine()->store();
    const Plant plant;
    plant.load(store);

    const double floor = transformFloor(plant);
    std::unique_ptr<koViewportGeometry> geometry;
    const double build = bestOf([&] {
        geometry.reset();
        geometry = std::make_unique<koViewportGeometry>(&store);
    });
    report("viewport buffers, 100,000 references", build, floor);

    const double reloadWithView = reloadOnePart(plant, geometry.get());
    benchFrames(*geometry, store);
    geometry.reset();
    // A reload costs the view about what the changed reference holds, not a rebuild.
    std::printf("viewport reload of one reference: %.2f ms\n", reloadWithView);
    std::printf("reload of one reference without a view: %.2f ms\n", reloadOnePart(plant, nullptr));
    return 0;
}
