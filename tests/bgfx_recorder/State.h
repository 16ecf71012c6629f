// Everything the stand-in remembers, and the guard that every recorded function opens with.
#pragma once

#include "HandlePool.h"
#include "Recorder.h"
#include "Text.h"

#include <bgfx/bgfx.h>

#include <condition_variable>
#include <cstddef>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace recorder {

using Bytes = std::vector<std::byte>;

[[nodiscard]] Bytes CopyBytes(void const* data, std::size_t size);

/// What is known of one living resource; each kind uses the fields that it needs.
struct Resource {
    std::string note;            ///< name or size, shown in leaks
    int owners = 1;              ///< destroyed when the last one lets go
    Bytes bytes;                 ///< content of a buffer
    uint16_t stride = 0;         ///< bytes per element of a buffer
    std::string layout;          ///< of a vertex buffer
    bool canGrow = false;        ///< of a dynamic buffer
    char shaderKind = 0;         ///< 'V', 'F' or 'C'
    std::vector<uint16_t> parts; ///< shaders of a program, textures of a frame buffer
    bgfx::UniformType::Enum uniformType = bgfx::UniformType::Count;
    uint16_t count = 1; ///< array size of a uniform
    uint16_t width = 0; ///< of a texture
    uint16_t height = 0;
    bgfx::TextureFormat::Enum format = bgfx::TextureFormat::Count;
    void* window = nullptr;          ///< native handle of a frame buffer
    bool ownedByFrameBuffer = false; ///< a texture that was given away with its frame buffer
};

/// The living resources of one handle type.
template<typename Handle>
class Table {
public:
    explicit Table(uint16_t capacity) : m_pool(capacity) {}

    Handle Add(Resource resource) {
        Handle const handle{m_pool.Allocate()};
        if (bgfx::isValid(handle)) {
            m_alive.emplace(handle.idx, std::move(resource));
        }
        return handle;
    }

    /// An index that bgfx uses itself: neither alive for callers nor a leak.
    Handle Reserve() { return Handle{m_pool.Allocate()}; }

    Resource* Find(Handle handle) {
        auto const found = m_alive.find(handle.idx);
        return found != m_alive.end() ? &found->second : nullptr;
    }

    /// The first living resource for which `matches` holds.
    template<typename Predicate>
    Handle FindIf(Predicate matches) const {
        for (auto const& [index, resource] : m_alive) {
            if (matches(resource)) {
                return Handle{index};
            }
        }
        return BGFX_INVALID_HANDLE;
    }

    /// The index stays taken until the frame ends.
    void Remove(Handle handle) {
        m_alive.erase(handle.idx);
        m_removed.push_back(handle.idx);
    }

    void EndFrame() {
        for (uint16_t const index : m_removed) {
            m_pool.Free(index);
        }
        m_removed.clear();
    }

    [[nodiscard]] std::size_t Size() const { return m_alive.size(); }

    void Describe(std::vector<std::string>& texts) const {
        for (auto const& [index, resource] : m_alive) {
            std::string const note = resource.note.empty() ? "" : " (" + resource.note + ")";
            texts.push_back(Text(Handle{index}) + note);
        }
    }

private:
    HandlePool m_pool;
    std::map<uint16_t, Resource> m_alive;
    std::vector<uint16_t> m_removed;
};

/// Memory that bgfx was given by `alloc`, `copy` or `makeRef`.
struct MemoryBlock {
    alignas(bgfx::Memory) std::byte header[sizeof(bgfx::Memory)] = {};
    Bytes own;
    bgfx::ReleaseFn release = nullptr;
    void* userData = nullptr;
    std::string user; ///< the function that took it, empty before
    uint32_t usedInFrame = 0;
    Bytes snapshot; ///< the bytes when it was taken

    [[nodiscard]] bgfx::Memory* Memory() { return reinterpret_cast<bgfx::Memory*>(header); }
};

/// A release function that is due.
struct Release {
    bgfx::ReleaseFn function = nullptr;
    void* data = nullptr;
    void* userData = nullptr;
};

/// A vertex or index buffer that is bound for the next submit.
struct Binding {
    std::string buffer;
    std::byte const* data = nullptr; ///< content in place, so that late writes are seen
    std::size_t size = 0;
    uint16_t stride = 0;
    std::string layout;
};

/// What the next submit or dispatch takes over.
struct Bound {
    std::optional<uint64_t> state;
    std::optional<uint32_t> transform;
    Binding vertices;
    Binding indices;
    std::map<std::string, std::vector<float>> uniforms;
    std::map<uint8_t, bgfx::TextureHandle> textures;
    std::map<uint8_t, uint32_t> samplerFlags;
    std::map<uint8_t, BufferBinding> buffers;
    uint32_t instances = 1;
};

/// Transient space of one frame for vertices or indices.
struct TransientSpace {
    std::unique_ptr<std::byte[]> data;
    uint32_t capacity = 0;
    uint32_t offset = 0;
    uint16_t handle = bgfx::kInvalidHandle;

    void Create(uint32_t size, uint16_t index);
    [[nodiscard]] uint32_t Aligned(uint32_t stride) const { return (offset + stride - 1) / stride * stride; }
    [[nodiscard]] uint32_t Available(uint32_t count, uint32_t stride) const;
    uint32_t Take(uint32_t& count, uint32_t stride);
};

