#include "koSceneViewport.h"

#include "koViewportGeometry.h"

#include <QElapsedTimer>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QOpenGLFunctions_2_1>
#include <QPainter>
#include <QWheelEvent>

#include <cmath>

namespace {

enum Attribute { Position, Colour, Highlight };

// GLSL 1.20 runs on every desktop OpenGL from 2.1 on, Mesa's software renderer among them.
const char* vertexShader = R"(#version 120
attribute vec3 position;
attribute vec4 colour;
attribute float highlight;
uniform mat4 view;
uniform mat4 projection;
uniform vec3 highlightColour;
varying vec3 eyePosition;
varying vec3 baseColour;
void main()
{
    vec4 eye = view * vec4(position, 1.0);
    gl_Position = projection * eye;
    eyePosition = eye.xyz;
    baseColour = mix(colour.rgb, highlightColour, highlight);
}
)";

// Each triangle's normal from how the position changes across it, so that vertices are
// shared; lit by a head light on both sides, as imported meshes do not agree on winding.
const char* fragmentShader = R"(#version 120
uniform float edges;
varying vec3 eyePosition;
varying vec3 baseColour;
void main()
{
    vec3 normal = normalize(cross(dFdx(eyePosition), dFdy(eyePosition)));
    float light = 0.3 + 0.7 * abs(dot(normal, normalize(eyePosition)));
    gl_FragColor = vec4(mix(baseColour * light, baseColour * 0.25, edges), 1.0);
}
)";

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
    connect(geometry, &koViewportGeometry::changed, this, QOverload<>::of(&QWidget::update));
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
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, &koSceneViewport::releaseBuffers);
    auto program = std::make_unique<QOpenGLShaderProgram>();
    program->bindAttributeLocation("position", Position);
    program->bindAttributeLocation("colour", Colour);
    program->bindAttributeLocation("highlight", Highlight);
    if (!program->addShaderFromSourceCode(QOpenGLShader::Vertex, vertexShader)
        || !program->addShaderFromSourceCode(QOpenGLShader::Fragment, fragmentShader) || !program->link()) {
        emit unavailable(tr("The 3D view needs OpenGL 2.1, which %1 does not offer.\n\n%2")
                             .arg(QString::fromLatin1(reinterpret_cast<const char*>(glGetString(GL_RENDERER))),
                                  program->log().trimmed()));
        return;
    }
    m_program = std::move(program);
}

void koSceneViewport::paintGL()
{
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
            buffers.count = int(chunk.indices.size());
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

void koSceneViewport::drawChunks(int step)
{
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glDepthMask(GL_TRUE);
    glDisable(GL_BLEND);
    glDisable(GL_CULL_FACE);
    glClear(GL_DEPTH_BUFFER_BIT);
    m_program->bind();
    m_program->setUniformValue("view", m_camera.view());
    m_program->setUniformValue("projection", m_camera.projection(aspect()));
    const QColor highlight = koViewportGeometry::highlightColour();
    m_program->setUniformValue("highlightColour", QVector3D(float(highlight.redF()), float(highlight.greenF()),
                                                            float(highlight.blueF())));
    for (int attribute : {Position, Colour, Highlight})
        m_program->enableAttributeArray(attribute);
    // Edges are the triangles' outlines drawn over the shaded triangles, which step back
    // a little in depth for them.
    auto* legacy = m_showEdges ? QOpenGLContext::currentContext()->versionFunctions<QOpenGLFunctions_2_1>() : nullptr;
    if (legacy) {
        glEnable(GL_POLYGON_OFFSET_FILL);
        glPolygonOffset(1.0f, 1.0f);
    }
    drawPass(0.0f, step);
    if (legacy) {
        glDisable(GL_POLYGON_OFFSET_FILL);
        legacy->glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
        drawPass(1.0f, step);
        legacy->glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    }
    for (int attribute : {Position, Colour, Highlight})
        m_program->disableAttributeArray(attribute);
    QOpenGLBuffer::release(QOpenGLBuffer::VertexBuffer);
    QOpenGLBuffer::release(QOpenGLBuffer::IndexBuffer);
    m_program->release();
}

void koSceneViewport::drawPass(float edges, int step)
{
    m_program->setUniformValue("edges", edges);
    const int stride = int(sizeof(koViewportVertex));
    for (size_t i = 0; i < m_buffers.size(); i += size_t(step)) {
        const std::unique_ptr<ChunkBuffers>& buffers = m_buffers[i];
        if (buffers->count == 0)
            continue;
        buffers->vertices.bind();
        m_program->setAttributeBuffer(Position, GL_FLOAT, int(offsetof(koViewportVertex, position)), 3, stride);
        glVertexAttribPointer(Colour, 4, GL_UNSIGNED_BYTE, GL_TRUE, stride,
                              reinterpret_cast<const void*>(offsetof(koViewportVertex, colour)));
        buffers->highlight.bind();
        glVertexAttribPointer(Highlight, 1, GL_UNSIGNED_BYTE, GL_TRUE, 1, nullptr);
        buffers->indices.bind();
        glDrawElements(GL_TRIANGLES, buffers->count, GL_UNSIGNED_INT, nullptr);
    }
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
        update();
    }
}

void koSceneViewport::fitAll()
{
    fit(false);
    m_keepFitting = true;
}

void koSceneViewport::resizeGL(int, int)
{
    if (m_keepFitting)
        fit(false);
}

void koSceneViewport::fitSelection()
{
    fit(true);
    m_keepFitting = false;
}

void koSceneViewport::setShowEdges(bool show)
{
    m_showEdges = show;
    update();
}

void koSceneViewport::mousePressEvent(QMouseEvent* event)
{
    m_lastPosition = event->pos();
    m_moving = true;
}

void koSceneViewport::mouseReleaseEvent(QMouseEvent*)
{
    m_moving = false;
    update();
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
    update();
}

void koSceneViewport::wheelEvent(QWheelEvent* event)
{
    m_camera.zoom(float(event->angleDelta().y()) / 120.0f);
    m_keepFitting = false;
    update();
}
