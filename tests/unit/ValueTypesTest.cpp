// zx3D's plain values: colours, lines, line patterns, vertices and strong aliases.
#include <zx3D/Color.h>
#include <zx3D/Line.h>
#include <zx3D/TaggedValueType.h>
#include <zx3D/TextHandles.h>
#include <zx3D/Vertex.h>
#include <zx3DQt/RenderTypes.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>

using namespace zarvex;
using zx3D::Color;

TEST(ColorTest, DefaultIsTransparentBlack) {
    EXPECT_EQ(Color(), (Color{0.0f, 0.0f, 0.0f, 0.0f}));
}

TEST(ColorTest, ChannelsFollowEachOtherRedFirst) {
    static_assert(sizeof(Color) == 4 * sizeof(float));
    EXPECT_EQ(offsetof(Color, red), 0u);
    EXPECT_EQ(offsetof(Color, green), 4u);
    EXPECT_EQ(offsetof(Color, blue), 8u);
    EXPECT_EQ(offsetof(Color, alpha), 12u);
}

TEST(ColorTest, PacksRedIntoTheMostSignificantByte) {
    EXPECT_EQ((Color{1.0f, 0.0f, 0.0f, 0.0f}.ToRGBA()), 0xFF000000u);
    EXPECT_EQ((Color{0.0f, 1.0f, 0.0f, 0.0f}.ToRGBA()), 0x00FF0000u);
    EXPECT_EQ((Color{0.0f, 0.0f, 1.0f, 0.0f}.ToRGBA()), 0x0000FF00u);
    EXPECT_EQ((Color{0.0f, 0.0f, 0.0f, 1.0f}.ToRGBA()), 0x000000FFu);
}

TEST(ColorTest, EveryByteSurvivesTheRoundTrip) {
    for (int byte = 0; byte < 256; ++byte) {
        float const channel = float(byte) * 0.003921569f;
        EXPECT_EQ((Color{channel, 0.0f, 0.0f, channel}.ToRGBA()),
                  std::uint32_t(byte) << 24 | std::uint32_t(byte));
    }
}

TEST(ColorTest, PackingRoundsToTheNearestStep) {
    Color const color{100.9f / 255.0f, 100.6f / 255.0f, 100.4f / 255.0f, 100.1f / 255.0f};
    EXPECT_EQ(color.ToRGBA(), 0x65656464u);
}

TEST(ColorTest, PackingClampsAndTakesNotANumberForZero) {
    EXPECT_EQ((Color{-1.0f, 2.0f, std::nanf(""), INFINITY}.ToRGBA()), 0x00FF00FFu);
}

TEST(LineTest, StartEndAndColourFollowEachOther) {
    static_assert(sizeof(zx3D::Line) == 10 * sizeof(float));
    EXPECT_EQ(offsetof(zx3D::Line, start), 0u);
    EXPECT_EQ(offsetof(zx3D::Line, end), 12u);
    EXPECT_EQ(offsetof(zx3D::Line, color), 24u);
}

TEST(LineStipplePatternTest, DefaultIsASolidLine) {
    zx3D::LineStipplePattern const stipple;
    EXPECT_EQ(stipple.pattern, 0xFFFF);
    EXPECT_EQ(stipple.factor, 1);
    static_assert(std::is_same_v<decltype(stipple.pattern), std::uint16_t>);
    static_assert(std::is_same_v<decltype(stipple.factor), std::uint8_t>);
    EXPECT_LT(offsetof(zx3D::LineStipplePattern, pattern), offsetof(zx3D::LineStipplePattern, factor));
}

TEST(VertexTest, Pos3fColorRGBAIsPositionThenColour) {
    zx3D::Vertex::Pos3fColorRGBA const vertex({1.0f, 2.0f, 3.0f}, {0.1f, 0.2f, 0.3f, 0.4f});
    EXPECT_EQ(vertex.position.y, 2.0f);
    EXPECT_EQ(vertex.color, (Color{0.1f, 0.2f, 0.3f, 0.4f}));

    bgfx::VertexLayout const& layout = zx3D::Vertex::Pos3fColorRGBA::Layout();
    EXPECT_EQ(layout.getStride(), sizeof(vertex));
    EXPECT_EQ(layout.getOffset(bgfx::Attrib::Position), 0);
    EXPECT_EQ(layout.getOffset(bgfx::Attrib::Color0), 12);
    EXPECT_FALSE(layout.has(bgfx::Attrib::Normal));
    EXPECT_EQ(&layout, &zx3D::Vertex::Pos3fColorRGBA::Layout());
}

TEST(VertexTest, DefaultVertexIsZero) {
    zx3D::Vertex::Pos3fColorRGBA const vertex;
    EXPECT_EQ(vertex.position.x, 0.0f);
    EXPECT_EQ(vertex.position.y, 0.0f);
    EXPECT_EQ(vertex.position.z, 0.0f);
    EXPECT_EQ(vertex.color, Color());
}

TEST(VertexTest, Pos3fNormal3fColorRGBAIsPositionNormalColour) {
    bgfx::VertexLayout const& layout = zx3D::Vertex::Pos3fNormal3fColorRGBA::Layout();
    EXPECT_EQ(layout.getStride(), sizeof(zx3D::Vertex::Pos3fNormal3fColorRGBA));
    EXPECT_EQ(layout.getOffset(bgfx::Attrib::Position), 0);
    EXPECT_EQ(layout.getOffset(bgfx::Attrib::Normal), 12);
    EXPECT_EQ(layout.getOffset(bgfx::Attrib::Color0), 24);
}

TEST(VertexTest, AttributesAreFloats) {
    std::uint8_t count = 0;
    bgfx::AttribType::Enum type = bgfx::AttribType::Count;
    bool normalized = true;
    bool asInt = true;
    zx3D::Vertex::Pos3fColorRGBA::Layout().decode(bgfx::Attrib::Color0, count, type, normalized, asInt);
    EXPECT_EQ(count, 4);
    EXPECT_EQ(type, bgfx::AttribType::Float);
    zx3D::Vertex::Pos3fColorRGBA::Layout().decode(bgfx::Attrib::Position, count, type, normalized, asInt);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(type, bgfx::AttribType::Float);
}

TEST(TaggedValueTypeTest, GivesTheValueBack) {
    std::uint32_t const id = zx3DQt::ModelTransformCacheId{7};
    std::uint64_t const state = zx3DQt::BGFXRenderState{0x400000002FULL};
    EXPECT_EQ(id, 7u);
    EXPECT_EQ(state, 0x400000002FULL);
}

TEST(TaggedValueTypeTest, IsAsLargeAsItsValue) {
    static_assert(sizeof(zx3DQt::ModelTransformCacheId) == 4);
    static_assert(sizeof(zx3DQt::BGFXRenderState) == 8);
    static_assert(
        !std::is_same_v<zx3D::TaggedValueType<int, struct A>, zx3D::TaggedValueType<int, struct B>>);
    SUCCEED();
}

TEST(TextHandlesTest, DefaultIsInvalid) {
    EXPECT_EQ(zx3D::FontHandle().idx, 65535);
    EXPECT_EQ(zx3D::TextBufferHandle().idx, 65535);
}
