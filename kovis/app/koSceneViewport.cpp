#include "koSceneViewport.h"

#include "koDepthMap.h"
#include "koViewFrustum.h"
#include "koViewportGeometry.h"

#include <QElapsedTimer>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QOpenGLFunctions_2_1>
#include <QPainter>
#include <QWheelEvent>

#include <cmath>

namespace {

enum Attribute { Position, Colour, Normal, Highlight };

// GLSL 1.20 runs on every desktop OpenGL from 2.1 on, Mesa's software renderer among them.
// Each vertex is lit with the normal of the triangles that end in it, and flat shading
// gives that colour to the whole triangle, so that a fragment costs no more than a write.
// The light comes from the eye and reaches both sides, as open meshes show either.
const char* vertexShader = R"(#version 120
attribute vec3 position;
attribute vec4 colour;
attribute vec3 normal;
attribute float highlight;
uniform mat4 view;
uniform mat4 projection;
uniform mat3 normalToEye;
uniform vec3 highlightColour;
uniform float edges;
void main()
{
    gl_Position = projection * (view * vec4(position, 1.0));
    vec3 base = mix(colour.rgb, highlightColour, highlight);
    float light = 0.3 + 0.7 * abs(normalize(normalToEye * normal).z);
    gl_FrontColor = vec4(mix(base * light, base * 0.25, edges), 1.0);
}
)";

const char* fragmentShader = R"(#version 120
void main()
{
    gl_FragColor = gl_Color;
}
)";

// A box grown by this part of its size, and a little more, is sure to lie in front of
// what it holds wherever that can be seen.
constexpr float boxMargin = 1e-3f;

} // namespace

koSceneViewport::koSceneViewport(koViewportGeometry* geometry, QWidget* parent)
    : QOpenGLWidget(parent)
    , m_geometry(geometry)
{
    setObjectName(QStringLiteral("SceneViewport"));
    QSurfaceFormat format = QSurfaceFormat::defaultFormat();
    format.setDepthBufferSize(24);
    setFormat(format);
    setMinimumSize(64, 64);
    setFocusPolicy(Qt::StrongFocus);
    // The framebuffer keeps the last frame, which a repaint without change shows again.
    setUpdateBehavior(QOpenGLWidget::PartialUpdate);
    connect(geometry, &koViewportGeometry::changed, this, &koSceneViewport::redraw);
}

koSceneViewport::~koSceneViewport()
{
    // The context outlives this part of the widget and must not call back into it.
    if (context())
        disconnect(context(), nullptr, this, nullptr);
    releaseBuffers();
}

void koSceneViewport::releaseBuffers()
{
    makeCurrent();
    m_buffers.clear();
    m_program.reset();
    doneCurrent();
}

void koSceneViewport::initializeGL()
{
    initializeOpenGLFunctions();
    m_frameStale = true;
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &koSceneViewport::releaseBuffers);
    m_legacy = context()->versionFunctions<QOpenGLFunctions_2_1>();
    auto program = std::make_unique<QOpenGLShaderProgram>();
    program->bindAttributeLocation("position", Position);
    program->bindAttributeLocation("colour", Colour);
    program->bindAttributeLocation("normal", Normal);
    program->bindAttributeLocation("highlight", Highlight);
    if (!m_legacy || !program->addShaderFromSourceCode(QOpenGLShader::Vertex, vertexShader)
        || !program->addShaderFromSourceCode(QOpenGLShader::Fragment, fragmentShader) || !program->link()) {
        emit unavailable(tr("The 3D view needs OpenGL 2.1, which %1 does not offer.\n\n%2")
                             .arg(QString::fromLatin1(reinterpret_cast<const char*>(glGetString(GL_RENDERER))),
                                  program->log().trimmed()));
        return;
    }
    m_program = std::move(program);
}

void koSceneViewport::redraw()
{
    m_frameStale = true;
    update();
}

void koSceneViewport::paintGL()
{
    if (!m_frameStale)
        return;
    QPainter painter(this);
    QLinearGradient gradient(0, 0, 0, height());
    gradient.setColorAt(0, QColor(0x4a, 0x58, 0x66));
    gradient.setColorAt(1, QColor(0x20, 0x26, 0x2c));
    painter.fillRect(rect(), gradient);
    if (!m_program)
        return;
    painter.beginNativePainting();
    upload();
    // While the camera moves, a scene whose full frame is slow draws every n-th chunk
    // only, so that the view keeps up with the mouse; releasing the button draws it all.
    const int step = m_moving ? qMax(1, int(std::ceil(m_fullFrameMs / movingFrameBudgetMs))) : 1;
    QElapsedTimer timer;
    timer.start();
    drawChunks(step);
    // A frame drawn in part while the camera moves is drawn whole once it stops.
    m_frameStale = step > 1;
    if (step == 1) {
        glFinish();
        m_fullFrameMs = double(timer.nsecsElapsed()) / 1e6;
    }
    painter.endNativePainting();
}

