#pragma once

#include <QWidget>

class koSceneViewport;
class koSceneStore;
class koViewportGeometry;
class QLabel;
class QStackedLayout;

// The main area of the host: the 3D view of the scene, following its changes and the
// scene selection, or a message where no OpenGL context can be had.
class koViewport : public QWidget
{
    Q_OBJECT
public:
    explicit koViewport(koSceneStore* store, QWidget* parent = nullptr);
    ~koViewport() override;

    // Null where the view cannot draw.
    koSceneViewport* sceneView() const { return m_sceneView; }
    koViewportGeometry* geometry() const { return m_geometry; }
    void fitAll();
    void fitSelection();
    void setShowEdges(bool show);

private:
    void showMessage(const QString& text);
    void followSelection();

    koViewportGeometry* m_geometry;
    QStackedLayout* m_layout;
    QLabel* m_message;
    koSceneViewport* m_sceneView = nullptr;
};
