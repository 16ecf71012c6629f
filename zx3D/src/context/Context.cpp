// The life cycle of the process's bgfx context.
#include <zx3D/Context.h>

#include "ContextListeners.h"
#include "RunningContext.h"

namespace zarvex::zx3D {

namespace {

struct State {
    bgfx::RendererType::Enum preferredRenderer = bgfx::RendererType::Count;
    ContextOptions options;
    std::unique_ptr<RunningContext> running;
};

State& GetState() {
    // Never destroyed: frame buffers of static storage duration may ask for it at the end of the process.
    static State& state = *new State;
    return state;
}

} // namespace

RunningContext* RunningContext::Get() {
    return GetState().running.get();
}

std::uint64_t ContextRun::s_current = 0;

bool Context::Initialize(ContextOptions const& options) {
    State& state = GetState();
    if (state.running)
        return false;
    state.options = options;
    state.running = RunningContext::Start(options, state.preferredRenderer);
    if (!state.running)
        return false;
    ++ContextRun::s_current;
    return true;
}

void Context::Shutdown() {
    State& state = GetState();
    if (state.running) {
        NotifyContextStopping();
        state.running.reset();
        ++ContextRun::s_current;
    }
    state.options.callback = nullptr; // borrowed until now, also when the start failed
}

ContextOptions const& Context::GetOptions() {
    return GetState().options;
}

bool Context::IsInitialized() {
    return GetState().running != nullptr;
}

std::uint32_t Context::SubmitFrame(bool capture) {
    std::uint32_t const number = bgfx::frame(capture);
    if (RunningContext* const running = RunningContext::Get())
        running->NoteSubmittedFrame(number);
    return number;
}

bool Context::IsFrameInFlight() {
    RunningContext const* const running = RunningContext::Get();
    return running != nullptr && running->IsFrameInFlight();
}

void Context::PreferRenderer(bgfx::RendererType::Enum renderer) {
    GetState().preferredRenderer = renderer;
}

} // namespace zarvex::zx3D