void koSceneViewport::upload()
{
    m_geometry->compact();
    std::vector<koViewportGeometry::Chunk>& chunks = m_geometry->chunks();
    m_buffers.resize(chunks.size());
    for (size_t i = 0; i < chunks.size(); ++i) {
        koViewportGeometry::Chunk& chunk = chunks[i];
        if (!m_buffers[i]) {
            m_buffers[i] = std::make_unique<ChunkBuffers>();
            m_buffers[i]->vertices.create();
            m_buffers[i]->highlight.create();
            m_buffers[i]->indices.create();
            chunk.verticesChanged = true;
        }
        ChunkBuffers& buffers = *m_buffers[i];
        if (chunk.verticesChanged) {
            buffers.vertices.bind();
            buffers.vertices.allocate(chunk.vertices.data(), int(chunk.vertices.size() * sizeof(koViewportVertex)));
            buffers.indices.bind();
            buffers.indices.allocate(chunk.indices.data(), int(chunk.indices.size() * sizeof(quint32)));
            buffers.cullBackFaces = chunk.cullBackFaces;
            buffers.clusters = chunk.clusters;
            buffers.seen.assign(chunk.clusters.size(), false);
            groupClusters(buffers);
            chunk.verticesChanged = false;
            chunk.highlightChanged = true;
        }
        if (chunk.highlightChanged) {
            buffers.highlight.bind();
            buffers.highlight.allocate(chunk.highlight.data(), int(chunk.highlight.size()));
            chunk.highlightChanged = false;
        }
    }
}

void koSceneViewport::groupClusters(ChunkBuffers& buffers)
{
    buffers.groups.clear();
    for (size_t first = 0; first < buffers.clusters.size(); first += size_t(groupSize)) {
        const auto begin = buffers.clusters.cbegin() + std::ptrdiff_t(first);
        const auto end = buffers.clusters.cbegin() + std::ptrdiff_t(std::min(first + size_t(groupSize), buffers.clusters.size()));
        Box group{begin->low, begin->high};
        for (auto cluster = begin; cluster != end; ++cluster) {
            group.low = QVector3D(qMin(group.low.x(), cluster->low.x()), qMin(group.low.y(), cluster->low.y()),
                                  qMin(group.low.z(), cluster->low.z()));
            group.high = QVector3D(qMax(group.high.x(), cluster->high.x()), qMax(group.high.y(), cluster->high.y()),
                                   qMax(group.high.z(), cluster->high.z()));
        }
        buffers.groups.push_back(group);
    }
}

// Clusters that the last frame saw are drawn first; the boxes of the others are then
// tested against that depth, and those not wholly behind it drawn too. So the picture is
// whole however the camera or the scene changed; testing the boxes of all drawn clusters
// against the finished depth tells the next frame which to draw first.
void koSceneViewport::drawChunks(int step)
{
    std::vector<ClusterRef> seen;
    std::vector<ClusterRef> unseen;
    sortClustersInView(step, seen, unseen);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glDepthMask(GL_TRUE);
    glDisable(GL_BLEND);
    glCullFace(GL_BACK);
    glFrontFace(GL_CCW);
    glClear(GL_DEPTH_BUFFER_BIT);
    m_legacy->glShadeModel(GL_FLAT);
    // Edges are the triangles' outlines drawn over the shaded triangles, which step back
    // a little in depth for them.
    if (m_showEdges) {
        glEnable(GL_POLYGON_OFFSET_FILL);
        glPolygonOffset(1.0f, 1.0f);
    }
    drawClusters(seen, 0.0f);
    const std::vector<ClusterRef> found = drawUnhidden(std::move(unseen));
    if (m_showEdges) {
        glDisable(GL_POLYGON_OFFSET_FILL);
        m_legacy->glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
        drawClusters(seen, 1.0f);
        drawClusters(found, 1.0f);
        m_legacy->glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    }
    glDisable(GL_CULL_FACE);
    m_legacy->glShadeModel(GL_SMOOTH);
    setSeen(seen, false);
    setSeen(unhidden(seen), true);
    setSeen(found, true);
}

