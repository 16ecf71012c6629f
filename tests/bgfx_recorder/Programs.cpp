// Shaders, programs and uniforms, each shared and counted as bgfx does.
#include "State.h"

#include <algorithm>

namespace recorder {

namespace {

/// 'V', 'F' or 'C' when the bytes begin like one of bgfx's shader binaries, 0 otherwise.
char ShaderKind(Bytes const& binary) {
    constexpr std::size_t kMagicSize = 4;
    if (binary.size() < kMagicSize || char(binary[1]) != 'S' || char(binary[2]) != 'H') {
        return 0;
    }
    char const kind = char(binary[0]);
    return kind == 'V' || kind == 'F' || kind == 'C' ? kind : char(0);
}

bool IsNext(std::optional<uint32_t> const& failing, uint32_t& counter) {
    return failing == counter++;
}

void ReleaseShader(Running& now, bgfx::ShaderHandle shader) {
    Resource* const resource = now.shaders.Find(shader);
    if (resource != nullptr && --resource->owners == 0) {
        now.shaders.Remove(shader);
    }
}

bgfx::ProgramHandle Link(Recording& call, std::vector<bgfx::ShaderHandle> const& shaders,
                         std::string const& kinds) {
    Running& now = call.Now();
    std::vector<uint16_t> parts;
    for (std::size_t i = 0; i < shaders.size(); ++i) {
        Resource const* const shader = call.Require(now.shaders, shaders[i]);
        if (shader == nullptr) {
            return BGFX_INVALID_HANDLE;
        }
        if (shader->shaderKind != kinds[i]) {
            call.Error(Text(shaders[i]) + " is a shader of another stage");
            return BGFX_INVALID_HANDLE;
        }
        parts.push_back(shaders[i].idx);
    }
    auto const shared =
        now.programs.FindIf([&parts](Resource const& program) { return program.parts == parts; });
    if (Resource* const program = now.programs.Find(shared)) {
        ++program->owners;
        return shared;
    }
    for (bgfx::ShaderHandle const shader : shaders) {
        ++now.shaders.Find(shader)->owners;
    }
    Resource program;
    program.parts = parts;
    return now.programs.Add(std::move(program));
}

bgfx::ProgramHandle CreateProgram(Recording& call, std::vector<bgfx::ShaderHandle> const& shaders,
                                  std::string const& kinds, bool destroyShaders) {
    if (!call.IsRunning()) {
        return call.Result(bgfx::ProgramHandle BGFX_INVALID_HANDLE);
    }
    State& state = call.Records();
    bool const fails = IsNext(state.settings.failingProgram, state.programsCreated);
    bgfx::ProgramHandle const program =
        fails ? bgfx::ProgramHandle BGFX_INVALID_HANDLE : Link(call, shaders, kinds);
    // As in bgfx: a program that cannot be linked leaves its shaders to the caller.
    if (destroyShaders && bgfx::isValid(program)) {
        for (bgfx::ShaderHandle const shader : shaders) {
            ReleaseShader(call.Now(), shader);
        }
    }
    return call.Result(program);
}

} // namespace

} // namespace recorder

