// bgfx's start, stop and frames, its capabilities and its statistics.
#include "State.h"
#include "Version.h"

#include <zx3D/BgfxVersion.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

namespace recorder {

namespace {

template<typename Record>
void Clear(Record& record) {
    std::memset(static_cast<void*>(&record), 0, sizeof(record));
}

using zarvex::zx3D::kTransientIbSize;
using zarvex::zx3D::kTransientVbSize;
using CapsLimits = bgfx::Caps::Limits;
using InitLimits = bgfx::Init::Limits;

void Start(State& state, bgfx::Init const& init) {
    state.running = std::make_unique<Running>();
    ++state.runs;
    state.renderThread = RenderThread::None;
    uint32_t const vertexBytes = init.limits.*kTransientVbSize<InitLimits>;
    uint32_t const indexBytes = init.limits.*kTransientIbSize<InitLimits>;
    Running& running = *state.running;
    running.vertexBuffers = Table<bgfx::VertexBufferHandle>(state.settings.vertexBuffers);
    running.dynamicVertexBuffers = Table<bgfx::DynamicVertexBufferHandle>(state.settings.vertexBuffers);
    running.transientVertices.Create(vertexBytes, running.vertexBuffers.Reserve().idx);
    running.transientIndices.Create(indexBytes, running.indexBuffers.Reserve().idx);
    state.caps.limits.*kTransientVbSize<CapsLimits> = vertexBytes;
    state.caps.limits.*kTransientIbSize<CapsLimits> = indexBytes;
    bool const chosen = init.type != bgfx::RendererType::Count;
    state.caps.rendererType = chosen ? init.type : bgfx::RendererType::Noop;
    state.stats.width = uint16_t(init.resolution.width);
    state.stats.height = uint16_t(init.resolution.height);
}

void AnswerReads(Running& running) {
    std::erase_if(running.reads, [&running](PendingRead const& read) {
        bool const isDue = running.frame >= read.frame;
        if (isDue) {
            std::copy(read.pixels.begin(), read.pixels.end(), static_cast<std::byte*>(read.target));
        }
        return isDue;
    });
}

void Run(std::vector<Release> const& releases) {
    for (Release const& release : releases) {
        release.function(release.data, release.userData);
    }
}

/// Until it has executed what was submitted, and says so by waiting again, or frames are held.
void AwaitRenderThread() {
    State& state = State::Get();
    std::unique_lock lock(state.mutex);
    state.turned.wait(lock, [&state] { return state.settings.holdsFrames || !state.IsRenderThreadBusy(); });
}

} // namespace

} // namespace recorder

