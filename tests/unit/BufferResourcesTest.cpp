// The buffers that draw operations keep.
#include "Fixtures.h"

#include "../../src/render/BufferResources.h"

#include "Recorder.h"

#include <zx3D/Context.h>
#include <zx3D/Vertex.h>

#include <any>
#include <cstdint>
#include <memory>

#include <gmock/gmock.h>

namespace {

using zarvex::zx3D::Owned;
using zarvex::zx3D::Vertex::Pos3fColorRGBA;
using zarvex::zx3DQt::MakeSharedRef;
using Resource = zarvex::zx3DQt::DynamicBufferResource<Pos3fColorRGBA>;

class BufferResourcesTest : public ContextFixture {};

TEST_F(BufferResourcesTest, DestroysTheIndexBufferThenTheVertexBuffer) {
    auto resource = std::make_unique<Resource>();
    resource->indexBuffer = Owned(bgfx::createDynamicIndexBuffer(3u));
    resource->vertexBuffer = Owned(bgfx::createDynamicVertexBuffer(3u, Pos3fColorRGBA::Layout()));
    recorder::ClearCalls();
    resource.reset();
    auto const calls = recorder::CallTexts();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_THAT(calls[0], ::testing::HasSubstr("destroy(dynamicIndexBuffer"));
    EXPECT_THAT(calls[1], ::testing::HasSubstr("destroy(dynamicVertexBuffer"));
}

TEST_F(BufferResourcesTest, DestroysNothingThatWasNotCreated) {
    recorder::ClearCalls();
    Resource();
    EXPECT_TRUE(recorder::CallTexts().empty());
}

TEST_F(BufferResourcesTest, CopiesOfTheAnyThatHoldsItDestroyItOnce) {
    auto resource = std::make_shared<Resource>();
    resource->vertexBuffer = Owned(bgfx::createDynamicVertexBuffer(3u, Pos3fColorRGBA::Layout()));
    std::any first = std::move(resource);
    std::any second = first;
    recorder::ClearCalls();
    first.reset();
    EXPECT_TRUE(recorder::CallTexts().empty());
    second.reset();
    EXPECT_EQ(recorder::CallTexts().size(), 1u);
}

TEST_F(BufferResourcesTest, BgfxSharesReferredDataUntilItHasReadThem) {
    auto values = std::make_shared<std::uint16_t[]>(3);
    values[2] = 7;
    std::weak_ptr<std::uint16_t[]> const watched = values;
    bgfx::DynamicIndexBufferHandle const buffer = bgfx::createDynamicIndexBuffer(2u);
    bgfx::Memory const* const memory = MakeSharedRef(values, 2);
    EXPECT_EQ(reinterpret_cast<std::uint16_t const*>(memory->data), values.get()) << "not copied";
    EXPECT_EQ(memory->size, 2 * sizeof(std::uint16_t));
    bgfx::update(buffer, 0, memory);
    bgfx::destroy(buffer);
    values.reset();
    bgfx::frame();
    EXPECT_EQ(watched.use_count(), 1);
    bgfx::frame();
    EXPECT_TRUE(watched.expired());
}

TEST_F(BufferResourcesTest, ReferredDataEndWithBgfxAtTheLatest) {
    auto values = std::make_shared<float[]>(3);
    std::weak_ptr<float[]> const watched = values;
    bgfx::DynamicVertexBufferHandle const buffer =
        bgfx::createDynamicVertexBuffer(1u, Pos3fColorRGBA::Layout());
    bgfx::update(buffer, 0, MakeSharedRef(values, 3));
    bgfx::destroy(buffer);
    values.reset();
    zarvex::zx3D::Context::Shutdown();
    EXPECT_TRUE(watched.expired());
}

} // namespace
