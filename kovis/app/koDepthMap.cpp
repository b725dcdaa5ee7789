#include "koDepthMap.h"

#include <QVector4D>

#include <algorithm>
#include <cmath>

koDepthMap::koDepthMap(const std::vector<float>& depth, int width, int height)
    : m_width(width)
    , m_height(height)
    , m_columns((width + blockSize - 1) / blockSize)
    , m_rows((height + blockSize - 1) / blockSize)
    , m_farthest(size_t(m_columns) * size_t(m_rows), 0.0f)
{
    for (int y = 0; y < height; ++y) {
        float* farthest = &m_farthest[size_t(y / blockSize) * size_t(m_columns)];
        const float* row = &depth[size_t(y) * size_t(width)];
        for (int column = 0; column < m_columns; ++column) {
            const float* block = row + column * blockSize;
            farthest[column] = std::max(farthest[column], *std::max_element(block, row + std::min(width, (column + 1) * blockSize)));
        }
    }
}

bool koDepthMap::hides(const QVector3D& low, const QVector3D& high, const QMatrix4x4& viewProjection) const
{
    float left = float(m_width);
    float right = 0.0f;
    float bottom = float(m_height);
    float top = 0.0f;
    float nearest = 1.0f;
    for (int corner = 0; corner < 8; ++corner) {
        const QVector4D clip = viewProjection * QVector4D(corner & 1 ? high.x() : low.x(),
                                                          corner & 2 ? high.y() : low.y(),
                                                          corner & 4 ? high.z() : low.z(), 1.0f);
        // A box that reaches in front of the near plane is cut there: what it holds may show.
        if (clip.z() < -clip.w())
            return false;
        const float x = (clip.x() / clip.w() + 1.0f) / 2.0f * float(m_width);
        const float y = (clip.y() / clip.w() + 1.0f) / 2.0f * float(m_height);
        left = std::min(left, x);
        right = std::max(right, x);
        bottom = std::min(bottom, y);
        top = std::max(top, y);
        nearest = std::min(nearest, (clip.z() / clip.w() + 1.0f) / 2.0f);
    }
    const int firstColumn = std::max(0, int(std::floor(left)) / blockSize);
    const int lastColumn = std::min(m_columns - 1, int(std::floor(right)) / blockSize);
    const int firstRow = std::max(0, int(std::floor(bottom)) / blockSize);
    const int lastRow = std::min(m_rows - 1, int(std::floor(top)) / blockSize);
    for (int row = firstRow; row <= lastRow; ++row) {
        const float* farthest = &m_farthest[size_t(row) * size_t(m_columns)];
        if (std::any_of(farthest + firstColumn, farthest + lastColumn + 1, [nearest](float depth) { return depth >= nearest; }))
            return false;
    }
    return true;
}
