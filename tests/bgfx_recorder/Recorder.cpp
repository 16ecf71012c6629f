// Reading side: hands out copies of what was recorded.
#include "Recorder.h"

#include "State.h"

#include <algorithm>

namespace recorder {

namespace {

template<typename Member>
auto Copy(Member State::* member) {
    State& state = State::Get();
    std::lock_guard const lock(state.mutex);
    return state.*member;
}

} // namespace

std::string Call::Text() const {
    return name + "(" + arguments + ")";
}

void Reset() {
    State& state = State::Get();
    std::vector<Release> releases;
    {
        std::lock_guard const lock(state.mutex);
        state.caller = std::this_thread::get_id();
        releases = state.CollectReleases(true);
        state.running.reset();
        state.Turn();
        state.settings = State::DefaultSettings();
        state.caps = {};
        state.UpdateCaps();
        state.lastInit.reset();
        state.calls.clear();
        state.draws.clear();
        state.errors.clear();
        state.leaks.clear();
        state.shadersCreated = 0;
        state.programsCreated = 0;
    }
    for (Release const& release : releases) {
        release.function(release.data, release.userData);
    }
}

void ClearCalls() {
    State& state = State::Get();
    std::lock_guard const lock(state.mutex);
    state.calls.clear();
    state.draws.clear();
}

Settings GetSettings() {
    return Copy(&State::settings);
}

void Apply(Settings const& settings) {
    State& state = State::Get();
    std::lock_guard const lock(state.mutex);
    state.settings = settings;
    state.UpdateCaps();
    state.Turn();
}

void SetNextFrameNumber(uint32_t number) {
    State& state = State::Get();
    std::lock_guard const lock(state.mutex);
    if (state.running != nullptr) {
        state.running->numberOffset = number - state.running->frame;
        state.Turn();
    }
}

std::vector<Call> Calls() {
    return Copy(&State::calls);
}

std::vector<std::string> CallNames() {
    std::vector<std::string> names;
    for (Call const& call : Calls()) {
        names.push_back(call.name);
    }
    return names;
}

std::vector<std::string> CallTexts() {
    std::vector<std::string> texts;
    for (Call const& call : Calls()) {
        texts.push_back(call.Text());
    }
    return texts;
}

std::vector<Call> CallsNamed(std::string_view name) {
    std::vector<Call> calls = Calls();
    std::erase_if(calls, [name](Call const& call) { return call.name != name; });
    return calls;
}

std::size_t CountCalls(std::string_view name) {
    return CallsNamed(name).size();
}

std::vector<Draw> Draws() {
    return Copy(&State::draws);
}

std::vector<std::string> Errors() {
    return Copy(&State::errors);
}

std::vector<std::string> Leaks() {
    return Copy(&State::leaks);
}

std::vector<std::string> Alive() {
    State& state = State::Get();
    std::lock_guard const lock(state.mutex);
    return state.running != nullptr ? state.running->Describe() : std::vector<std::string>();
}

bool IsRunning() {
    State& state = State::Get();
    std::lock_guard const lock(state.mutex);
    return state.running != nullptr;
}

std::optional<bgfx::Init> LastInit() {
    return Copy(&State::lastInit);
}

std::string UniformName(bgfx::UniformHandle handle) {
    State& state = State::Get();
    std::lock_guard const lock(state.mutex);
    Resource const* const uniform = state.running != nullptr ? state.running->uniforms.Find(handle) : nullptr;
    return uniform != nullptr ? uniform->note : std::string();
}

} // namespace recorder