namespace bgfx {

using recorder::Arguments;
using recorder::Recording;
using recorder::State;

// What a caller does not choose is filled in here, as bgfx does. Versions of bgfx differ in some of the
// fields, so everything is zeroed first and named only where it exists.

PlatformData::PlatformData() {
    recorder::Clear(*this);
}

Resolution::Resolution() {
    recorder::Clear(*this);
    this->*recorder::kColorFormat = TextureFormat::RGBA8;
    width = 1280;
    height = 720;
    numBackBuffers = 2;
    debugTextScale = 1;
}

Init::Limits::Limits() {
    recorder::Clear(*this);
    maxEncoders = 8;
    this->*zarvex::zx3D::kTransientVbSize<Limits> = 6 << 20;
    this->*zarvex::zx3D::kTransientIbSize<Limits> = 2 << 20;
}

Init::Init() {
    recorder::Clear(*this);
    platformData = PlatformData();
    resolution = Resolution();
    limits = Limits();
    type = RendererType::Count;
    capabilities = UINT64_MAX;
}

bool init(Init const& init) {
    Recording call("init",
                   Arguments(init.resolution.width, init.resolution.height) + ", " +
                       recorder::Window(init.platformData.nwh),
                   Recording::Needs::Nothing);
    State& state = call.Records();
    state.lastInit = init;
    if (call.IsRunning()) {
        call.Error("bgfx is running already");
        return call.Result(false);
    }
    if (state.settings.failingInits > 0) {
        --state.settings.failingInits;
        return call.Result(false);
    }
    recorder::Start(state, init);
    return call.Result(true);
}

void shutdown() {
    recorder::AwaitRenderThread();
    std::vector<recorder::Release> releases;
    {
        Recording call("shutdown", {});
        if (!call.IsRunning()) {
            return;
        }
        State& state = call.Records();
        releases = state.CollectReleases(true);
        auto const alive = call.Now().Describe();
        state.leaks.insert(state.leaks.end(), alive.begin(), alive.end());
        state.running.reset();
        state.Turn();
    }
    recorder::Run(releases);
}

uint32_t frame(recorder::FrameFlags flags) {
    std::vector<recorder::Release> releases;
    uint32_t number = 0;
    {
        Recording call("frame", Arguments((flags & recorder::kCaptureFrame) != 0));
        if (!call.IsRunning()) {
            return call.Result(number);
        }
        recorder::Running& now = call.Now();
        number = call.Result(now.frame + now.numberOffset);
        recorder::AnswerReads(now);
        now.EndFrame();
        ++now.frame;
        call.Records().Turn();
        releases = call.Records().CollectReleases(false);
    }
    recorder::Run(releases);
    recorder::AwaitRenderThread();
    return number;
}

RenderFrame::Enum renderFrame(int32_t msecs) {
    State& state = State::Get();
    std::unique_lock lock(state.mutex);
    bool const isOfCaller = state.caller == std::this_thread::get_id();
    if (state.running == nullptr) {
        if (isOfCaller) {
            state.calls.push_back({"renderFrame", Arguments(msecs), {}, {}});
        }
        return RenderFrame::NoContext;
    }
    if (isOfCaller) {
        return RenderFrame::Render;
    }
    uint64_t const run = state.runs;
    state.renderThread = recorder::RenderThread::Waiting;
    state.Turn();
    auto const patience = std::chrono::milliseconds(msecs < 0 ? 5000 : msecs);
    bool const turned = state.turned.wait_for(
        lock, patience, [&] { return state.runs != run || state.running == nullptr || state.CanRender(); });
    if (state.runs != run || state.running == nullptr) {
        return RenderFrame::Exiting;
    }
    if (!turned) {
        return RenderFrame::Timeout;
    }
    ++state.running->executedFrames;
    state.renderThread = recorder::RenderThread::Rendering;
    return RenderFrame::Render;
}

void setPlatformData(PlatformData const& data) {
    Recording call("setPlatformData", recorder::Window(data.nwh), Recording::Needs::Nothing);
}

void reset(uint32_t width, uint32_t height, uint32_t flags, TextureFormat::Enum format) {
    Recording call("reset", Arguments(width, height, recorder::Hexadecimal(flags), format));
    call.Records().stats.width = uint16_t(width);
    call.Records().stats.height = uint16_t(height);
}

Caps const* getCaps() {
    State& state = State::Get();
    std::lock_guard const lock(state.mutex);
    return state.settings.hasCaps ? &state.caps : nullptr;
}

Stats const* getStats() {
    State& state = State::Get();
    std::lock_guard const lock(state.mutex);
    if (state.running != nullptr) {
        recorder::Running const& now = *state.running;
        state.stats.cpuTimeBegin = now.frame;
        state.stats.numDraw = now.numDraws;
        state.stats.numCompute = now.numDispatches;
        state.stats.numBlit = now.numBlits;
        state.stats.numDynamicIndexBuffers = uint16_t(now.dynamicIndexBuffers.Size());
        state.stats.numDynamicVertexBuffers = uint16_t(now.dynamicVertexBuffers.Size());
        state.stats.numFrameBuffers = uint16_t(now.frameBuffers.Size());
        state.stats.numIndexBuffers = uint16_t(now.indexBuffers.Size());
        state.stats.numPrograms = uint16_t(now.programs.Size());
        state.stats.numShaders = uint16_t(now.shaders.Size());
        state.stats.numTextures = uint16_t(now.textures.Size());
        state.stats.numUniforms = uint16_t(now.uniforms.Size());
        state.stats.numVertexBuffers = uint16_t(now.vertexBuffers.Size());
        state.stats.transientVbUsed = int32_t(now.transientVertices.offset);
        state.stats.transientIbUsed = int32_t(now.transientIndices.offset);
    }
    return &state.stats;
}

RendererType::Enum getRendererType() {
    State& state = State::Get();
    std::lock_guard const lock(state.mutex);
    RendererType::Enum const actsAs = state.settings.actsAs;
    return actsAs != RendererType::Count ? actsAs : state.caps.rendererType;
}

char const* getRendererName(RendererType::Enum type) {
    switch (type) {
    case RendererType::Noop:
        return "Noop";
    case RendererType::OpenGL:
        return "OpenGL 2.1+";
    case RendererType::OpenGLES:
        return "OpenGL ES 2.0+";
    case RendererType::Vulkan:
        return "Vulkan";
    default:
        return "Other";
    }
}

uint8_t getSupportedRenderers(uint8_t max, RendererType::Enum* types) {
    constexpr RendererType::Enum kSupported[] = {RendererType::Noop, RendererType::OpenGL,
                                                 RendererType::Vulkan};
    constexpr auto kCount = uint8_t(std::size(kSupported));
    if (types == nullptr) {
        return kCount;
    }
    uint8_t const count = std::min(max, kCount);
    std::copy_n(kSupported, count, types);
    return count;
}

} // namespace bgfx
