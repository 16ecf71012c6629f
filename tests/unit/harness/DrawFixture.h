// What the tests of draw operations share: a renderer that is ready, a view, and a look at what was kept.
#pragma once

#include "Fixtures.h"

#include "../../../src/render/FrameResources.h"

#include <zx3DQt/BGFXRenderer.h>

#include <any>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The library, an initialised renderer, and a view of id 5 on 100 × 50 pixels that do not start at (0, 0).
/// The calls of the start are not in the records.
class DrawFixture : public LibraryFixture {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Starts bgfx and the renderer again, with so much transient space, bytes.
    void RestartWithTransientSpace(std::uint32_t vertexBytes, std::uint32_t indexBytes);

    /// Takes compute shaders away, or the whole of the capabilities.
    static void DisableCompute();
    static void DisableCaps();

    /// Starts a frame of the given size.
    bool StartFrame(std::uint16_t width = 100, std::uint16_t height = 50);

    /// The texts of programs by the names of their shaders: "program#3".
    static std::string Program(char const* vertexShader, char const* fragmentShader);
    static std::string Program(char const* computeShader);

    /// The one draw or dispatch that was recorded; or the one of two that draws.
    static recorder::Draw TheDraw();

    /// What the draw operations kept for this frame.
    using Store = std::map<std::uint8_t, std::vector<std::any>>;
    Store const& Kept() const;

    /// Which kinds were kept, in order, each as often as there are resources of it.
    std::vector<zarvex::zx3DQt::FrameResource> KeptKinds() const;

    /// A kept resource. Throws where there is none of its kind with this index and type.
    template<typename V>
    std::shared_ptr<zarvex::zx3DQt::DynamicBufferResource<V>> Kept(zarvex::zx3DQt::FrameResource kind,
                                                                   std::size_t index = 0) const {
        using Resource = zarvex::zx3DQt::DynamicBufferResource<V>;
        return std::any_cast<std::shared_ptr<Resource>>(Kept().at(static_cast<std::uint8_t>(kind)).at(index));
    }

    /// The current model matrices by their ids; entries of earlier frames stay.
    std::map<std::uint32_t, QMatrix4x4> const& ModelTransforms() const;

    std::optional<zarvex::zx3DQt::BGFXRenderer> m_renderer;
    zarvex::zx3DQt::BGFXViewContext m_view{5};

private:
    std::optional<zarvex::zx3D::FrameBuffer> m_frameBuffer;
};

QMatrix4x4 Translation(float x, float y, float z);

/// The sixteen floats of a matrix as bgfx gets them.
std::vector<float> Floats(QMatrix4x4 const& matrix);
