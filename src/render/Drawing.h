// What is behind the renderer: its programs and uniforms, the buffers of a frame, and how things are drawn.
#pragma once

#include "BlockPool.h"
#include "DrawCall.h"
#include "FrameCounter.h"
#include "FrameResources.h"
#include "LineFading.h"
#include "Programs.h"
#include "UploadBudget.h"

#include <zx3D/ContextListener.h>
#include <zx3D/DataSpan.h>
#include <zx3D/FrameBuffer.h>
#include <zx3D/Vertex.h>

#include <bgfx/bgfx.h>

#include <QMatrix4x4>
#include <QVector3D>

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>

namespace zarvex::zx3DQt {

/// One renderer's inside. Its lifetime, thread and errors are the renderer's.
class Drawing final : private zx3D::ContextListener {
public:
    using Lines = zx3D::DataSpan<zx3D::Line const>;
    using Points = zx3D::DataSpan<zx3D::Vertex::Pos3fColorRGBA const>;
    using Stipple = std::optional<zx3D::LineStipplePattern>;
    using Transform = std::optional<ModelTransformCacheId>;

    /// `renderer` is who the log lines speak of.
    explicit Drawing(void const* renderer);
    ~Drawing();

    void Initialize();
    void CleanUp();
    bool StartFrame(zx3D::FrameBuffer& frameBuffer);
    ModelTransformCacheId SetModelTransform(QMatrix4x4 const& matrix);
    QMatrix4x4 GetModelTransform() const { return ModelTransform(m_modelTransformId); }

    bgfx::ProgramHandle GetProgram(Program program) const { return m_programs[IndexOf(program)]; }
    bgfx::UniformHandle GetUniform(Uniform uniform) const { return m_uniforms[IndexOf(uniform)]; }

    FrameCounter& GetCounter() { return m_counter; }
    /// Of the frame that was started last, in all renderers.
    std::uint64_t GetFrameNumber() const { return m_frameNumber; }
    UploadBudget& GetUploadBudget() { return m_uploadBudget; }

    // What each uniform is packed from, for the next submission.
    void UpdateLineStippleUniform(zx3D::LineStipplePattern const& stipple) const {
        SetVec4(Uniform::LineStipple, static_cast<float>(stipple.pattern),
                static_cast<float>(stipple.factor));
    }
    void UpdateLineStyleUniform(zx3D::LineStyle const& style) const {
        SetVec4(Uniform::LineStyle, style.dashLength, style.gapLength);
    }
    void UpdatePointSpriteUniform(std::uint32_t pointCount, std::uint32_t size) const {
        SetVec4(Uniform::PointSprite, static_cast<float>(pointCount), static_cast<float>(size));
    }
    void UpdateRectangleSpriteUniform(std::uint32_t lineCount, std::uint32_t width) const {
        SetVec4(Uniform::RectangleSprite, static_cast<float>(lineCount), static_cast<float>(width));
    }
    void UpdateViewportUniform(BGFXViewContext const& view) const {
        QRect const& viewport = view.GetViewport();
        SetVec4(Uniform::Viewport, static_cast<float>(viewport.width()),
                static_cast<float>(viewport.height()));
    }
    void UpdateViewPositionUniform(QVector3D const& position) const {
        SetVec4(Uniform::ViewPosition, position.x(), position.y(), position.z(), 1.0f);
    }
    void UpdateDepthOffsetBiasUniform(float offset, float bias) const {
        SetVec4(Uniform::DepthOffsetBias, offset, bias);
    }

    /// The state with what the view's frame buffer needs. Several samples: OpenGL smooths the edges of those
    /// draws only that ask for it. Alpha: it is blended otherwise than the colours.
    static BGFXRenderState ForView(bgfx::ViewId view, BGFXRenderState state) {
        BGFXRenderState const blended(zx3D::FrameBuffer::BlendedState(view, state.GetValue()));
        return zx3D::FrameBuffer::IsMultisampled(view) ? blended | BGFX_STATE_MSAA : blended;
    }

    /// A call whose absent arguments have the renderer's and the operation's own values.
    DrawCall MakeCall(BGFXViewContext const& view, Transform modelTransform, BGFXRenderState state,
                      Stipple const& stipple = std::nullopt) const {
        return {view, modelTransform ? modelTransform->GetValue() : m_modelTransformId, ForView(view, state),
                stipple.value_or(zx3D::LineStipplePattern())};
    }

    /// Lines of a width in whole pixels that fade; without fading where that cannot be.
    void DrawFadingLines(DrawCall call, Lines lines, std::uint16_t width, DistanceFade const& fade);

    /// Inline where it is called: what one line costs would show every call in between.
    inline void DrawBasicLines(DrawCall const& call, Lines lines);
    void DrawBasicPoints(DrawCall const& call, Points points);

