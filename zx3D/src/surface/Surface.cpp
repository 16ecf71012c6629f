// Creating, re-creating and destroying the bgfx object of a surface.
#include "Surface.h"

#include "../context/FramePump.h"
#include "../context/RunningContext.h"
#include "../message/Say.h"
#include "PossibleOptions.h"
#include "SampleProbe.h"
#include "SurfaceRegistry.h"

#include <zx3D/ProgramFactory.h>

#include <algorithm>
#include <bit>
#include <optional>
#include <utility>

namespace zarvex::zx3D {

namespace {

/// The windows of the running context; null where there are none. Native handles are mere numbers then,
/// passed to bgfx as they are.
NativeWindows* GetNativeWindows() {
    RunningContext const* const running = RunningContext::Get();
    return running != nullptr ? running->GetNativeWindows() : nullptr;
}

std::uint32_t CountRealSamples(std::uint32_t asked) {
    std::uint32_t count = SampleProbe::Recall(asked);
    if (count == 0)
        SurfaceRegistry::Get().InterruptFrame([&] { count = SampleProbe::Measure(asked); });
    return count;
}

/// A frame buffer to turn to: bgfx resolves a texture when it turns away from it.
Owned<bgfx::FrameBufferHandle> CreateElsewhere() {
    Owned texture(bgfx::createTexture2D(1, 1, false, 1, bgfx::TextureFormat::RGBA8, BGFX_TEXTURE_RT));
    if (!texture)
        return {};
    constexpr bool ownsTexture = true;
    bgfx::TextureHandle const given = texture.Release();
    return Owned(bgfx::createFrameBuffer(1, &given, ownsTexture));
}

/// Shows a texture all over a view, as it is.
std::optional<bgfx::ProgramHandle> GetResolveProgram() {
    return ProgramFactory::Get().CreateProgram("vs_fullscreen_triangle", "fs_fullscreen_texture");
}

} // namespace

std::shared_ptr<Surface> Surface::Create(void* nativeWindow, bgfx::TextureFormat::Enum colorFormat,
                                         FrameBufferOptions const& options) {
    auto const release = [](Surface* last) {
        std::unique_ptr<Surface> surface(last);
        if (surface->HasObject())
            SurfaceRegistry::Get().Adopt(std::move(surface));
    };
    return {new Surface(nativeWindow, colorFormat, options), release};
}

Surface::Surface(void* nativeWindow, bgfx::TextureFormat::Enum colorFormat, FrameBufferOptions const& options)
    : m_nativeWindow(nativeWindow),
      m_colorFormat(colorFormat),
      m_options(options) {}

void Surface::RequestResize(std::uint16_t width, std::uint16_t height) {
    m_requested = {width, height};
    m_sized = true;
}

void Surface::SetOptions(FrameBufferOptions const& options) {
    if (m_options == options)
        return;
    m_options = options;
    m_fewerSamples.Clear();
    m_otherDepth.Clear();
}

void Surface::SubmitOnDemand() {
    if (!Context::IsInitialized())
        return;
    SurfaceRegistry::Get().FreeDeadOrphans();
    if (IsCollapsed())
        return;
    if (!IsUpToDate())
        Renew();
    if (m_resolved)
        RecordResolve();
}

void Surface::Renew() {
    if (!IsWithinLimits()) {
        Destroy();
        return;
    }
    DestroyKeepingPicture();
    m_possible = m_options;
    LimitDepthFormat();
    LimitSampleCount();
    Create();
    if (!HasObject())
        CreateAfterFrame();
    if (!HasObject() && m_possible.sampleCount > 1) {
        Lower(1, "bgfx has no more frame buffers, textures or uniforms");
        m_resolvedSampler.Reset();
        CreateAfterFrame();
    }
    if (!HasObject()) {
        m_notCreated.Raise([this] {
            Say(MessageLevel::Warning, "surface.not-created",
                "a frame buffer of %u x %u pixels cannot be created: bgfx has no more, or not in these "
                "formats",
                m_requested.width, m_requested.height);
        });
        return;
    }
    m_notCreated.Clear();
    if (m_possible.sampleCount == m_options.sampleCount)
        m_fewerSamples.Clear();
    m_created = m_requested;
    m_createdFor = m_options;
    SurfaceRegistry::Get().Add(*this);
}

void Surface::BindToView(bgfx::ViewId view) const {
    SurfaceRegistry::Get().BindView(view, GetHandle(), HasObject() ? m_possible : FrameBufferOptions{});
}

void Surface::Destroy() {
    DestroyAnd(&NativeWindows::DestroyChild);
}

void Surface::DestroyKeepingPicture() {
    DestroyAnd(&NativeWindows::RetireChild);
}

void Surface::DestroyAnd(void (NativeWindows::*letChildGo)(void*)) {
    if (!HasObject())
        return;
    bgfx::FrameBufferHandle const handle = GetHandle();
    bgfx::FrameBufferHandle const resolved = m_resolved.Get();
    DestroyObject();
    if (IsAttached()) {
        SurfaceRegistry::Get().InterruptFrame(FinishRecordedFrames); // into it, what was recorded for it
        if (NativeWindows* const windows = GetNativeWindows())
            (windows->*letChildGo)(m_child);
    }
    SurfaceRegistry::Get().UnbindViews(handle);
    if (bgfx::isValid(resolved))
        SurfaceRegistry::Get().UnbindViews(resolved);
}

void Surface::DestroyObject() {
    SurfaceRegistry::Get().Remove(*this);
    m_handle.Reset();
    m_resolved.Reset();
    m_resolvedSampler.Reset();
}

void Surface::LeaveWindow() {
    if (!IsAttached())
        return;
    m_leftWindow = true;
    m_inSight = false;
    NativeWindows* const windows = GetNativeWindows();
    if (HasObject() && windows != nullptr)
        windows->MoveOutOfSight(m_child);
}

bool Surface::IsWindowAlive() const {
    NativeWindows* const windows = GetNativeWindows();
    return !IsAttached() || windows == nullptr || windows->IsAlive(m_nativeWindow);
}

bool Surface::IsUpToDate() const {
    // A surface whose window died is created once more, out of sight, so that drawing goes on harmlessly.
    return HasObject() && m_created == m_requested && m_createdFor == m_options &&
           m_inSight == CanBeInSight();
}

bool Surface::IsWithinLimits() {
    auto const [width, height] = m_requested;
    std::uint32_t const limit = bgfx::getCaps()->limits.maxTextureSize;
    if (std::max(width, height) <= limit)
        return true;
    m_notCreated.Raise([&] {
        Say(MessageLevel::Warning, "surface.too-large",
            "a frame buffer of %u x %u pixels is beyond this GPU's limit of %u", width, height, limit);
    });
    return false;
}

void Surface::LimitDepthFormat() {
    m_possible.depthFormat = PossibleDepthFormat(m_options.depthFormat);
    if (m_possible.depthFormat != m_options.depthFormat)
        m_otherDepth.Raise([this] {
            Say(MessageLevel::Warning, "surface.other-depth",
                "bgfx's depth format %d cannot be drawn with on this GPU: a frame buffer has %d instead",
                m_options.depthFormat, m_possible.depthFormat);
        });
}

void Surface::LimitSampleCount() {
    auto const [width, height] = m_requested;
    auto [sampleCount, reason] =
        PossibleSampleCount(m_options.sampleCount, {width, height, m_colorFormat, m_possible.depthFormat});
    if (sampleCount > 1) {
        if (std::uint32_t const real = CountRealSamples(sampleCount); real < sampleCount) {
            sampleCount = std::bit_floor(real);
            reason = "the GPU has no more";
        }
    }
    if (sampleCount != m_options.sampleCount)
        Lower(sampleCount, reason);
}

void Surface::Lower(std::uint32_t sampleCount, char const* reason) {
    m_possible.sampleCount = sampleCount;
    m_fewerSamples.Raise([&] {
        Say(MessageLevel::Warning, "surface.fewer-samples",
            "a frame buffer of %u x %u pixels has %u samples for each instead of %u: %s", m_requested.width,
            m_requested.height, sampleCount, m_options.sampleCount, reason);
    });
}

void Surface::Create() {
    if (m_possible.sampleCount > 1)
        CreateMultisampled();
    else
        m_handle = IsAttached() ? CreateOnWindow(m_possible.depthFormat) : CreateOnTextures();
}

void Surface::CreateAfterFrame() {
    // bgfx gives the handles of what was destroyed back with a frame only.
    SurfaceRegistry::Get().InterruptFrame(FinishRecordedFrames);
    Create();
}

void Surface::CreateMultisampled() {
    Owned samples = CreateOnTextures();
    if (!samples)
        return;
    if (IsAttached()) {
        m_resolvedSampler = Owned(bgfx::createUniform("s_fullscreen_texture", bgfx::UniformType::Sampler));
        if (!m_resolvedSampler || !GetResolveProgram())
            return;
        ClearOnce(samples.Get());
        // Some renderers insist on a depth; this is the smallest.
        m_resolved = CreateOnWindow(bgfx::TextureFormat::D16);
    } else {
        m_resolved = CreateElsewhere();
    }
    if (m_resolved)
        m_handle = std::move(samples);
}

void Surface::ClearOnce(bgfx::FrameBufferHandle samples) const {
    // In a frame before those that show them: what nobody draws into would be anything.
    SurfaceRegistry& registry = SurfaceRegistry::Get();
    bgfx::ViewId const view = registry.FindFreeResolveView();
    registry.InterruptFrame([&] {
        bgfx::resetView(view);
        bgfx::setViewFrameBuffer(view, samples);
        bgfx::setViewRect(view, 0, 0, m_requested.width, m_requested.height);
        bgfx::setViewClear(view, BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0x000000ff);
        bgfx::touch(view);
        Context::SubmitFrame();
        bgfx::resetView(view);
    });
}

void Surface::RecordResolve() const {
    SurfaceRegistry& registry = SurfaceRegistry::Get();
    bgfx::ViewId const view = registry.TakeResolveView(*this);
    bgfx::resetView(view);
    registry.BindView(view, m_resolved.Get(), {});
    if (!IsAttached()) {
        bgfx::setViewRect(view, 0, 0, 1, 1);
        bgfx::touch(view);
        return;
    }
    auto const program = GetResolveProgram();
    if (!program) // the context is about to stop
        return;
    bgfx::setViewRect(view, 0, 0, m_created.width, m_created.height);
    bgfx::setState(BGFX_STATE_WRITE_RGB | BGFX_STATE_WRITE_A);
    bgfx::setVertexCount(3);
    bgfx::setTexture(0, m_resolvedSampler.Get(), bgfx::getTexture(GetHandle()),
                     BGFX_SAMPLER_POINT | BGFX_SAMPLER_UVW_CLAMP);
    bgfx::submit(view, *program);
}

Owned<bgfx::FrameBufferHandle> Surface::CreateOnWindow(bgfx::TextureFormat::Enum depthFormat) {
    NativeWindows* const windows = GetNativeWindows();
    auto const [width, height] = m_requested;
    void* const parent = m_leftWindow ? nullptr : m_nativeWindow;
    m_child = m_nativeWindow;
    if (windows != nullptr)
        m_child = windows->CreateChild(parent, width, height, RunningContext::Get()->GetNextFrame());
    m_inSight = CanBeInSight();
    if (m_inSight) {
        m_windowGone.Clear();
    } else {
        m_windowGone.Raise([this] {
            Say(MessageLevel::Warning, "surface.window-gone",
                "native window %p does not exist; what is drawn for it is not shown", m_nativeWindow);
        });
    }
    Owned handle(bgfx::createFrameBuffer(m_child, width, height, m_colorFormat, depthFormat));
    if (!handle && windows != nullptr)
        windows->DestroyChild(m_child);
    return handle;
}

Owned<bgfx::FrameBufferHandle> Surface::CreateOnTextures() const {
    auto const [width, height] = m_requested;
    std::uint32_t const sampleCount = m_possible.sampleCount;
    bgfx::TextureFormat::Enum const depthFormat = m_possible.depthFormat;
    bool const hasDepth = depthFormat != bgfx::TextureFormat::Count;
    std::uint64_t const colorFlags = SampleFlags(sampleCount) | BGFX_SAMPLER_U_CLAMP | BGFX_SAMPLER_V_CLAMP;
    std::uint64_t const depthFlags =
        BGFX_TEXTURE_RT_WRITE_ONLY | (sampleCount > 1 ? SampleFlags(sampleCount) : 0);
    Owned color(bgfx::createTexture2D(width, height, false, 1, m_colorFormat, colorFlags));
    Owned<bgfx::TextureHandle> depth;
    if (hasDepth)
        depth = Owned(bgfx::createTexture2D(width, height, false, 1, depthFormat, depthFlags));
    if (!color || (hasDepth && !depth))
        return {};
    constexpr bool ownsTextures = true;
    bgfx::TextureHandle const textures[] = {color.Get(), depth.Get()};
    Owned handle(bgfx::createFrameBuffer(hasDepth ? 2 : 1, textures, ownsTextures));
    // bgfx has the textures now: where it creates no frame buffer, it has destroyed them.
    static_cast<void>(color.Release());
    static_cast<void>(depth.Release());
    return handle;
}

} // namespace zarvex::zx3D
