// A stand-in for bgfx's API that draws nothing and writes down what it is asked: link it in place of bgfx.
// This header is the reading side and the manual; what is recorded is called through bgfx's own headers.
#pragma once

#include <bgfx/bgfx.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Reading side of the recording stand-in for bgfx.
///
/// A test in four steps:
///
///     recorder::Reset();                                   // 1. a fresh, stopped bgfx and empty records
///     bgfx::Init init;                                     // 2. the code under test, which calls bgfx
///     init.type = bgfx::RendererType::Noop;
///     bgfx::init(init);
///     bgfx::setViewRect(127, 0, 0, 800, 600);
///     bgfx::shutdown();
///                                                          // 3. what was called, in order
///     EXPECT_THAT(recorder::CallTexts(), testing::Contains("setViewRect(127, 0, 0, 800, 600)"));
///     EXPECT_THAT(recorder::Errors(), testing::IsEmpty()); // 4. nothing was misused
///     EXPECT_THAT(recorder::Leaks(), testing::IsEmpty());  //    and nothing was left behind
///
/// What behaves as in bgfx:
/// - handles come lowest first and return to the pool with the frame in which they were destroyed; a uniform
///   is shared by name, a shader by content and a program by its shaders, each with a count of owners;
/// - `setTransform` counts from 1 and restarts with every frame; `frame` returns 0, 1, 2 ... after `init`'s
/// own;
/// - transient buffers are real memory of the size given to `init`, and run out: vertices or indices alone
///   then get what is left, or a size beyond it where not even their alignment fits;
/// - memory is let go by the second `frame` after its use, and at `shutdown`: only then are the release
///   functions of `makeRef` called, and the bytes must still be what they were when they were handed over;
/// - `readTexture` fills the caller's memory no earlier than in the frame whose number it returned;
/// - `renderFrame` on a thread other than the one that called `Reset` waits for the next `frame`, ends with
///   `shutdown` and leaves no trace. Where there is such a thread, `frame` returns when it has executed the
///   frame and waits again, so that tests find the same state every time (`Settings::holdsFrames` ends that),
///   and `shutdown` lets it execute what was submitted;
/// - `submit` and `dispatch` take over what is bound and discard it as their flags say.
///
/// How arguments read: handles as "kind#index" ("program#3", "frameBuffer#invalid"), uniforms in `setUniform`
/// by name with all their floats, transforms as "matrix" or "cache#id", flags in hexadecimal, enumerators by
/// name, floats with as many digits as they need. Pure queries (`getCaps`, `getStats`, `getRendererType`,
/// `getUniformInfo`, `getAvailTransient...`, ...) leave no trace. A native window reads as "window:0x1234".
///
/// It does not do: encoders, indirect buffers, occlusion queries, instance data, topology and vertex
/// conversion. A caller of one of those does not link.
///
/// Thread: every function, bgfx's and these, may be called from any thread. Release functions run on the
/// thread that calls `frame` or `shutdown`, outside the lock.
namespace recorder {

/// One call of bgfx's API.
struct Call {
    std::string name;               ///< "setViewRect"
    std::string arguments;          ///< "127, 0, 0, 800, 600"
    std::string result;             ///< what it returned, empty for void: "program#3", "1", "true"
    std::vector<std::byte> payload; ///< matrix, uniform floats, or the bytes that were bound or handed over

    /// "setViewRect(127, 0, 0, 800, 600)".
    [[nodiscard]] std::string Text() const;

    /// The payload as values of `T`; bytes that do not fill a last value are left out.
    template<typename T>
    [[nodiscard]] std::vector<T> PayloadAs() const {
        std::vector<T> values(payload.size() / sizeof(T));
        if (!values.empty()) {
            std::memcpy(values.data(), payload.data(), values.size() * sizeof(T));
        }
        return values;
    }
};

/// A buffer that `setBuffer` bound for a compute stage.
struct BufferBinding {
    std::string buffer; ///< "dynamicVertexBuffer#4"
    bgfx::Access::Enum access = bgfx::Access::Count;
    std::string layout; ///< of a vertex buffer, as in `Draw`
};

/// One `submit` or `dispatch` together with everything that was bound when it was called.
struct Draw {
    bool isDispatch = false;
    bgfx::ViewId view = 0;
    bgfx::ProgramHandle program = BGFX_INVALID_HANDLE;
    uint32_t depth = 0;
    uint8_t flags = 0;
    uint32_t groups[3] = {0, 0, 0};                     ///< of a dispatch
    std::optional<uint64_t> state;                      ///< of `setState`, when it was called
    std::optional<uint32_t> transform;                  ///< cache index, when a transform was set
    std::vector<float> matrix;                          ///< the sixteen floats behind `transform`
    std::string vertexBuffer;                           ///< stream 0: "transient", "vertexBuffer#2", or empty
    std::string indexBuffer;                            ///< likewise
    uint16_t stride = 0;                                ///< bytes per vertex of stream 0
    std::string layout;                                 ///< of stream 0: "Position 3 Float, Color0 4 Float"
    std::vector<std::byte> vertices;                    ///< content of stream 0 at the call
    std::vector<std::byte> indices;                     ///< content of the index buffer at the call
    uint32_t instances = 1;                             ///< of `setInstanceCount`
    std::map<std::string, std::vector<float>> uniforms; ///< set since the previous submit or dispatch
    std::map<uint8_t, bgfx::TextureHandle> textures;    ///< by stage
    std::map<uint8_t, BufferBinding> buffers;           ///< by stage
    std::map<uint8_t, uint32_t> samplerFlags;           ///< by stage

