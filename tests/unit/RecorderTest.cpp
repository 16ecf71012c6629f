// The stand-in for bgfx itself: does it behave as bgfx where tests rely on it, and does it catch misuse.
#include <Recorder.h>

#include <zx3D/BgfxVersion.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <thread>
#include <vector>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class RecorderTest : public testing::Test {
protected:
    void SetUp() override {
        recorder::Reset();
        bgfx::Init init;
        init.type = bgfx::RendererType::Noop;
        init.limits.*zarvex::zx3D::kTransientVbSize<bgfx::Init::Limits> = 1000;
        init.limits.*zarvex::zx3D::kTransientIbSize<bgfx::Init::Limits> = 100;
        ASSERT_TRUE(bgfx::init(init));
        recorder::ClearCalls();
    }

    void TearDown() override { recorder::Reset(); }

    static bgfx::VertexLayout Layout() {
        bgfx::VertexLayout layout;
        layout.begin().add(bgfx::Attrib::Position, 3, bgfx::AttribType::Float).end();
        return layout;
    }

    static bgfx::Memory const* Shader(char kind, char content) {
        std::array<char, 5> const binary{kind, 'S', 'H', 11, content};
        return bgfx::copy(binary.data(), std::uint32_t(binary.size()));
    }
};

} // namespace

TEST_F(RecorderTest, WritesCallsDownInOrderWithArguments) {
    bgfx::setViewRect(127, 0, 0, 800, 600);
    bgfx::setViewClear(0, BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0xFF000080, 1.0f, 0);
    bgfx::touch(0);
    EXPECT_THAT(recorder::CallTexts(), ElementsAre("setViewRect(127, 0, 0, 800, 600)",
                                                   "setViewClear(0, 0x3, 0xff000080, 1, 0)", "touch(0)"));
    EXPECT_THAT(recorder::CallNames(), ElementsAre("setViewRect", "setViewClear", "touch"));
}

TEST_F(RecorderTest, QueriesLeaveNoTrace) {
    bgfx::getCaps();
    bgfx::getStats();
    bgfx::getRendererType();
    bgfx::getAvailTransientIndexBuffer(3);
    EXPECT_THAT(recorder::Calls(), IsEmpty());
}

TEST_F(RecorderTest, TransformIndicesCountFromOneAndRestartWithEveryFrame) {
    float const matrix[16] = {5.0f};
    EXPECT_EQ(bgfx::setTransform(matrix), 1u);
    EXPECT_EQ(bgfx::setTransform(matrix, 1), 2u);
    bgfx::frame();
    EXPECT_EQ(bgfx::setTransform(matrix), 1u);
    EXPECT_EQ(recorder::Calls().front().PayloadAs<float>().size(), 16u);
    EXPECT_EQ(recorder::Calls().front().PayloadAs<float>()[0], 5.0f);
}

TEST_F(RecorderTest, FrameNumbersIncreaseAndCanBeSet) {
    std::uint32_t const first = bgfx::frame();
    EXPECT_EQ(bgfx::frame(), first + 1);
    recorder::SetNextFrameNumber(41);
    EXPECT_EQ(bgfx::frame(), 41u);
    EXPECT_EQ(bgfx::frame(true), 42u);
    EXPECT_EQ(recorder::Calls().back().Text(), "frame(true)");
}

TEST_F(RecorderTest, HandlesComeLowestFirstAndReturnWhenTheFrameEnds) {
    bgfx::VertexLayout const layout = Layout();
    auto const first = bgfx::createDynamicVertexBuffer(1, layout);
    auto const second = bgfx::createDynamicVertexBuffer(1, layout);
    EXPECT_EQ(first.idx, 0);
    EXPECT_EQ(second.idx, 1);
    bgfx::destroy(first);
    EXPECT_EQ(bgfx::createDynamicVertexBuffer(1, layout).idx, 2);
    bgfx::frame();
    EXPECT_EQ(bgfx::createDynamicVertexBuffer(1, layout).idx, 0);
}

