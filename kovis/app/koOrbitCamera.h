#pragma once

#include <QMatrix4x4>
#include <QVector3D>

// A camera that circles a target point: orbit, pan and zoom as the mouse asks, and a
// framing of a box that fits it into view.
class koOrbitCamera
{
public:
    QMatrix4x4 view() const;
    QMatrix4x4 projection(float aspect) const;

    // Turns by the mouse's movement in pixels.
    void orbit(float dx, float dy);
    // Moves the target so that the scene follows the mouse in a view this many pixels high.
    void pan(float dx, float dy, int viewHeight);
    // Positive steps come closer.
    void zoom(float steps);
    void frame(const QVector3D& low, const QVector3D& high, float aspect);

private:
    QVector3D m_target;
    float m_distance = 3.0f;
    float m_yaw = -25.0f;
    float m_pitch = 15.0f;
    // The radius of what was last framed, so that near and far planes hold it.
    float m_radius = 1.0f;
    static constexpr float fieldOfView = 35.0f;
};