    /// The bytes of stream 0 as values of `T`.
    template<typename T>
    [[nodiscard]] std::vector<T> VerticesAs() const {
        return As<T>(vertices);
    }

    /// The index bytes as values of `T`.
    template<typename T>
    [[nodiscard]] std::vector<T> IndicesAs() const {
        return As<T>(indices);
    }

private:
    template<typename T>
    static std::vector<T> As(std::vector<std::byte> const& bytes) {
        std::vector<T> values(bytes.size() / sizeof(T));
        if (!values.empty()) {
            std::memcpy(values.data(), bytes.data(), values.size() * sizeof(T));
        }
        return values;
    }
};

/// How the stand-in behaves. Start from `GetSettings()`, change a copy, `Apply` it.
struct Settings {
    uint32_t failingInits = 0;              ///< this many of the next `init` calls return false
    std::optional<uint32_t> failingShader;  ///< the createShader call with this number (from 0) fails
    std::optional<uint32_t> failingProgram; ///< the createProgram call with this number (from 0) fails
    bool hasCaps = true;                    ///< false: `getCaps` returns null
    uint64_t supported = 0;                 ///< capability bits; by default compute, blit, read-back, windows
    bool homogeneousDepth = false;
    bool originBottomLeft = false;
    bgfx::RendererType::Enum actsAs = bgfx::RendererType::Count; ///< what `getRendererType` says instead
    uint16_t vertexBuffers = 16384; ///< that exist at once, static and dynamic each; from the next `init` on
    bool holdsFrames = false; ///< true: frames stay in flight, as with a slow GPU, until it is false again
    uint32_t readLatency = 2; ///< `readTexture` is answered this many frames after the current one
    /// Gives the bytes that `readTexture` delivers for a texture of the given size; zeros when not set.
    std::function<std::vector<std::byte>(bgfx::TextureHandle, uint16_t width, uint16_t height)> pixels;
};

/// Stops a running bgfx silently, empties all records and restores the default settings.
void Reset();

/// Empties calls and draws; bgfx runs on, and errors and leaks stay.
void ClearCalls();

[[nodiscard]] Settings GetSettings();

/// Takes effect at once, also on the capabilities of a running bgfx.
void Apply(Settings const& settings);

/// The number that the next `frame` returns; later ones count on from it.
void SetNextFrameNumber(uint32_t number);

[[nodiscard]] std::vector<Call> Calls();
[[nodiscard]] std::vector<std::string> CallNames();
[[nodiscard]] std::vector<std::string> CallTexts();

/// The calls of one function.
[[nodiscard]] std::vector<Call> CallsNamed(std::string_view name);
[[nodiscard]] std::size_t CountCalls(std::string_view name);

/// Submits and dispatches in order.
[[nodiscard]] std::vector<Draw> Draws();

/// Misuse so far: a call while bgfx is not running, a dead or invalid handle, memory used twice or changed
/// too early, a second frame buffer on a native window.
[[nodiscard]] std::vector<std::string> Errors();

/// What was alive when `shutdown` was called: "uniform#2 (u_viewport)".
[[nodiscard]] std::vector<std::string> Leaks();

/// What is alive now, in the same words.
[[nodiscard]] std::vector<std::string> Alive();

[[nodiscard]] bool IsRunning();

/// The argument of the last `init`, failed ones included; empty before the first.
[[nodiscard]] std::optional<bgfx::Init> LastInit();

/// The name that `createUniform` was given, or an empty string.
[[nodiscard]] std::string UniformName(bgfx::UniformHandle handle);

} // namespace recorder