    template<typename V>
    void DrawTriangles(DrawCall const& call, zx3D::DataSpan<V const> vertices,
                       zx3D::DataSpan<std::uint16_t const> indices, bgfx::ProgramHandle program);

    // Sprites: expanded to triangles by a compute shader where there is compute, otherwise here.
    void DrawPointSprites(DrawCall const& call, Points points, std::uint16_t size);
    void DrawPointSpritesCPU(DrawCall const& call, Points points, std::uint16_t size);
    void DrawPointSpritesGPU(DrawCall const& call, Points points, std::uint16_t size);
    void DrawRectangleSprites(DrawCall const& call, Lines lines, std::uint16_t width);
    void DrawRectangleSpritesCPU(DrawCall const& call, Lines lines, std::uint16_t width);
    void DrawRectangleSpritesGPU(DrawCall const& call, Lines lines, std::uint16_t width);

    void DrawFullscreenTexture(std::uint16_t viewId, bgfx::TextureHandle texture);

private:
    void OnContextStopping() override;

    void InitUniforms();
    void InitTextureSamplers();
    void InitPrograms();

    void SetVec4(Uniform uniform, float x, float y, float z = 0.0f, float w = 0.0f) const {
        float const vec4[] = {x, y, z, w};
        bgfx::setUniform(GetUniform(uniform), vec4, 1);
    }
    void SetTransform(DrawCall const& call) const { bgfx::setTransform(call.transform, 1); }
    /// The matrix of an id; the identity where there is none.
    QMatrix4x4 ModelTransform(std::uint32_t id) const;
    QMatrix4x4 ModelViewProjection(DrawCall const& call) const;

    /// Counts a call. False when it has no program: bgfx would draw with whatever it finds.
    bool Begin(bgfx::ProgramHandle program) {
        m_counter.AddCall();
        if (bgfx::isValid(program))
            return true;
        m_counter.LeaveOut(LeftOutReason::NoProgram);
        return false;
    }

    /// The program that draws a call's lines.
    bgfx::ProgramHandle LineProgram(DrawCall const& call, Program program) const {
        return call.fade != nullptr ? m_lineFading.GetProgram(program) : GetProgram(program);
    }
    void UpdateFadeUniforms(DrawCall const& call) const {
        if (call.fade != nullptr)
            m_lineFading.SetUniforms(*call.fade);
    }

    bool HasUniforms() const;
    void DestroyUniforms();
    void ReleaseFrameResources();

    /// Whether a call may have so many buffers of its own.
    static bool MayTakeBuffers(std::uint32_t count);
    void CountBuffer();
    /// Appends a resource with a buffer of so many vertices. Null when bgfx has none.
    template<typename V>
    DynamicBufferResource<V>* CreateBuffer(FrameResource kind, std::uint32_t count,
                                           bgfx::VertexLayout const& layout, std::uint16_t flags);

    // `Kind` is one of the two kinds of sprites.
    template<typename Kind>
    void DrawSprites(DrawCall const& call, typename Kind::Sprites sprites, std::uint16_t size);
    template<typename Kind>
    void DrawSpritesCPU(DrawCall const& call, typename Kind::Sprites sprites, std::uint16_t size);
    template<typename Kind>
    void DrawSpritesGPU(DrawCall const& call, typename Kind::Sprites sprites, std::uint16_t size);
    template<typename Kind>
    void DrawSpritesWithoutBuffers(DrawCall const& call, typename Kind::Sprites sprites, std::uint16_t size);
    template<typename Kind>
    void UpdateSpriteUniforms(DrawCall const& call, std::uint32_t count, std::uint16_t size) const;
    template<typename Kind, typename VertexBuffer>
    void SubmitSprites(DrawCall const& call, std::uint32_t count, std::uint16_t size, VertexBuffer vertices,
                       std::uint64_t bytes);

    void const* m_renderer;
    bool m_initialized = false;
    std::uint32_t m_modelTransformId = 0;
    // Handles that other renderers share: bgfx gives a uniform of the same name to all who ask for it, and
    // the programs are the factory's.
    std::array<bgfx::UniformHandle, IndexOf(Uniform::Count)> m_uniforms;
    std::array<bgfx::ProgramHandle, IndexOf(Program::Count)> m_programs;
    LineFading m_lineFading;
    FrameCounter m_counter;
    std::uint64_t m_frameNumber = 0;
    UploadBudget m_uploadBudget;
    zx3D::OncePerCause m_noUniforms;
    std::shared_ptr<BlockPool> m_pool = std::make_shared<BlockPool>();
    std::uint32_t m_frameBuffers = 0; ///< buffers in the store of the frame
    ResourceStore m_frameResources;
    ResourceStore m_persistentResources;
    std::map<std::uint32_t, QMatrix4x4> m_modelTransforms;
};

} // namespace zarvex::zx3DQt