TEST_F(RecorderTest, UniformsAreSharedByNameAndCounted) {
    auto const first = bgfx::createUniform("u_test", bgfx::UniformType::Vec4);
    auto const second = bgfx::createUniform("u_test", bgfx::UniformType::Vec4);
    EXPECT_EQ(first.idx, second.idx);
    bgfx::destroy(first);
    EXPECT_EQ(recorder::UniformName(second), "u_test");
    bgfx::destroy(second);
    EXPECT_EQ(recorder::UniformName(second), "");
    EXPECT_THAT(recorder::Errors(), IsEmpty());
    bgfx::destroy(second);
    EXPECT_THAT(recorder::Errors(), ElementsAre("destroy: uniform#0 is not alive"));
}

TEST_F(RecorderTest, UniformsReadByNameWithAllFloats) {
    auto const uniform = bgfx::createUniform("u_test", bgfx::UniformType::Vec4);
    float const value[4] = {61680.0f, 0.5f, 0.0f, -1.0f};
    bgfx::setUniform(uniform, value);
    EXPECT_EQ(recorder::Calls().back().Text(), "setUniform(u_test, 61680, 0.5, 0, -1)");
    EXPECT_THAT(recorder::Calls().back().PayloadAs<float>(), ElementsAre(61680.0f, 0.5f, 0.0f, -1.0f));
}

TEST_F(RecorderTest, DestroyingAnInvalidHandleIsAnError) {
    bgfx::destroy(bgfx::TextureHandle BGFX_INVALID_HANDLE);
    EXPECT_THAT(recorder::Errors(), ElementsAre("destroy: texture#invalid is not alive"));
}

TEST_F(RecorderTest, CallsBeforeInitAndAfterShutdownAreErrors) {
    bgfx::shutdown();
    bgfx::touch(0);
    bgfx::frame();
    EXPECT_THAT(recorder::Errors(), ElementsAre("touch: called while bgfx is not running",
                                                "frame: called while bgfx is not running"));
}

TEST_F(RecorderTest, InitWhileRunningFails) {
    EXPECT_FALSE(bgfx::init({}));
    EXPECT_THAT(recorder::Errors(), ElementsAre("init: bgfx is running already"));
}

TEST_F(RecorderTest, InitFailsAsOftenAsToldAndThenSucceeds) {
    bgfx::shutdown();
    recorder::Settings settings = recorder::GetSettings();
    settings.failingInits = 1;
    recorder::Apply(settings);
    EXPECT_FALSE(bgfx::init({}));
    EXPECT_FALSE(recorder::IsRunning());
    EXPECT_TRUE(bgfx::init({}));
}

TEST_F(RecorderTest, ShutdownReportsWhatIsLeft) {
    bgfx::createUniform("u_left", bgfx::UniformType::Vec4);
    bgfx::createDynamicIndexBuffer(8);
    bgfx::shutdown();
    EXPECT_THAT(recorder::Leaks(), ElementsAre("dynamicIndexBuffer#0 (16 bytes)", "uniform#0 (u_left)"));
}

TEST_F(RecorderTest, ReferredMemoryIsReleasedTwoFramesAfterItsUse) {
    std::array<std::uint16_t, 3> const indices{0, 1, 2};
    bool released = false;
    auto const release = [](void*, void* flag) { *static_cast<bool*>(flag) = true; };
    auto const buffer = bgfx::createIndexBuffer(bgfx::makeRef(indices.data(), 6, release, &released));
    bgfx::destroy(buffer);
    bgfx::frame();
    EXPECT_FALSE(released);
    bgfx::frame();
    EXPECT_TRUE(released);
}

TEST_F(RecorderTest, ReferredMemoryIsReleasedAtShutdown) {
    std::array<std::uint16_t, 3> const indices{0, 1, 2};
    bool released = false;
    auto const release = [](void*, void* flag) { *static_cast<bool*>(flag) = true; };
    bgfx::destroy(bgfx::createIndexBuffer(bgfx::makeRef(indices.data(), 6, release, &released)));
    bgfx::shutdown();
    EXPECT_TRUE(released);
    EXPECT_THAT(recorder::Leaks(), IsEmpty());
}

