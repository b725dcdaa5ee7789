#include "koViewFrustum.h"

namespace {

// The corner of the box farthest along the plane's normal.
QVector3D farthestCorner(const QVector4D& plane, const QVector3D& low, const QVector3D& high)
{
    return QVector3D(plane.x() > 0 ? high.x() : low.x(), plane.y() > 0 ? high.y() : low.y(),
                     plane.z() > 0 ? high.z() : low.z());
}

float distance(const QVector4D& plane, const QVector3D& point)
{
    return QVector4D::dotProduct(plane, QVector4D(point, 1.0f));
}

} // namespace

koViewFrustum::koViewFrustum(const QMatrix4x4& viewProjection)
{
    // Each plane bounds one clip coordinate by w.
    const QVector4D w = viewProjection.row(3);
    for (int axis = 0; axis < 3; ++axis) {
        m_planes[size_t(2 * axis)] = w + viewProjection.row(axis);
        m_planes[size_t(2 * axis + 1)] = w - viewProjection.row(axis);
    }
}

bool koViewFrustum::mayShow(const QVector3D& low, const QVector3D& high) const
{
    for (const QVector4D& plane : m_planes) {
        if (distance(plane, farthestCorner(plane, low, high)) < 0.0f)
            return false;
    }
    return true;
}