void koSceneViewport::sortClustersInView(int step, std::vector<ClusterRef>& seen, std::vector<ClusterRef>& unseen) const
{
    const koViewFrustum frustum(m_camera.projection(aspect()) * m_camera.view());
    for (int chunk = 0; chunk < int(m_buffers.size()); chunk += step) {
        const ChunkBuffers& buffers = *m_buffers[size_t(chunk)];
        for (int cluster = 0; cluster < int(buffers.clusters.size()); ++cluster) {
            const koViewportGeometry::Chunk::Cluster& box = buffers.clusters[size_t(cluster)];
            if (frustum.mayShow(box.low, box.high))
                (buffers.seen[size_t(cluster)] || !m_cullHidden ? seen : unseen).push_back({chunk, cluster});
        }
    }
}

std::vector<koSceneViewport::ClusterRef> koSceneViewport::drawUnhidden(std::vector<ClusterRef> candidates)
{
    const QVector3D eye = m_camera.view().inverted().map(QVector3D());
    const auto distance = [&](const ClusterRef& ref) {
        const koViewportGeometry::Chunk::Cluster& cluster = m_buffers[size_t(ref.chunk)]->clusters[size_t(ref.cluster)];
        return ((cluster.low + cluster.high) / 2 - eye).lengthSquared();
    };
    const auto inChunkOrder = [](const ClusterRef& a, const ClusterRef& b) {
        return a.chunk < b.chunk || (a.chunk == b.chunk && a.cluster < b.cluster);
    };
    std::vector<ClusterRef> drawn;
    while (!candidates.empty()) {
        std::vector<ClusterRef> found = unhidden(candidates);
        if (found.size() > size_t(revealBatch)) {
            std::sort(found.begin(), found.end(),
                      [&](const ClusterRef& a, const ClusterRef& b) { return distance(a) < distance(b); });
            candidates.assign(found.begin() + std::ptrdiff_t(found.size() / 4), found.end());
            found.resize(found.size() / 4);
            std::sort(found.begin(), found.end(), inChunkOrder);
            std::sort(candidates.begin(), candidates.end(), inChunkOrder);
        } else {
            candidates.clear();
        }
        drawClusters(found, 0.0f);
        drawn.insert(drawn.end(), found.begin(), found.end());
    }
    std::sort(drawn.begin(), drawn.end(), inChunkOrder);
    return drawn;
}

void koSceneViewport::setSeen(const std::vector<ClusterRef>& clusters, bool seen)
{
    for (const ClusterRef& ref : clusters)
        m_buffers[size_t(ref.chunk)]->seen[size_t(ref.cluster)] = seen;
}

void koSceneViewport::setUpGeometryProgram()
{
    m_program->bind();
    const QMatrix4x4 view = m_camera.view();
    m_program->setUniformValue("view", view);
    m_program->setUniformValue("normalToEye", view.normalMatrix());
    m_program->setUniformValue("projection", m_camera.projection(aspect()));
    const QColor highlight = koViewportGeometry::highlightColour();
    m_program->setUniformValue("highlightColour", QVector3D(float(highlight.redF()), float(highlight.greenF()),
                                                            float(highlight.blueF())));
}

void koSceneViewport::drawClusters(const std::vector<ClusterRef>& clusters, float edges)
{
    if (clusters.empty())
        return;
    setUpGeometryProgram();
    m_program->setUniformValue("edges", edges);
    for (int attribute : {Position, Colour, Normal, Highlight})
        m_program->enableAttributeArray(attribute);
    const int stride = int(sizeof(koViewportVertex));
    std::vector<GLsizei> counts;
    std::vector<const void*> offsets;
    // The clusters come chunk by chunk; each chunk draws its own in one call.
    for (size_t first = 0; first < clusters.size();) {
        const int chunk = clusters[first].chunk;
        ChunkBuffers& buffers = *m_buffers[size_t(chunk)];
        counts.clear();
        offsets.clear();
        // Neighbouring clusters make one run of indices.
        int end = -1;
        for (; first < clusters.size() && clusters[first].chunk == chunk; ++first) {
            const koViewportGeometry::Chunk::Cluster& cluster = buffers.clusters[size_t(clusters[first].cluster)];
            if (cluster.firstIndex == end) {
                counts.back() += cluster.indexCount;
            } else {
                counts.push_back(cluster.indexCount);
                offsets.push_back(reinterpret_cast<const void*>(size_t(cluster.firstIndex) * sizeof(quint32)));
            }
            end = cluster.firstIndex + cluster.indexCount;
        }
        if (buffers.cullBackFaces)
            glEnable(GL_CULL_FACE);
        else
            glDisable(GL_CULL_FACE);
        buffers.vertices.bind();
        m_program->setAttributeBuffer(Position, GL_FLOAT, int(offsetof(koViewportVertex, position)), 3, stride);
        glVertexAttribPointer(Colour, 4, GL_UNSIGNED_BYTE, GL_TRUE, stride,
                              reinterpret_cast<const void*>(offsetof(koViewportVertex, colour)));
        glVertexAttribPointer(Normal, 3, GL_BYTE, GL_TRUE, stride,
                              reinterpret_cast<const void*>(offsetof(koViewportVertex, normal)));
        buffers.highlight.bind();
        glVertexAttribPointer(Highlight, 1, GL_UNSIGNED_BYTE, GL_TRUE, 1, nullptr);
        buffers.indices.bind();
        m_legacy->glMultiDrawElements(GL_TRIANGLES, counts.data(), GL_UNSIGNED_INT, offsets.data(),
                                      GLsizei(counts.size()));
    }
    for (int attribute : {Position, Colour, Normal, Highlight})
        m_program->disableAttributeArray(attribute);
    QOpenGLBuffer::release(QOpenGLBuffer::VertexBuffer);
    QOpenGLBuffer::release(QOpenGLBuffer::IndexBuffer);
    m_program->release();
}

