#pragma once

#include "koOrbitCamera.h"
#include "koViewportGeometry.h"

#include <QOpenGLBuffer>
#include <QOpenGLFunctions>
#include <QOpenGLShaderProgram>
#include <QOpenGLWidget>

#include <memory>
#include <vector>

class QOpenGLFunctions_2_1;

// Draws the merged geometry of the scene, shaded, with triangle edges on request, leaving
// out the clusters that lie out of view or wholly behind what is drawn; and turns the mouse
// into camera moves: left drag orbits, middle drag or Shift with left drag pans, the wheel
// zooms.
class koSceneViewport : public QOpenGLWidget, protected QOpenGLFunctions
{
    Q_OBJECT
public:
    explicit koSceneViewport(koViewportGeometry* geometry, QWidget* parent = nullptr);
    ~koSceneViewport() override;

    void fitAll();
    void fitSelection();
    void setShowEdges(bool show);
    // Whether clusters wholly behind what is drawn are left out (the default).
    void setCullHidden(bool cull);

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
    struct Box
    {
        QVector3D low;
        QVector3D high;
    };
    struct ChunkBuffers
    {
        QOpenGLBuffer vertices{QOpenGLBuffer::VertexBuffer};
        QOpenGLBuffer highlight{QOpenGLBuffer::VertexBuffer};
        QOpenGLBuffer indices{QOpenGLBuffer::IndexBuffer};
        bool cullBackFaces = false;
        std::vector<koViewportGeometry::Chunk::Cluster> clusters;
        // The boxes around each run of groupSize clusters.
        std::vector<Box> groups;
        // Whether the last frame saw each cluster.
        std::vector<bool> seen;
    };
    // A cluster of a chunk.
    struct ClusterRef
    {
        int chunk;
        int cluster;
    };

    // What the view shows changed: the next paint draws a new frame.
    void redraw();
    void fit(bool selectionOnly);
    void upload();
    static void groupClusters(ChunkBuffers& buffers);
    // step: draw every step-th chunk.
    void drawChunks(int step);
    // The clusters of every step-th chunk that may be in view, as the last frame saw them.
    void sortClustersInView(int step, std::vector<ClusterRef>& seen, std::vector<ClusterRef>& unseen) const;
    void setSeen(const std::vector<ClusterRef>& clusters, bool seen);
    void setUpGeometryProgram();
    // edges: 1 to draw outlines in the edge colour, 0 to shade.
    void drawClusters(const std::vector<ClusterRef>& clusters, float edges);
    // Those of the clusters whose boxes the depth drawn so far does not wholly hide.
    std::vector<ClusterRef> unhidden(const std::vector<ClusterRef>& clusters);
    // Draws those of the clusters that show past what is drawn, nearest first, a quarter at
    // a time while many show, so that the nearer hide the farther (as after a load, when
    // no frame has seen any yet); returns them in chunk order.
    std::vector<ClusterRef> drawUnhidden(std::vector<ClusterRef> candidates);
    void releaseBuffers();
    float aspect() const;

    koViewportGeometry* m_geometry;
    koOrbitCamera m_camera;
    std::unique_ptr<QOpenGLShaderProgram> m_program;
    // Owned by the context: flat shading, polygon modes, several draws in one call.
    QOpenGLFunctions_2_1* m_legacy = nullptr;
    std::vector<std::unique_ptr<ChunkBuffers>> m_buffers;
    // The depth read back to find hidden clusters.
    std::vector<float> m_depth;
    QPoint m_lastPosition;
    bool m_showEdges = false;
    bool m_cullHidden = true;
    bool m_frameStale = true;
    // Until the user moves the camera, a resize frames the whole scene again.
    bool m_keepFitting = false;
    // A mouse button is down on the view.
    bool m_moving = false;
    double m_fullFrameMs = 0.0;
    static constexpr double movingFrameBudgetMs = 50.0;
    // More clusters than this showing at once are drawn in rounds.
    static constexpr int revealBatch = 1000;
    static constexpr int groupSize = 16;
};