TEST_F(RecorderTest, ReferredMemoryThatChangesEarlyIsAnError) {
    std::array<std::uint16_t, 3> indices{0, 1, 2};
    bgfx::createIndexBuffer(bgfx::makeRef(indices.data(), 6));
    indices[1] = 7;
    bgfx::frame();
    bgfx::frame();
    EXPECT_THAT(recorder::Errors(),
                ElementsAre("createIndexBuffer: memory changed before bgfx was done with it"));
}

TEST_F(RecorderTest, MemoryThatIsUsedTwiceIsAnError) {
    bgfx::Memory const* const memory = bgfx::alloc(6);
    bgfx::createIndexBuffer(memory);
    bgfx::createIndexBuffer(memory);
    EXPECT_THAT(recorder::Errors(),
                ElementsAre("createIndexBuffer: memory that createIndexBuffer has taken already"));
}

TEST_F(RecorderTest, MemoryThatIsNeverUsedIsALeak) {
    bgfx::alloc(6);
    bgfx::shutdown();
    EXPECT_THAT(recorder::Leaks(), ElementsAre("memory of 6 bytes that was never used"));
}

TEST_F(RecorderTest, TransientBuffersAreMemoryThatRunsOut) {
    bgfx::VertexLayout const layout = Layout();
    bgfx::TransientVertexBuffer vertices;
    bgfx::TransientIndexBuffer indices;
    ASSERT_TRUE(bgfx::allocTransientBuffers(&vertices, layout, 3, &indices, 3));
    EXPECT_EQ(vertices.size, 36u);
    EXPECT_EQ(indices.size, 6u);
    EXPECT_EQ(bgfx::getAvailTransientVertexBuffer(1000, layout), 80u);
    EXPECT_FALSE(bgfx::allocTransientBuffers(&vertices, layout, 81, &indices, 3));
    bgfx::frame();
    EXPECT_TRUE(bgfx::allocTransientBuffers(&vertices, layout, 81, &indices, 3));
}

TEST_F(RecorderTest, VerticesAloneGetTheTransientSpaceThatIsLeft) {
    bgfx::VertexLayout const layout = Layout();
    bgfx::TransientVertexBuffer vertices;
    bgfx::allocTransientVertexBuffer(&vertices, 81, layout);
    EXPECT_EQ(vertices.size, 81u * 12u);
    bgfx::allocTransientVertexBuffer(&vertices, 5, layout);
    EXPECT_EQ(vertices.size, 2u * 12u);
    bgfx::allocTransientVertexBuffer(&vertices, 5, layout);
    EXPECT_EQ(vertices.size, 0u);
}

TEST_F(RecorderTest, TransientVerticesWhoseAlignmentDoesNotFitGetASizeBeyondTheSpace) {
    bgfx::VertexLayout layout;
    layout.begin().add(bgfx::Attrib::Position, 3, bgfx::AttribType::Float).skip(16).end();
    bgfx::TransientVertexBuffer vertices;
    bgfx::allocTransientVertexBuffer(&vertices, 83, Layout());
    bgfx::allocTransientVertexBuffer(&vertices, 1, layout); // at 1008 of 1000 bytes
    EXPECT_GT(vertices.size, 1000u);
    bgfx::TransientIndexBuffer indices;
    EXPECT_FALSE(bgfx::allocTransientBuffers(&vertices, layout, 1, &indices, 1));
}

TEST_F(RecorderTest, DrawsKnowTheLayoutOfTheirVertices) {
    bgfx::VertexLayout layout;
    layout.begin()
        .add(bgfx::Attrib::TexCoord0, 2, bgfx::AttribType::Float)
        .add(bgfx::Attrib::Position, 3, bgfx::AttribType::Half)
        .add(bgfx::Attrib::Color0, 4, bgfx::AttribType::Uint8, true)
        .end();
    std::string const text = "TexCoord0 2 Float, Position 3 Half, Color0 4 Uint8 normalized";
    bgfx::TransientVertexBuffer transient;
    bgfx::allocTransientVertexBuffer(&transient, 1, layout);
    bgfx::setVertexBuffer(0, &transient);
    bgfx::submit(0, BGFX_INVALID_HANDLE);
    bgfx::DynamicVertexBufferHandle const dynamic = bgfx::createDynamicVertexBuffer(1u, layout);
    bgfx::setVertexBuffer(0, dynamic);
    bgfx::setBuffer(3, dynamic, bgfx::Access::Read);
    bgfx::submit(0, BGFX_INVALID_HANDLE);
    ASSERT_EQ(recorder::Draws().size(), 2u);
    EXPECT_EQ(recorder::Draws()[0].layout, text);
    EXPECT_EQ(recorder::Draws()[1].layout, text);
    EXPECT_EQ(recorder::Draws()[1].buffers.at(3).layout, text);
}

