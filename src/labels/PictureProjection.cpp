// One matrix from a batch's coordinates to clip space.
#include "PictureProjection.h"

#include <bgfx/bgfx.h>

namespace zarvex::zx3DQt {

PictureProjection::Matrix PictureProjection::ToDouble(QMatrix4x4 const& matrix) {
    Matrix result;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column)
            result[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] = matrix(row, column);
    }
    return result;
}

PictureProjection::Matrix PictureProjection::Product(Matrix const& a, Matrix const& b) {
    Matrix result{};
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            for (std::size_t i = 0; i < 4; ++i)
                result[row][column] += a[row][i] * b[i][column];
        }
    }
    return result;
}

PictureProjection::PictureProjection(BGFXViewContext const& view, WorldPosition const& origin,
                                     QMatrix4x4 const& transform) {
    QRect const& viewport = view.GetViewport();
    m_halfWidth = 0.5 * viewport.width();
    m_halfHeight = 0.5 * viewport.height();
    m_left = viewport.x();
    m_top = viewport.y();
    m_nearest = bgfx::getCaps()->homogeneousDepth ? -1.0 : 0.0;

    WorldVector const moved = origin - view.GetOrigin();
    Matrix const toWorld{{{1, 0, 0, moved.x}, {0, 1, 0, moved.y}, {0, 0, 1, moved.z}, {0, 0, 0, 1}}};
    m_matrix = Product(Product(ToDouble(view.GetProjectionMatrix()), ToDouble(view.GetViewMatrix())),
                       Product(toWorld, ToDouble(transform)));
}

} // namespace zarvex::zx3DQt
