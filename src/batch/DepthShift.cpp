// What a length in view space does to depths.
#include "DepthShift.h"

#include <bgfx/bgfx.h>

#include <QMatrix4x4>

#include <algorithm>
#include <cmath>

namespace zarvex::zx3DQt {

namespace {

float SignOf(float value) {
    return value < 0.0f ? -1.0f : 1.0f;
}

} // namespace

DepthShift DepthShiftOf(BGFXViewContext const& view, float pixels) {
    QMatrix4x4 const& projection = view.GetProjectionMatrix();
    float const a = projection(2, 2);
    float const b = projection(3, 2);
    float const pixelsPerUnit =
        0.5f * std::abs(projection(1, 1)) * static_cast<float>(view.GetViewport().height());
    // In a perspective view w is the distance; a parallel one looks along growing depths.
    float const towardsViewer = b != 0.0f ? -SignOf(b) : -SignOf(a);
    float const c = pixelsPerUnit > 0.0f ? towardsViewer * pixels / pixelsPerUnit : 0.0f;
    float const growth = SignOf(a * projection(3, 3) - projection(2, 3) * b) * towardsViewer;
    float const range = bgfx::getCaps()->homogeneousDepth ? 2.0f : 1.0f;
    float const scale = 1.0f / std::max(1.0f + c * b, 0.01f); // a hundredth of the distance is near enough
    return {scale, scale * c * a + growth * pixels * range / 65'536.0f};
}

} // namespace zarvex::zx3DQt
