#pragma once

#include <QMatrix4x4>
#include <QVector3D>
#include <QVector4D>

#include <array>

// The part of space that a camera's view and projection show, to tell which boxes lie
// out of view.
class koViewFrustum
{
public:
    explicit koViewFrustum(const QMatrix4x4& viewProjection);

    // Some of the box may be in view.
    bool mayShow(const QVector3D& low, const QVector3D& high) const;

private:
    // Positive on the side of the plane that is in view.
    std::array<QVector4D, 6> m_planes;
};
