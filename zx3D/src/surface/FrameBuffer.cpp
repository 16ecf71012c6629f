// The value that refers to a shared surface.
#include <zx3D/FrameBuffer.h>

#include "Surface.h"
#include "SurfaceRegistry.h"

namespace zarvex::zx3D {

FrameBuffer::Views FrameBuffer::s_multisampledViews;
FrameBuffer::Views FrameBuffer::s_alphaViews;

FrameBuffer::FrameBuffer(void* nativeWindowHandle, bgfx::TextureFormat::Enum colorFormat,
                         bgfx::TextureFormat::Enum depthFormat)
    : FrameBuffer(nativeWindowHandle, colorFormat, FrameBufferOptions{.depthFormat = depthFormat}) {}

FrameBuffer::FrameBuffer(void* nativeWindowHandle, bgfx::TextureFormat::Enum colorFormat,
                         FrameBufferOptions const& options)
    : m_surface(Surface::Create(nativeWindowHandle, colorFormat, options)) {}

FrameBuffer::FrameBuffer(FrameBuffer const&) = default;
FrameBuffer& FrameBuffer::operator=(FrameBuffer const&) = default;
FrameBuffer::~FrameBuffer() = default;

std::uint16_t FrameBuffer::GetWidth() const {
    return m_surface->GetWidth();
}

std::uint16_t FrameBuffer::GetHeight() const {
    return m_surface->GetHeight();
}

void* FrameBuffer::GetNativeWindow() const {
    return m_surface->GetNativeWindow();
}

bool FrameBuffer::IsSized() const {
    return m_surface->IsSized();
}

FrameBufferOptions FrameBuffer::GetOptions() const {
    return m_surface->GetOptions();
}

void FrameBuffer::SetOptions(FrameBufferOptions const& options) {
    m_surface->SetOptions(options);
}

std::uint32_t FrameBuffer::GetSampleCount() const {
    return m_surface->GetSampleCount();
}

bgfx::FrameBufferHandle FrameBuffer::GetHandle() const {
    return m_surface->GetHandle();
}

void FrameBuffer::RequestResize(std::uint16_t width, std::uint16_t height) {
    m_surface->RequestResize(width, height);
}

void FrameBuffer::SubmitOnDemand() {
    m_surface->SubmitOnDemand();
}

void FrameBuffer::BindToView(bgfx::ViewId view) const {
    m_surface->BindToView(view);
}

void FrameBuffer::LeaveWindow() {
    m_surface->LeaveWindow();
}

void FrameBuffer::Destroy() {
    m_surface->Destroy();
}

void FrameBuffer::DestroyKeepingPicture() {
    m_surface->DestroyKeepingPicture();
}

} // namespace zarvex::zx3D
