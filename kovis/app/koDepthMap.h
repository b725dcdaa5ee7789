#pragma once

#include <QMatrix4x4>
#include <QVector3D>

#include <vector>

// The depth drawn so far, kept as the farthest depth of each block of pixels, to find
// boxes that lie wholly behind what was drawn.
class koDepthMap
{
public:
    // depth: window depths (0 near, 1 far), row by row, width times height of them.
    koDepthMap(const std::vector<float>& depth, int width, int height);

    // Everything in the box lies behind what was drawn, as the matrix places it on screen.
    bool hides(const QVector3D& low, const QVector3D& high, const QMatrix4x4& viewProjection) const;

private:
    static constexpr int blockSize = 4;

    int m_width;
    int m_height;
    int m_columns;
    int m_rows;
    std::vector<float> m_farthest;
};
