// The uniforms that batches' programs read.
#pragma once

#include <zx3D/ContextListener.h>
#include <zx3D/Owned.h>

#include <bgfx/bgfx.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zarvex::zx3DQt {

/// As the shaders name them.
enum class BatchUniform : std::uint8_t {
    Texels,
    ColorMap,
    Range,
    PointSize,
    PointRange,
    LineSize,
    LineShape,
    LineStipple,
    LineRun,
    LineMeasures,
    LineCarries,
    MeshTexture,
    MeshVertex,
    MeshSurface,
    MeshLights,
    Highlight,
    Count
};

/// Made on first use in each run of the context, for all batches. Thread: the one that calls bgfx's API.
class BatchUniforms final : private zx3D::ContextListener {
public:
    static BatchUniforms& Get();

    /// False when bgfx has too few uniforms left.
    bool Create();

    /// After `Create` returned true.
    bgfx::UniformHandle operator[](BatchUniform uniform) const {
        return m_uniforms[static_cast<std::size_t>(uniform)].Get();
    }
    void Set(BatchUniform uniform, float x, float y = 0.0f, float z = 0.0f, float w = 0.0f) const {
        float const value[] = {x, y, z, w};
        bgfx::setUniform((*this)[uniform], value, 1);
    }
    /// A colour 0xRRGGBBAA.
    void SetColor(BatchUniform uniform, std::uint32_t rgba) const {
        auto const part = [rgba](int shift) { return static_cast<float>(rgba >> shift & 0xFF) / 255.0f; };
        Set(uniform, part(24), part(16), part(8), part(0));
    }
    /// Of an array, the first ones.
    void Set(BatchUniform uniform, std::span<std::array<float, 4> const> values) const {
        bgfx::setUniform((*this)[uniform], values.data(), static_cast<std::uint16_t>(values.size()));
    }

private:
    BatchUniforms() = default;

    void OnContextStopping() override;

    std::array<zx3D::Owned<bgfx::UniformHandle>, static_cast<std::size_t>(BatchUniform::Count)> m_uniforms;
};

} // namespace zarvex::zx3DQt
