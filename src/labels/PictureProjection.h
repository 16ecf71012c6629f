// From places in the world to pixels, in double precision.
#pragma once

#include <zx3DQt/BGFXViewContext.h>
#include <zx3DQt/WorldPosition.h>

#include <QMatrix4x4>

#include <array>
#include <optional>

namespace zarvex::zx3DQt {

/// A place in clip space.
struct ClipPlace {
    double x, y, z, w;
};

/// A place in the picture.
struct PixelPlace {
    double x;     ///< pixels of the target
    double y;     ///< down
    double depth; ///< clip z divided by w
};

/// A view's matrices and viewport, for many places.
class PictureProjection {
public:
    /// Of coordinates relative to an origin in the world, that a transform is applied to. bgfx must run.
    PictureProjection(BGFXViewContext const& view, WorldPosition const& origin, QMatrix4x4 const& transform);

    ClipPlace ToClip(double x, double y, double z, double w = 1.0) const {
        auto const row = [&](std::size_t i) {
            return m_matrix[i][0] * x + m_matrix[i][1] * y + m_matrix[i][2] * z + m_matrix[i][3] * w;
        };
        return {row(0), row(1), row(2), row(3)};
    }

    /// Whether it is in what the view shows.
    bool IsInView(ClipPlace const& clip) const {
        return clip.w > 0.0 && clip.x >= -clip.w && clip.x <= clip.w && clip.y >= -clip.w &&
               clip.y <= clip.w && clip.z >= m_nearest * clip.w && clip.z <= clip.w;
    }

    /// Of what is in front of the camera.
    PixelPlace ToPixels(ClipPlace const& clip) const {
        return {m_left + m_halfWidth * (1.0 + clip.x / clip.w),
                m_top + m_halfHeight * (1.0 - clip.y / clip.w), clip.z / clip.w};
    }

    /// How fast a place moves in the picture when it moves along `step`.
    PixelPlace SpeedOf(ClipPlace const& clip, ClipPlace const& step) const {
        double const square = clip.w * clip.w;
        return {m_halfWidth * (step.x * clip.w - clip.x * step.w) / square,
                -m_halfHeight * (step.y * clip.w - clip.y * step.w) / square,
                (step.z * clip.w - clip.z * step.w) / square};
    }

    double GetNearestDepth() const { return m_nearest; }

private:
    using Matrix = std::array<std::array<double, 4>, 4>; // rows

    static Matrix ToDouble(QMatrix4x4 const& matrix);
    static Matrix Product(Matrix const& a, Matrix const& b);

    Matrix m_matrix;
    double m_left;
    double m_top;
    double m_halfWidth;
    double m_halfHeight;
    double m_nearest; ///< depth of the near plane
};

} // namespace zarvex::zx3DQt
