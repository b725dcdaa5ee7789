#include "koSceneViewport.h"

#include "koViewportGeometry.h"

#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

namespace {

enum Attribute { Position, Normal, Colour, Highlight };

// GLSL 1.20 runs on every desktop OpenGL from 2.1 on, Mesa's software renderer among them.
const char* vertexShader = R"(#version 120
attribute vec3 position;
attribute vec4 normal;
attribute vec4 colour;
attribute float highlight;
uniform mat4 viewProjection;
uniform mat3 viewRotation;
uniform vec3 highlightColour;
varying vec3 eyeNormal;
varying vec3 baseColour;
varying vec3 corner;
void main()
{
    gl_Position = viewProjection * vec4(position, 1.0);
    eyeNormal = viewRotation * normal.xyz;
    baseColour = mix(colour.rgb, highlightColour, highlight);
    float index = floor(normal.w * 2.0 + 0.5);
    corner = vec3(index == 0.0 ? 1.0 : 0.0, index == 1.0 ? 1.0 : 0.0, index == 2.0 ? 1.0 : 0.0);
}
)";

// A head light, on both sides of each triangle: imported meshes do not agree on winding.
const char* fragmentShader = R"(#version 120
uniform float edges;
varying vec3 eyeNormal;
varying vec3 baseColour;
varying vec3 corner;
void main()
{
    float light = 0.3 + 0.7 * abs(normalize(eyeNormal).z);
    vec3 shaded = baseColour * light;
    vec3 nearEdge = smoothstep(vec3(0.0), fwidth(corner) * 1.2, corner);
    float inside = min(min(nearEdge.x, nearEdge.y), nearEdge.z);
    gl_FragColor = vec4(mix(shaded * 0.35, shaded, mix(1.0, inside, edges)), 1.0);
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
    makeCurrent();
    releaseBuffers();
    doneCurrent();
}

void koSceneViewport::releaseBuffers()
{
    m_buffers.clear();
    m_program.reset();
}

void koSceneViewport::initializeGL()
{
    initializeOpenGLFunctions();
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this, [this] {
        makeCurrent();
        releaseBuffers();
        doneCurrent();
    });
    auto program = std::make_unique<QOpenGLShaderProgram>();
    program->bindAttributeLocation("position", Position);
    program->bindAttributeLocation("normal", Normal);
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
    drawChunks();
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
            chunk.verticesChanged = true;
        }
        ChunkBuffers& buffers = *m_buffers[i];
        if (chunk.verticesChanged) {
            buffers.count = int(chunk.vertices.size());
            buffers.vertices.bind();
            buffers.vertices.allocate(chunk.vertices.data(), buffers.count * int(sizeof(koViewportVertex)));
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

void koSceneViewport::drawChunks()
{
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    glDepthMask(GL_TRUE);
    glDisable(GL_BLEND);
    glDisable(GL_CULL_FACE);
    glClear(GL_DEPTH_BUFFER_BIT);
    const QMatrix4x4 view = m_camera.view();
    m_program->bind();
    m_program->setUniformValue("viewProjection", m_camera.projection(aspect()) * view);
    m_program->setUniformValue("viewRotation", view.normalMatrix());
    const QColor highlight = koViewportGeometry::highlightColour();
    m_program->setUniformValue("highlightColour", QVector3D(float(highlight.redF()), float(highlight.greenF()), float(highlight.blueF())));
    m_program->setUniformValue("edges", m_showEdges ? 1.0f : 0.0f);
    for (int attribute : {Position, Normal, Colour, Highlight})
        m_program->enableAttributeArray(attribute);
    const int stride = int(sizeof(koViewportVertex));
    for (const std::unique_ptr<ChunkBuffers>& buffers : m_buffers) {
        if (buffers->count == 0)
            continue;
        buffers->vertices.bind();
        m_program->setAttributeBuffer(Position, GL_FLOAT, int(offsetof(koViewportVertex, position)), 3, stride);
        glVertexAttribPointer(Normal, 4, GL_BYTE, GL_TRUE, stride,
                              reinterpret_cast<const void*>(offsetof(koViewportVertex, normal)));
        glVertexAttribPointer(Colour, 4, GL_UNSIGNED_BYTE, GL_TRUE, stride,
                              reinterpret_cast<const void*>(offsetof(koViewportVertex, colour)));
        buffers->highlight.bind();
        glVertexAttribPointer(Highlight, 1, GL_UNSIGNED_BYTE, GL_TRUE, 1, nullptr);
        glDrawArrays(GL_TRIANGLES, 0, buffers->count);
    }
    for (int attribute : {Position, Normal, Colour, Highlight})
        m_program->disableAttributeArray(attribute);
    QOpenGLBuffer::release(QOpenGLBuffer::VertexBuffer);
    m_program->release();
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