std::vector<koSceneViewport::ClusterRef> koSceneViewport::unhidden(const std::vector<ClusterRef>& clusters)
{
    if (clusters.empty())
        return clusters;
    const int width = qRound(this->width() * devicePixelRatioF());
    const int height = qRound(this->height() * devicePixelRatioF());
    // Where the depth cannot be read, nothing is taken to hide anything. The array is
    // kept: fresh pages of that size each time cost as much as reading them.
    m_depth.assign(size_t(width) * size_t(height), 1.0f);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(0, 0, width, height, GL_DEPTH_COMPONENT, GL_FLOAT, m_depth.data());
    const koDepthMap map(m_depth, width, height);
    const QMatrix4x4 viewProjection = m_camera.projection(aspect()) * m_camera.view();
    const auto hides = [&](const QVector3D& low, const QVector3D& high) {
        const QVector3D margin = (high - low) * boxMargin + QVector3D(1, 1, 1) * 1e-6f;
        return map.hides(low - margin, high + margin, viewProjection);
    };
    // A group of clusters wholly hidden spares testing each of them.
    int testedGroup = -1;
    int testedChunk = -1;
    bool groupHidden = false;
    std::vector<ClusterRef> found;
    for (const ClusterRef& ref : clusters) {
        const ChunkBuffers& buffers = *m_buffers[size_t(ref.chunk)];
        const int group = ref.cluster / groupSize;
        if (ref.chunk != testedChunk || group != testedGroup) {
            testedChunk = ref.chunk;
            testedGroup = group;
            groupHidden = hides(buffers.groups[size_t(group)].low, buffers.groups[size_t(group)].high);
        }
        const koViewportGeometry::Chunk::Cluster& cluster = buffers.clusters[size_t(ref.cluster)];
        if (!groupHidden && !hides(cluster.low, cluster.high))
            found.push_back(ref);
    }
    return found;
}

float koSceneViewport::aspect() const
{
    return float(qMax(1, width())) / float(qMax(1, height()));
}

void koSceneViewport::fit(bool selectionOnly)
{
    QVector3D low;
    QVector3D high;
    if ((selectionOnly && m_geometry->bounds(true, low, high)) || m_geometry->bounds(false, low, high)) {
        m_camera.frame(low, high, aspect());
        redraw();
    }
}

void koSceneViewport::fitAll()
{
    fit(false);
    m_keepFitting = true;
}

void koSceneViewport::resizeGL(int, int)
{
    m_frameStale = true;
    if (m_keepFitting)
        fit(false);
}

void koSceneViewport::fitSelection()
{
    fit(true);
    m_keepFitting = false;
}

void koSceneViewport::setCullHidden(bool cull)
{
    m_cullHidden = cull;
    redraw();
}

void koSceneViewport::setShowEdges(bool show)
{
    m_showEdges = show;
    redraw();
}

void koSceneViewport::mousePressEvent(QMouseEvent* event)
{
    m_lastPosition = event->pos();
    m_moving = true;
}

void koSceneViewport::mouseReleaseEvent(QMouseEvent*)
{
    m_moving = false;
    redraw();
}

void koSceneViewport::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint delta = event->pos() - m_lastPosition;
    m_lastPosition = event->pos();
    const bool panning = (event->buttons() & Qt::MiddleButton)
        || ((event->buttons() & Qt::LeftButton) && (event->modifiers() & Qt::ShiftModifier));
    if (panning)
        m_camera.pan(float(delta.x()), float(delta.y()), height());
    else if (event->buttons() & Qt::LeftButton)
        m_camera.orbit(float(delta.x()), float(delta.y()));
    else
        return;
    m_keepFitting = false;
    redraw();
}

void koSceneViewport::wheelEvent(QWheelEvent* event)
{
    m_camera.zoom(float(event->angleDelta().y()) / 120.0f);
    m_keepFitting = false;
    redraw();
}