namespace bgfx {

using recorder::Arguments;
using recorder::Recording;
using recorder::Resource;
using recorder::State;

ShaderHandle createShader(Memory const* memory) {
    Recording call("createShader", Arguments(memory->size));
    if (!call.IsRunning()) {
        return call.Result(ShaderHandle BGFX_INVALID_HANDLE);
    }
    State& state = call.Records();
    Resource shader;
    shader.bytes = state.Consume(memory, "createShader");
    shader.shaderKind = recorder::ShaderKind(shader.bytes);
    call.Payload(shader.bytes);
    if (recorder::IsNext(state.settings.failingShader, state.shadersCreated)) {
        return call.Result(ShaderHandle BGFX_INVALID_HANDLE);
    }
    if (shader.shaderKind == 0) {
        call.Error("the memory holds no shader binary");
        return call.Result(ShaderHandle BGFX_INVALID_HANDLE);
    }
    auto& shaders = call.Now().shaders;
    ShaderHandle const shared =
        shaders.FindIf([&shader](Resource const& other) { return other.bytes == shader.bytes; });
    if (Resource* const existing = shaders.Find(shared)) {
        ++existing->owners;
        return call.Result(shared);
    }
    return call.Result(shaders.Add(std::move(shader)));
}

void setName(ShaderHandle handle, char const* name, int32_t length) {
    std::string const text = recorder::Name(name, length);
    Recording call("setName", Arguments(handle, text));
    if (!call.IsRunning()) {
        return;
    }
    if (Resource* const shader = call.Require(call.Now().shaders, handle)) {
        shader->note = text;
    }
}

void destroy(ShaderHandle handle) {
    Recording call("destroy", Arguments(handle));
    if (call.IsRunning() && call.Require(call.Now().shaders, handle) != nullptr) {
        recorder::ReleaseShader(call.Now(), handle);
    }
}

ProgramHandle createProgram(ShaderHandle vertex, ShaderHandle fragment, bool destroyShaders) {
    Recording call("createProgram", Arguments(vertex, fragment, destroyShaders));
    return recorder::CreateProgram(call, {vertex, fragment}, "VF", destroyShaders);
}

ProgramHandle createProgram(ShaderHandle compute, bool destroyShader) {
    Recording call("createProgram", Arguments(compute, destroyShader));
    return recorder::CreateProgram(call, {compute}, "C", destroyShader);
}

void destroy(ProgramHandle handle) {
    Recording call("destroy", Arguments(handle));
    if (!call.IsRunning()) {
        return;
    }
    Resource* const program = call.Require(call.Now().programs, handle);
    if (program == nullptr || --program->owners > 0) {
        return;
    }
    for (uint16_t const shader : program->parts) {
        recorder::ReleaseShader(call.Now(), {shader});
    }
    call.Now().programs.Remove(handle);
}

UniformHandle createUniform(char const* name, UniformType::Enum type, uint16_t count) {
    Recording call("createUniform", Arguments(name, type, count));
    if (!call.IsRunning()) {
        return call.Result(UniformHandle BGFX_INVALID_HANDLE);
    }
    auto& uniforms = call.Now().uniforms;
    UniformHandle const shared =
        uniforms.FindIf([name](Resource const& uniform) { return uniform.note == name; });
    if (Resource* const uniform = uniforms.Find(shared)) {
        if (uniform->uniformType != type) {
            call.Error(std::string(name) + " has another type already");
        }
        uniform->count = std::max(uniform->count, count);
        ++uniform->owners;
        return call.Result(shared);
    }
    Resource uniform;
    uniform.note = name;
    uniform.uniformType = type;
    uniform.count = std::max<uint16_t>(count, 1);
    return call.Result(uniforms.Add(std::move(uniform)));
}

void getUniformInfo(UniformHandle handle, UniformInfo& info) {
    State& state = State::Get();
    std::lock_guard const lock(state.mutex);
    Resource const* const uniform = state.running != nullptr ? state.running->uniforms.Find(handle) : nullptr;
    if (uniform == nullptr) {
        state.errors.push_back("getUniformInfo: " + recorder::Text(handle) + " is not alive");
        return;
    }
    std::string const name = uniform->note.substr(0, sizeof(info.name) - 1);
    std::copy(name.c_str(), name.c_str() + name.size() + 1, info.name);
    info.type = uniform->uniformType;
    info.num = uniform->count;
}

void destroy(UniformHandle handle) {
    Recording call("destroy", Arguments(handle));
    if (!call.IsRunning()) {
        return;
    }
    Resource* const uniform = call.Require(call.Now().uniforms, handle);
    if (uniform != nullptr && --uniform->owners == 0) {
        call.Now().uniforms.Remove(handle);
    }
}

} // namespace bgfx
