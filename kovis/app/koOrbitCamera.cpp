#include "koOrbitCamera.h"

#include <QtMath>

#include <cmath>

QMatrix4x4 koOrbitCamera::view() const
{
    QMatrix4x4 view;
    view.translate(0.0f, 0.0f, -m_distance);
    view.rotate(m_pitch, 1.0f, 0.0f, 0.0f);
    view.rotate(m_yaw, 0.0f, 1.0f, 0.0f);
    view.translate(-m_target);
    return view;
}

QMatrix4x4 koOrbitCamera::projection(float aspect) const
{
    // Near and far follow what is in view, so that depth keeps its precision.
    const float depth = m_radius + m_distance;
    QMatrix4x4 projection;
    projection.perspective(fieldOfView, aspect, qMax(depth * 1e-3f, m_distance - 2.0f * m_radius), depth * 2.0f);
    return projection;
}

void koOrbitCamera::orbit(float dx, float dy)
{
    m_yaw += dx * 0.4f;
    m_pitch = qBound(-89.0f, m_pitch + dy * 0.4f, 89.0f);
}

void koOrbitCamera::pan(float dx, float dy, int viewHeight)
{
    const float perPixel = 2.0f * m_distance * std::tan(qDegreesToRadians(fieldOfView / 2)) / float(qMax(1, viewHeight));
    const QMatrix4x4 rotation = view().inverted();
    const QVector3D right = rotation.mapVector(QVector3D(1, 0, 0));
    const QVector3D up = rotation.mapVector(QVector3D(0, 1, 0));
    m_target -= (right * dx - up * dy) * perPixel;
}

void koOrbitCamera::zoom(float steps)
{
    m_distance = qBound(1e-4f, m_distance * std::pow(0.85f, steps), 1e7f);
}

void koOrbitCamera::frame(const QVector3D& low, const QVector3D& high, float aspect)
{
    m_target = (low + high) / 2;
    m_radius = qMax(1e-3f, (high - low).length() / 2);
    // The nearest distance from which every corner of the box is in view.
    const float tanVertical = std::tan(qDegreesToRadians(fieldOfView / 2));
    const float tanHorizontal = tanVertical * aspect;
    QMatrix4x4 rotation;
    rotation.rotate(m_pitch, 1.0f, 0.0f, 0.0f);
    rotation.rotate(m_yaw, 0.0f, 1.0f, 0.0f);
    float distance = 0.0f;
    for (int corner = 0; corner < 8; ++corner) {
        const QVector3D point(corner & 1 ? high.x() : low.x(), corner & 2 ? high.y() : low.y(),
                              corner & 4 ? high.z() : low.z());
        const QVector3D seen = rotation.map(point - m_target);
        distance = qMax(distance, seen.z() + qMax(std::abs(seen.x()) / tanHorizontal, std::abs(seen.y()) / tanVertical));
    }
    m_distance = qMax(distance * 1.08f, m_radius * 0.01f);
}
