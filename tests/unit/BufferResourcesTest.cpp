// The buffers that draw operations keep.
#include "Fixtures.h"

#include "../../src/render/BufferResources.h"

#include "Recorder.h"

#include <zx3D/Vertex.h>

#include <any>
#include <memory>

#include <gmock/gmock.h>

namespace {

using zarvex::zx3D::Vertex::Pos3fColorRGBA;
using Resource = zarvex::zx3DQt::DynamicBufferResource<Pos3fColorRGBA>;

class BufferResourcesTest : public ContextFixture {};

TEST_F(BufferResourcesTest, DestroysTheIndexBufferThenTheVertexBuffer) {
    auto resource = std::make_unique<Resource>();
    resource->indexBuffer = bgfx::createDynamicIndexBuffer(3u);
    resource->vertexBuffer = bgfx::createDynamicVertexBuffer(3u, Pos3fColorRGBA::Layout());
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
    resource->vertexBuffer = bgfx::createDynamicVertexBuffer(3u, Pos3fColorRGBA::Layout());
    std::any first = std::move(resource);
    std::any second = first;
    recorder::ClearCalls();
    first.reset();
    EXPECT_TRUE(recorder::CallTexts().empty());
    second.reset();
    EXPECT_EQ(recorder::CallTexts().size(), 1u);
}

} // namespace