struct PendingRead {
    uint32_t frame = 0;
    void* target = nullptr;
    Bytes pixels;
};

/// What a thread other than the caller's does that executes frames.
enum class RenderThread {
    None,      ///< there is none, or it has not come yet
    Waiting,   ///< for the next frame, in `renderFrame`
    Rendering, ///< `renderFrame` has returned with one
};

/// What lives from `init` to `shutdown`.
struct Running {
    Running();

    uint32_t frame = 1;          ///< `init` has submitted one
    uint32_t executedFrames = 0; ///< the number of the next frame for the render thread, as callers see it
    uint32_t numberOffset = 0;   ///< added to `frame` wherever callers see a frame number
    std::vector<float> transforms;
    Bound bound;
    TransientSpace transientVertices;
    TransientSpace transientIndices;
    std::map<uint8_t const*, std::string> transientLayouts; ///< by the start of the vertices
    std::vector<PendingRead> reads;
    std::set<void*> windowsLeaving; ///< native windows whose frame buffer went in this frame
    uint32_t numDraws = 0;
    uint32_t numDispatches = 0;
    uint32_t numBlits = 0;

    Table<bgfx::DynamicIndexBufferHandle> dynamicIndexBuffers{4096};
    Table<bgfx::DynamicVertexBufferHandle> dynamicVertexBuffers{4096};
    Table<bgfx::FrameBufferHandle> frameBuffers{128};
    Table<bgfx::IndexBufferHandle> indexBuffers{4096};
    Table<bgfx::ProgramHandle> programs{512};
    Table<bgfx::ShaderHandle> shaders{512};
    Table<bgfx::TextureHandle> textures{4096};
    Table<bgfx::UniformHandle> uniforms{512};
    Table<bgfx::VertexBufferHandle> vertexBuffers{4096};
    Table<bgfx::VertexLayoutHandle> vertexLayouts{64};

    bool HasFrameToExecute() const;
    void EndFrame();
    [[nodiscard]] std::vector<std::string> Describe() const;
    bool ReleaseTexture(bgfx::TextureHandle texture);
};

class State {
public:
    static State& Get();
    [[nodiscard]] static Settings DefaultSettings();

    std::recursive_mutex mutex;
    Settings settings;
    bgfx::Caps caps = {};
    bgfx::Stats stats = {};
    std::optional<bgfx::Init> lastInit;
    std::vector<Call> calls;
    std::vector<Draw> draws;
    std::vector<std::string> errors;
    std::vector<std::string> leaks;
    std::unique_ptr<Running> running;
    std::list<MemoryBlock> memory;
    std::thread::id caller = std::this_thread::get_id(); ///< the one that called `Reset`
    std::condition_variable_any turned;                  ///< wakes who waits for a frame or its execution
    uint64_t runs = 0;                                   ///< starts so far
    RenderThread renderThread = RenderThread::None;
    uint32_t shadersCreated = 0;
    uint32_t programsCreated = 0;

    /// Lets those look who wait for a frame or its execution.
    void Turn();

    /// True while a frame is due that a render thread may execute.
    bool CanRender() const;

    /// True until the render thread, if there is one, has executed every frame and waits for the next.
    bool IsRenderThreadBusy() const;

    void UpdateCaps();
    MemoryBlock& AddMemory();
    MemoryBlock* FindMemory(bgfx::Memory const* memory);

    /// Marks the memory as handed over and returns a copy of its bytes.
    Bytes Consume(bgfx::Memory const* memory, std::string const& user);

    /// Takes out what bgfx is done with: everything when `all` is set.
    std::vector<Release> CollectReleases(bool all);

private:
    State();
};

/// One recorded call. Locks the state for its lifetime and notes a call while bgfx is not running.
class Recording {
public:
    enum class Needs { Running, Nothing };

    Recording(char const* name, std::string arguments, Needs needs = Needs::Running);

    [[nodiscard]] State& Records() { return m_state; }
    [[nodiscard]] bool IsRunning() const { return m_state.running != nullptr; }
    [[nodiscard]] Running& Now() { return *m_state.running; }
    void Payload(Bytes payload);
    void Error(std::string const& text);

    /// Replaces the arguments by the uniform's name and all its floats.
    void DescribeUniform(std::string const& name, std::vector<float> const& values);

    template<typename T>
    T Result(T value) {
        m_state.calls[m_index].result = Text(value);
        return value;
    }

    /// The living resource behind a handle, or an error and null.
    template<typename Handle>
    Resource* Require(Table<Handle>& table, Handle handle) {
        Resource* const resource = table.Find(handle);
        if (resource == nullptr) {
            Error(Text(handle) + " is not alive");
        }
        return resource;
    }

    /// As `Require`, for arguments where bgfx takes the invalid handle for "none".
    template<typename Handle>
    Resource* RequireUnlessInvalid(Table<Handle>& table, Handle handle) {
        return bgfx::isValid(handle) ? Require(table, handle) : nullptr;
    }

private:
    State& m_state;
    std::unique_lock<std::recursive_mutex> m_lock;
    std::string m_name;
    std::size_t m_index;
};

} // namespace recorder