TEST_F(RecorderTest, SubmitTakesOverWhatIsBoundAndDiscardsIt) {
    bgfx::VertexLayout const layout = Layout();
    bgfx::TransientVertexBuffer vertices;
    bgfx::TransientIndexBuffer indices;
    ASSERT_TRUE(bgfx::allocTransientBuffers(&vertices, layout, 1, &indices, 1));
    float const position[3] = {1.0f, 2.0f, 3.0f};
    std::uint16_t const index = 9;
    std::memcpy(vertices.data, position, sizeof(position));
    std::memcpy(indices.data, &index, sizeof(index));
    auto const uniform = bgfx::createUniform("u_test", bgfx::UniformType::Vec4);
    float const matrix[16] = {2.0f};

    bgfx::setUniform(uniform, matrix);
    bgfx::setState(BGFX_STATE_WRITE_RGB);
    bgfx::setTransform(bgfx::setTransform(matrix));
    bgfx::setVertexBuffer(0, &vertices);
    bgfx::setIndexBuffer(&indices);
    bgfx::submit(5, BGFX_INVALID_HANDLE, 3);
    bgfx::submit(5, BGFX_INVALID_HANDLE);

    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_EQ(draws.size(), 2u);
    EXPECT_EQ(draws[0].view, 5);
    EXPECT_EQ(draws[0].depth, 3u);
    EXPECT_EQ(draws[0].state, BGFX_STATE_WRITE_RGB);
    EXPECT_EQ(draws[0].transform, 1u);
    EXPECT_EQ(draws[0].matrix.at(0), 2.0f);
    EXPECT_THAT(draws[0].VerticesAs<float>(), ElementsAre(1.0f, 2.0f, 3.0f));
    EXPECT_THAT(draws[0].IndicesAs<std::uint16_t>(), ElementsAre(9));
    EXPECT_EQ(draws[0].uniforms.at("u_test").size(), 4u);
    EXPECT_FALSE(draws[1].state.has_value());
    EXPECT_FALSE(draws[1].transform.has_value());
    EXPECT_THAT(draws[1].vertices, IsEmpty());
    EXPECT_THAT(draws[1].uniforms, IsEmpty());
}

TEST_F(RecorderTest, DispatchDiscardsBindingsAndLeavesTheTransform) {
    bgfx::VertexLayout const layout = Layout();
    auto const buffer = bgfx::createDynamicVertexBuffer(4, layout, BGFX_BUFFER_COMPUTE_WRITE);
    float const matrix[16] = {};
    bgfx::setTransform(matrix);
    bgfx::setBuffer(1, buffer, bgfx::Access::Write);
    bgfx::dispatch(2, BGFX_INVALID_HANDLE, 2, 1, 1);
    bgfx::submit(2, BGFX_INVALID_HANDLE);

    std::vector<recorder::Draw> const draws = recorder::Draws();
    ASSERT_EQ(draws.size(), 2u);
    EXPECT_TRUE(draws[0].isDispatch);
    EXPECT_EQ(draws[0].groups[0], 2u);
    EXPECT_EQ(draws[0].buffers.at(1).buffer, "dynamicVertexBuffer#0");
    EXPECT_EQ(draws[0].buffers.at(1).access, bgfx::Access::Write);
    EXPECT_THAT(draws[1].buffers, IsEmpty());
    EXPECT_EQ(draws[1].transform, 1u);
}

