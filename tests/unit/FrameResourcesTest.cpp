// The store of what draw operations keep for a frame.
#include <Fixtures.h>

#include "../../src/render/FrameResources.h"

using namespace zarvex::zx3DQt;
using testing::ElementsAre;
using testing::Key;
using testing::SizeIs;

namespace {

class FrameResourcesTest : public ContextFixture {
protected:
    template<typename V>
    std::shared_ptr<DynamicBufferResource<V>> At(std::uint8_t key, std::size_t index) const {
        return std::any_cast<std::shared_ptr<DynamicBufferResource<V>>>(m_store.at(key).at(index));
    }

    std::map<std::uint8_t, std::vector<std::any>> m_store;
};

} // namespace

TEST_F(FrameResourcesTest, ANewResourceIsEmpty) {
    auto const& resource = Append<float>(m_store, FrameResource::SpriteVertices);
    EXPECT_FALSE(bool(resource.indexBuffer));
    EXPECT_FALSE(bool(resource.vertexBuffer));
    EXPECT_EQ(resource.indices, nullptr);
    EXPECT_EQ(resource.vertices, nullptr);
}

TEST_F(FrameResourcesTest, TheKindsAreTheKeys) {
    Append<float>(m_store, FrameResource::RectangleSpriteOutput);
    Append<float>(m_store, FrameResource::PointSpriteInput);
    Append<float>(m_store, FrameResource::RectangleSpriteInput);
    Append<float>(m_store, FrameResource::SpriteVertices);
    EXPECT_THAT(m_store, ElementsAre(Key(1), Key(2), Key(3), Key(4)));
}

TEST_F(FrameResourcesTest, ResourcesOfAKindAreInTheOrderOfTheirCalls) {
    auto const& first = Append<float>(m_store, FrameResource::SpriteVertices);
    auto const& second = Append<int>(m_store, FrameResource::SpriteVertices);
    auto const& third = Append<float>(m_store, FrameResource::SpriteVertices);
    ASSERT_THAT(m_store.at(2), SizeIs(3));
    EXPECT_EQ(At<float>(2, 0).get(), &first);
    EXPECT_EQ(At<int>(2, 1).get(), &second);
    EXPECT_EQ(At<float>(2, 2).get(), &third);
}

TEST_F(FrameResourcesTest, AResourceStaysWhereItIsWhenMoreFollow) {
    auto& resource = Append<float>(m_store, FrameResource::SpriteVertices);
    resource.vertices = std::make_shared<float[]>(1, 7.0f);
    for (int i = 0; i < 100; ++i)
        Append<float>(m_store, FrameResource::SpriteVertices);
    EXPECT_EQ(resource.vertices[0], 7.0f);
    EXPECT_EQ(At<float>(2, 0).get(), &resource);
}

TEST_F(FrameResourcesTest, AResourceOfAnotherTypeThrows) {
    Append<float>(m_store, FrameResource::SpriteVertices);
    EXPECT_THROW(At<int>(2, 0), std::bad_any_cast);
}
