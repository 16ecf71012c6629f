// What an id or a state may stand for, and what it may not: checked by the compiler.
#include <zx3DQt/BGFXRenderer.h>

#include <gtest/gtest.h>

#include <concepts>
#include <cstdint>
#include <optional>
#include <type_traits>
#include <vector>

using namespace zarvex;
using namespace zarvex::zx3DQt;

namespace {

using Lines = zx3D::DataSpan<zx3D::Line const>;
using Points = zx3D::DataSpan<zx3D::Vertex::Pos3fColorRGBA const>;

template<typename... Arguments>
concept DrawsLines = requires(BGFXRenderer const& renderer, BGFXViewContext const& view, Lines lines,
                              Arguments... arguments) { renderer.DrawLines(view, lines, arguments...); };
template<typename... Arguments>
concept DrawsPoints = requires(BGFXRenderer const& renderer, BGFXViewContext const& view, Points points,
                               Arguments... arguments) { renderer.DrawPoints(view, points, arguments...); };

template<typename Alias, typename Value>
constexpr bool kConvertsToNothingBut =
    std::convertible_to<Alias, Value> && std::convertible_to<Alias, std::optional<Value>> &&
    !std::convertible_to<Alias, float> && !std::convertible_to<Alias, int> &&
    !std::convertible_to<Alias, bool> && !std::convertible_to<Alias, std::uint16_t> &&
    !std::convertible_to<Alias, std::optional<float>> &&
    !std::convertible_to<Alias, std::optional<std::uint16_t>>;

} // namespace

TEST(RenderTypesTest, AStateIsNeitherAWidthNorASize) {
    static_assert(DrawsLines<float>);
    static_assert(DrawsLines<float, ModelTransformCacheId>);
    static_assert(!DrawsLines<BGFXRenderState>);
    static_assert(!DrawsLines<ModelTransformCacheId>);
    static_assert(!DrawsLines<float, BGFXRenderState>);
    static_assert(DrawsPoints<std::uint16_t>);
    static_assert(DrawsPoints<std::uint16_t, ModelTransformCacheId, BGFXRenderState>);
    static_assert(!DrawsPoints<BGFXRenderState>);
    static_assert(!DrawsPoints<ModelTransformCacheId>);
    static_assert(!DrawsPoints<std::uint16_t, ModelTransformCacheId, ModelTransformCacheId>);
}

TEST(RenderTypesTest, AnAliasConvertsToItsValueAlone) {
    static_assert(kConvertsToNothingBut<ModelTransformCacheId, std::uint32_t>);
    static_assert(kConvertsToNothingBut<BGFXRenderState, std::uint64_t>);
    static_assert(!std::convertible_to<BGFXRenderState, std::uint32_t>);
    static_assert(!std::convertible_to<ModelTransformCacheId, std::uint64_t>);
    static_assert(!std::convertible_to<BGFXRenderState, ModelTransformCacheId>);
    static_assert(!std::convertible_to<std::uint64_t, BGFXRenderState>, "made explicitly");
    static_assert(std::constructible_from<BGFXRenderState, std::uint64_t>);
}

TEST(RenderTypesTest, TheValueComesBack) {
    constexpr ModelTransformCacheId id{7};
    EXPECT_EQ(id.GetValue(), 7u);
    EXPECT_EQ(std::uint32_t(id), 7u);
    std::uint64_t const state = BGFXRenderer::STATE_OPAQUE;
    EXPECT_EQ(state, 0x000000400000002FULL);
}

TEST(RenderTypesTest, FlagsMakeAnotherState) {
    constexpr auto blended = BGFXRenderer::STATE_OPAQUE | BGFX_STATE_BLEND_ALPHA;
    static_assert(std::same_as<decltype(blended), BGFXRenderState const>);
    EXPECT_EQ(blended.GetValue(), BGFXRenderer::STATE_TRANSPARENT.GetValue());
    EXPECT_EQ((BGFXRenderer::STATE_OPAQUE | BGFXRenderer::STATE_LINES).GetValue(),
              BGFXRenderer::STATE_LINES.GetValue());
}