TEST_F(RecorderTest, UpdatesBeyondABufferAreErrors) {
    auto const buffer = bgfx::createDynamicIndexBuffer(2);
    std::array<std::uint16_t, 3> const indices{1, 2, 3};
    bgfx::update(buffer, 0, bgfx::copy(indices.data(), 6));
    EXPECT_THAT(recorder::Errors(), ElementsAre(HasSubstr("6 bytes do not fit")));
}

TEST_F(RecorderTest, FrameBuffersOwnTheTexturesThatAreGivenAway) {
    bgfx::TextureHandle const textures[] = {
        bgfx::createTexture2D(8, 4, false, 1, bgfx::TextureFormat::RGBA8, BGFX_TEXTURE_RT),
        bgfx::createTexture2D(8, 4, false, 1, bgfx::TextureFormat::D16, BGFX_TEXTURE_RT_WRITE_ONLY)};
    auto const frameBuffer = bgfx::createFrameBuffer(2, textures, true);
    EXPECT_EQ(bgfx::getTexture(frameBuffer, 0).idx, textures[0].idx);
    bgfx::destroy(frameBuffer);
    EXPECT_THAT(recorder::Alive(), IsEmpty());
}

TEST_F(RecorderTest, TexturesThatAreKeptOutliveTheirFrameBuffer) {
    auto const texture = bgfx::createTexture2D(8, 4, false, 1, bgfx::TextureFormat::RGBA8, BGFX_TEXTURE_RT);
    auto const frameBuffer = bgfx::createFrameBuffer(1, &texture);
    bgfx::destroy(frameBuffer);
    EXPECT_THAT(recorder::Alive(), ElementsAre("texture#0 (8 x 4 RGBA8)"));
    bgfx::destroy(texture);
    EXPECT_THAT(recorder::Alive(), IsEmpty());
}

TEST_F(RecorderTest, AWindowHasOneFrameBufferAtATime) {
    int window = 0;
    auto const first = bgfx::createFrameBuffer(&window, 8, 8);
    bgfx::createFrameBuffer(&window, 8, 8);
    EXPECT_THAT(recorder::Errors(), ElementsAre(HasSubstr("has frameBuffer#0 already")));
    bgfx::destroy(first);
}

TEST_F(RecorderTest, AWindowIsFreeOnlyWhenTheFrameHasEnded) {
    int window = 0;
    bgfx::destroy(bgfx::createFrameBuffer(&window, 8, 8));
    bgfx::createFrameBuffer(&window, 8, 8);
    EXPECT_THAT(recorder::Errors(), ElementsAre(HasSubstr("lost its frame buffer in this very frame")));

    int other = 0;
    bgfx::destroy(bgfx::createFrameBuffer(&other, 8, 8));
    bgfx::frame();
    bgfx::createFrameBuffer(&other, 8, 8);
    EXPECT_EQ(recorder::Errors().size(), 1u);
}

TEST_F(RecorderTest, ReadTextureAnswersInTheFrameThatItNames) {
    recorder::Settings settings = recorder::GetSettings();
    settings.readLatency = 1;
    settings.pixels = [](bgfx::TextureHandle, std::uint16_t width, std::uint16_t height) {
        return std::vector<std::byte>(std::size_t(4) * width * height, std::byte(0xAB));
    };
    recorder::Apply(settings);
    auto const texture = bgfx::createTexture2D(2, 1, false, 1, bgfx::TextureFormat::RGBA8);
    std::array<std::uint8_t, 8> pixels{};
    std::uint32_t const ready = bgfx::readTexture(texture, pixels.data());
    std::uint32_t const first = bgfx::frame();
    EXPECT_LT(first, ready);
    EXPECT_EQ(pixels[7], 0);
    EXPECT_EQ(bgfx::frame(), ready);
    EXPECT_EQ(pixels[7], 0xAB);
}

