// View set-up: rectangle, clear, mode, frame buffer, transform and order.
#include "State.h"
#include "Version.h"

namespace bgfx {

using recorder::Arguments;
using recorder::CopyBytes;
using recorder::Hexadecimal;
using recorder::Recording;
using recorder::ViewPosition;

namespace {

constexpr std::size_t kMatrixBytes = 16 * sizeof(float);

/// The bits that a view's position is given, which read the same with every version of bgfx.
uint16_t Bits(ViewPosition position) {
    return static_cast<uint16_t>(position);
}

} // namespace

void setViewName(ViewId view, char const* name RECORDER_NAME_LENGTH) {
    Recording call("setViewName", Arguments(view, name));
}

void setViewRect(ViewId view, ViewPosition x, ViewPosition y, uint16_t width, uint16_t height) {
    Recording call("setViewRect", Arguments(view, Bits(x), Bits(y), width, height));
}

void setViewRect(ViewId view, ViewPosition x, ViewPosition y, BackbufferRatio::Enum ratio) {
    Recording call("setViewRect", Arguments(view, Bits(x), Bits(y), ratio));
}

void setViewScissor(ViewId view, uint16_t x, uint16_t y, uint16_t width, uint16_t height) {
    Recording call("setViewScissor", Arguments(view, x, y, width, height));
}

void setViewClear(ViewId view, uint16_t flags, uint32_t rgba, float depth, uint8_t stencil) {
    Recording call("setViewClear", Arguments(view, Hexadecimal(flags), Hexadecimal(rgba), depth, stencil));
}

void setViewMode(ViewId view, ViewMode::Enum mode) {
    Recording call("setViewMode", Arguments(view, mode));
}

void setViewFrameBuffer(ViewId view, FrameBufferHandle handle) {
    Recording call("setViewFrameBuffer", Arguments(view, handle));
    if (call.IsRunning()) {
        call.RequireUnlessInvalid(call.Now().frameBuffers, handle);
    }
}

void setViewTransform(ViewId view, void const* viewMatrix, void const* projectionMatrix) {
    Recording call("setViewTransform", Arguments(view, viewMatrix != nullptr ? "view" : "null",
                                                 projectionMatrix != nullptr ? "projection" : "null"));
    recorder::Bytes payload = CopyBytes(viewMatrix, kMatrixBytes);
    recorder::Bytes const projection = CopyBytes(projectionMatrix, kMatrixBytes);
    payload.insert(payload.end(), projection.begin(), projection.end());
    call.Payload(std::move(payload));
}

void setViewOrder(ViewId view, uint16_t count, ViewId const* order) {
    Recording call("setViewOrder", Arguments(view, count));
    if (order != nullptr) {
        call.Payload(CopyBytes(order, count * sizeof(ViewId)));
    }
}

void resetView(ViewId view) {
    Recording call("resetView", Arguments(view));
}

} // namespace bgfx
