// Batches drawn with numbers in place of colours.
#pragma once

#include <zx3DQt/BGFXViewContext.h>
#include <zx3DQt/PickHit.h>
#include <zx3DQt/RenderTypes.h>

#include <bgfx/bgfx.h>

#include <QMatrix4x4>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace zarvex::zx3DQt {

/// In the order in which thin ones come first.
enum class PickKind : std::uint8_t { Points, Lines, Surfaces };

/// One addition to a scene.
struct PickPart {
    void const* batch;
    PickKind kind;
    WorldPosition origin; ///< of the batch
    QMatrix4x4 transform;
    /// Writes which element the drawn one with this index is. False when that is gone.
    std::function<bool(std::uint64_t drawn, PickElement& element)> resolve;
};

/// What was drawn, and the numbers that it has in the pixels.
class IdPass {
public:
    /// `view` shows what is drawn; `number` is the uniform that tells draw calls apart.
    IdPass(BGFXViewContext const& view, bgfx::UniformHandle number) : m_view(view), m_number(number) {}

    BGFXViewContext const& GetView() const { return m_view; }

    /// What is submitted from here on belongs to this.
    void Begin(PickPart part) { m_parts.push_back(std::move(part)); }

    /// Submits with the depth test and culling of a state for pictures. Elements and instances count from
    /// these on.
    void Submit(bgfx::ProgramHandle program, BGFXRenderState state, std::uint64_t first,
                std::uint64_t firstInstance = 0) {
        constexpr std::uint64_t kept =
            BGFX_STATE_WRITE_Z | BGFX_STATE_DEPTH_TEST_MASK | BGFX_STATE_CULL_MASK | BGFX_STATE_PT_MASK;
        m_draws.push_back({m_parts.size() - 1, first, firstInstance});
        float const number[] = {static_cast<float>(m_draws.size()), 0.0f, 0.0f, 0.0f};
        bgfx::setUniform(m_number, number, 1);
        bgfx::setState((state.GetValue() & kept) | BGFX_STATE_WRITE_RGB | BGFX_STATE_WRITE_A);
        bgfx::submit(m_view, program, 0, BGFX_DISCARD_ALL);
    }

    /// A batch could not be drawn: bgfx has no program, uniform or buffer left.
    void LeaveOut() { m_hasLeftOut = true; }
    bool HasLeftOut() const { return m_hasLeftOut; }

    /// What a pixel shows.
    struct Found {
        PickElement element;
        PickPart const* part;
    };
    /// What the shaders write of an element: its index in a draw call, which one, and the instance in it.
    using Numbers = std::array<float, 3>;
    /// Empty for a pixel of nothing, and for what is gone.
    std::optional<Found> Find(Numbers const& numbers) const;

private:
    struct Draw {
        std::size_t part;
        std::uint64_t first;
        std::uint64_t firstInstance;
    };

    BGFXViewContext m_view;
    bgfx::UniformHandle m_number;
    std::vector<PickPart> m_parts;
    std::vector<Draw> m_draws;
    bool m_hasLeftOut = false;
};

inline std::optional<IdPass::Found> IdPass::Find(Numbers const& numbers) const {
    auto const [index, draw, instance] = numbers;
    if (!(draw >= 1.0f) || draw > static_cast<float>(m_draws.size()))
        return std::nullopt;
    Draw const& call = m_draws[static_cast<std::size_t>(draw) - 1];
    PickPart const& part = m_parts[call.part];
    PickElement element{.batch = part.batch,
                        .addition = static_cast<std::uint32_t>(call.part),
                        .instance = call.firstInstance + static_cast<std::uint64_t>(instance)};
    if (!part.resolve(call.first + static_cast<std::uint64_t>(index), element))
        return std::nullopt;
    return Found{element, &part};
}

} // namespace zarvex::zx3DQt
