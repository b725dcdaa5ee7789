#pragma once

#include "koOrbitCamera.h"

#include <QOpenGLBuffer>
#include <QOpenGLFunctions>
#include <QOpenGLShaderProgram>
#include <QOpenGLWidget>

#include <memory>
#include <vector>

class koViewportGeometry;

// Draws the merged geometry of the scene, shaded, with triangle edges on request, and
// turns the mouse into camera moves: left drag orbits, middle drag or Shift with left
// drag pans, the wheel zooms.
class koSceneViewport : public QOpenGLWidget, protected QOpenGLFunctions
{
    Q_OBJECT
public:
    explicit koSceneViewport(koViewportGeometry* geometry, QWidget* parent = nullptr);
    ~koSceneViewport() override;

    void fitAll();
    void fitSelection();
    void setShowEdges(bool show);

signals:
    // No drawing is possible here; the message says why.
    void unavailable(const QString& message);

protected:
    void initializeGL() override;
    void paintGL() override;
    void resizeGL(int width, int height) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    struct ChunkBuffers
    {
        QOpenGLBuffer vertices{QOpenGLBuffer::VertexBuffer};
        QOpenGLBuffer highlight{QOpenGLBuffer::VertexBuffer};
        QOpenGLBuffer indices{QOpenGLBuffer::IndexBuffer};
        // Indices to draw.
        int count = 0;
    };

    void fit(bool selectionOnly);
    void upload();
    // step: draw every step-th chunk.
    void drawChunks(int step);
    // edges: 1 to draw outlines in the edge colour, 0 to shade.
    void drawPass(float edges, int step);
    void releaseBuffers();
    float aspect() const;

    koViewportGeometry* m_geometry;
    koOrbitCamera m_camera;
    std::unique_ptr<QOpenGLShaderProgram> m_program;
    std::vector<std::unique_ptr<ChunkBuffers>> m_buffers;
    QPoint m_lastPosition;
    bool m_showEdges = false;
    // Until the user moves the camera, a resize frames the whole scene again.
    bool m_keepFitting = false;
    // A mouse button is down on the view.
    bool m_moving = false;
    double m_fullFrameMs = 0.0;
    static constexpr double movingFrameBudgetMs = 50.0;
};