TEST_F(RecorderTest, ProgramsShareShadersAndAreShared) {
    auto const vertex = bgfx::createShader(Shader('V', 1));
    auto const fragment = bgfx::createShader(Shader('F', 1));
    EXPECT_EQ(bgfx::createShader(Shader('V', 1)).idx, vertex.idx);
    auto const program = bgfx::createProgram(vertex, fragment, true);
    EXPECT_TRUE(bgfx::isValid(program));
    EXPECT_EQ(recorder::Calls().back().result, "program#0");
    bgfx::destroy(vertex);
    bgfx::destroy(program);
    EXPECT_THAT(recorder::Alive(), IsEmpty());
    EXPECT_THAT(recorder::Errors(), IsEmpty());
}

TEST_F(RecorderTest, ShadersOfTheWrongStageDoNotLink) {
    auto const vertex = bgfx::createShader(Shader('V', 1));
    EXPECT_FALSE(bgfx::isValid(bgfx::createProgram(vertex, true)));
    EXPECT_THAT(recorder::Errors(), ElementsAre(HasSubstr("is a shader of another stage")));
}

TEST_F(RecorderTest, ShadersAndProgramsFailWhenTold) {
    recorder::Settings settings = recorder::GetSettings();
    settings.failingShader = 1;
    settings.failingProgram = 0;
    recorder::Apply(settings);
    auto const compute = bgfx::createShader(Shader('C', 1));
    EXPECT_TRUE(bgfx::isValid(compute));
    EXPECT_FALSE(bgfx::isValid(bgfx::createShader(Shader('C', 2))));
    EXPECT_FALSE(bgfx::isValid(bgfx::createProgram(compute)));
    EXPECT_TRUE(bgfx::isValid(bgfx::createProgram(compute)));
    EXPECT_THAT(recorder::Errors(), IsEmpty());
}

TEST_F(RecorderTest, CapsFollowTheSettings) {
    EXPECT_NE(bgfx::getCaps()->supported & BGFX_CAPS_COMPUTE, 0u);
    recorder::Settings settings = recorder::GetSettings();
    settings.supported &= ~BGFX_CAPS_COMPUTE;
    settings.originBottomLeft = true;
    settings.homogeneousDepth = true;
    recorder::Apply(settings);
    EXPECT_EQ(bgfx::getCaps()->supported & BGFX_CAPS_COMPUTE, 0u);
    EXPECT_TRUE(bgfx::getCaps()->originBottomLeft);
    EXPECT_TRUE(bgfx::getCaps()->homogeneousDepth);
    settings.hasCaps = false;
    recorder::Apply(settings);
    EXPECT_EQ(bgfx::getCaps(), nullptr);
}

TEST_F(RecorderTest, VertexLayoutsAddUp) {
    bgfx::VertexLayout layout;
    layout.begin()
        .add(bgfx::Attrib::Position, 3, bgfx::AttribType::Float)
        .skip(4)
        .add(bgfx::Attrib::Color0, 4, bgfx::AttribType::Uint8, true)
        .end();
    EXPECT_EQ(layout.getStride(), 20);
    EXPECT_EQ(layout.getOffset(bgfx::Attrib::Color0), 16);
    EXPECT_FALSE(layout.has(bgfx::Attrib::Normal));
    std::uint8_t count = 0;
    bgfx::AttribType::Enum type = bgfx::AttribType::Count;
    bool normalized = false;
    bool asInt = true;
    layout.decode(bgfx::Attrib::Color0, count, type, normalized, asInt);
    EXPECT_EQ(count, 4);
    EXPECT_EQ(type, bgfx::AttribType::Uint8);
    EXPECT_TRUE(normalized);
    EXPECT_FALSE(asInt);
}

TEST_F(RecorderTest, ARenderThreadFollowsFramesAndEndsWithShutdown) {
    int frames = 0;
    bool exited = false;
    std::thread renderThread([&] {
        for (;;) {
            bgfx::RenderFrame::Enum const result = bgfx::renderFrame();
            frames += result == bgfx::RenderFrame::Render ? 1 : 0;
            if (result == bgfx::RenderFrame::Exiting || result == bgfx::RenderFrame::NoContext) {
                exited = true;
                return;
            }
        }
    });
    bgfx::frame();
    bgfx::shutdown();
    renderThread.join();
    EXPECT_TRUE(exited);
    EXPECT_LE(frames, 2); // that of `init`, and this one, or fewer where the thread comes late
}
