// Lines on the GPU: what is stored of them, and how they are drawn.
#include <zx3DQt/LineBatch.h>

#include "../frame/Logging.h"
#include "../picking/IdPass.h"
#include "../picking/PickCollection.h"
#include "../render/Drawing.h"
#include "BatchUniforms.h"
#include "LineRun.h"
#include "LineTechnique.h"
#include "ModelMatrix.h"
#include "PieceBounds.h"
#include "PolylineTexels.h"
#include "QuadIndices.h"
#include "TexelStore.h"
#include "VertexCount.h"
#include "WorldPlace.h"

#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/Picker.h>

#include <zx3D/Context.h>
#include <zx3D/ProgramFactory.h>

#include <cmath>
#include <cstring>

namespace zarvex::zx3DQt {

namespace {

static_assert(sizeof(LineVertex) == sizeof(Texel) && sizeof(LineSegment) == 2 * sizeof(Texel));

/// A segment's two texels come together. A polyline's segment is drawn with the vertices around it, of which
/// one may be a repetition or stand behind a gap that says so.
constexpr TexelGrouping kGrouping{.groupSize = 2, .before = 2, .after = 4};

/// What is needed of the texels after the one that a polyline's segment begins with.
constexpr std::uint64_t kTexelsAhead = 3;

/// How far lines reach beyond their vertices: in NDC, and in the boxes' units, which a model may scale.
ViewVolume VolumeOf(BGFXViewContext const& view, QMatrix4x4 const& model, LineStyle const& style) {
    QRect const& viewport = view.GetViewport();
    LineReach const reach = ReachOf(style);
    float const scale = std::cbrt(std::abs(static_cast<float>(model.determinant())));
    return {view.GetProjectionMatrix() * view.GetViewMatrix() * model,
            2.0f * reach.pixels / static_cast<float>(viewport.width()),
            2.0f * reach.pixels / static_cast<float>(viewport.height()),
            reach.world > 0.0f ? reach.world / scale : 0.0f};
}

void WarnOfRefused(std::uint64_t refused, std::uint64_t count, char const* what) {
    if (refused > 0)
        LogWarning("line-batch.not-finite", [&] {
            return QString("%1 of %2 %3 are not drawn: their positions are not finite")
                .arg(refused)
                .arg(count)
                .arg(what);
        });
}

void WarnOfRange(std::uint64_t first, std::uint64_t count, char const* what, std::uint64_t available) {
    LogWarning("line-batch.range", [&] {
        return QString("An update of %1 %2 from %3 on is refused: there are %4")
            .arg(count)
            .arg(what)
            .arg(first)
            .arg(available);
    });
}

bool IsWithin(std::uint64_t first, std::uint64_t count, std::uint64_t available) {
    return first <= available && count <= available - first;
}

} // namespace

class LineBatch::Data {
public:
    explicit Data(bool keepsData) : texels(keepsData, kGrouping) {}

    void Append(zx3D::DataSpan<LineSegment const> segments);
    void Append(zx3D::DataSpan<Polyline const> polylines);
    void Update(std::uint64_t first, zx3D::DataSpan<LineSegment const> segments);
    void Update(std::uint64_t polyline, std::uint64_t first, zx3D::DataSpan<LineVertex const> vertices);

    void Clear() {
        texels.Clear();
        bounds.Clear();
        places.Clear();
        run.Clear();
    }

    std::uint64_t GetCount() const {
        if (kind == LineKind::Segments)
            return texels.GetCount() / 2;
        return texels.GetCount() == 0 ? 0 : places.GetCount();
    }
    std::uint64_t GetUploadedCount() const {
        if (kind == LineKind::Segments)
            return texels.GetUploadedCount() / 2;
        return texels.GetCount() == 0 ? 0 : places.CountWithin(texels.GetUploadedCount(), texels.GetCount());
    }

    void Draw(Drawing& drawing, BGFXViewContext const& view, LineStyle const& style,
              QMatrix4x4 const& transform);
    void DrawNumbers(IdPass& ids, LineStyle const& style, QMatrix4x4 const& transform);
    void Collect(PickCollection& collection) const;
    /// Which line begins at a texel, or is the one with an index among segments. False when it is gone.
    bool Resolve(std::uint64_t drawn, PickElement& element) const;

    WorldPosition origin;
    TexelStore texels;
    PieceBounds bounds; ///< of segments, or of the segments that begin at a texel
    PolylinePlaces places;
    LineRun run;
    std::shared_ptr<QuadIndices> quads; ///< once they are wide
    LineKind kind = LineKind::Segments;
    zx3D::OncePerCause lost;

private:
    /// Whether lines of this kind may be added or updated.
    bool Takes(LineKind which, char const* operation) const;
    /// Before the first lines are added: what a stopped context took along is nowhere any more.
    void Begin(LineKind which);
    /// Counts a segment with its ends in its box. False when it is refused.
    bool AddBounds(std::uint64_t index, LineSegment const& segment);
    /// Of a vertex: part of the segment that begins here, and of the one before. False when it is refused.
    bool AddBounds(std::uint64_t texel, LineVertex const& vertex);
    void Upload(Drawing& drawing);
    template<typename ForEachRun, typename Submit>
    bool DrawWithoutColors(BGFXViewContext const& view, LineStyle const& style, QMatrix4x4 const& model,
                           char const* fragmentShader, ForEachRun forEachRun, Submit submit);
    void DrawHighlight(FrameCounter& counter, BGFXViewContext const& view, LineStyle const& style,
                       QMatrix4x4 const& model);
    /// Lines, from their first, of which everything is on the GPU.
    std::uint64_t CountDrawn() const;
};

bool LineBatch::Data::Takes(LineKind which, char const* operation) const {
    if (texels.GetCount() == 0 || kind == which)
        return true;
    LogWarning("line-batch.kind", [&] {
        bool const hasSegments = kind == LineKind::Segments;
        return QString("%1 of %2 is refused: the batch has %3")
            .arg(operation, hasSegments ? "polylines" : "segments", hasSegments ? "segments" : "polylines");
    });
    return false;
}

void LineBatch::Data::Begin(LineKind which) {
    if (texels.GetCount() > 0)
        return;
    bounds.Clear();
    places.Clear();
    kind = which;
}

bool LineBatch::Data::AddBounds(std::uint64_t index, LineSegment const& segment) {
    bx::Vec3 const& start = segment.start.position;
    bx::Vec3 const& end = segment.end.position;
    if (!IsFinite(start) || !IsFinite(end))
        return false;
    Bounds& box = bounds.At(index);
    box.Add(start.x, start.y, start.z);
    box.Add(end.x, end.y, end.z);
    return true;
}

bool LineBatch::Data::AddBounds(std::uint64_t texel, LineVertex const& vertex) {
    bx::Vec3 const& position = vertex.position;
    if (!IsFinite(position))
        return false;
    bounds.At(texel).Add(position.x, position.y, position.z);
    bounds.At(texel - 1).Add(position.x, position.y, position.z);
    return true;
}

void LineBatch::Data::Append(zx3D::DataSpan<LineSegment const> segments) {
    if (segments.IsEmpty() || !Takes(LineKind::Segments, "Append"))
        return;
    Begin(LineKind::Segments);
    std::uint64_t const first = texels.GetCount() / 2;
    bounds.At(first + segments.count - 1); // what may fail before anything is changed
    std::span<Texel> const added = texels.Append(2 * segments.count);
    std::memcpy(added.data(), segments.data, added.size_bytes());
    std::uint64_t refused = 0;
    for (std::uint64_t i = 0; i < segments.count; ++i) {
        if (AddBounds(first + i, segments.data[i]))
            continue;
        added[2 * i] = added[2 * i + 1] = kGap;
        ++refused;
    }
    WarnOfRefused(refused, segments.count, "segments");
}

void LineBatch::Data::Append(zx3D::DataSpan<Polyline const> polylines) {
    if (polylines.IsEmpty() || !Takes(LineKind::Polylines, "Append"))
        return;
    Begin(LineKind::Polylines);
    std::uint64_t const before = texels.GetCount();
    std::uint64_t count = before == 0 ? 1 : 0;
    std::uint64_t vertices = 0;
    for (std::uint64_t i = 0; i < polylines.count; ++i) {
        count += PolylinePlaces::CountTexels(polylines.data[i]);
        vertices += PolylinePlaces::CountVertices(polylines.data[i]);
    }
    places.Reserve(polylines.count); // what may fail before anything is changed
    bounds.At(before + count - 1);
    std::span<Texel> const added = texels.Append(count);
    Texel* to = added.data();
    if (before == 0)
        *to++ = kGap;
    std::uint64_t refused = 0;
    for (std::uint64_t i = 0; i < polylines.count; ++i) {
        Polyline const& polyline = polylines.data[i];
        to = places.Add(polyline, before + static_cast<std::uint64_t>(to - added.data()), to);
        PolylinePlace const place =
            places.At(places.GetCount() - 1, before + static_cast<std::uint64_t>(to - added.data()));
        for (std::uint64_t v = 0; v < place.vertexCount; ++v) {
            if (!AddBounds(place.firstVertex + v, polyline.vertices.data[v]))
                ++refused;
        }
        PolylinePlaces::ForEachRepeated(place, [&](std::uint64_t texel, std::uint64_t vertex) {
            AddBounds(texel, polyline.vertices.data[vertex]);
        });
    }
    WarnOfRefused(refused, vertices, "vertices");
}

void LineBatch::Data::Update(std::uint64_t first, zx3D::DataSpan<LineSegment const> segments) {
    if (segments.IsEmpty() || !Takes(LineKind::Segments, "Update"))
        return;
    std::uint64_t const available = texels.GetCount() / 2;
    if (!IsWithin(first, segments.count, available))
        return WarnOfRange(first, segments.count, "segments", available);
    std::vector<Texel> replaced(2 * segments.count);
    std::memcpy(replaced.data(), segments.data, replaced.size() * sizeof(Texel));
    std::uint64_t refused = 0;
    for (std::uint64_t i = 0; i < segments.count; ++i) {
        if (AddBounds(first + i, segments.data[i]))
            continue;
        replaced[2 * i] = replaced[2 * i + 1] = kGap;
        ++refused;
    }
    texels.Update(2 * first, replaced);
    WarnOfRefused(refused, segments.count, "segments");
}

void LineBatch::Data::Update(std::uint64_t polyline, std::uint64_t first,
                             zx3D::DataSpan<LineVertex const> vertices) {
    if (vertices.IsEmpty() || !Takes(LineKind::Polylines, "Update"))
        return;
    if (polyline >= GetCount())
        return WarnOfRange(polyline, 1, "polylines", GetCount());
    PolylinePlace const place = places.At(polyline, texels.GetCount());
    if (!IsWithin(first, vertices.count, place.vertexCount))
        return WarnOfRange(first, vertices.count, "vertices", place.vertexCount);
    std::vector<Texel> replaced(vertices.count);
    std::uint64_t refused = 0;
    for (std::uint64_t i = 0; i < vertices.count; ++i) {
        replaced[i] = TexelOf(vertices.data[i]);
        if (!AddBounds(place.firstVertex + first + i, vertices.data[i]))
            ++refused;
    }
    texels.Update(place.firstVertex + first, replaced);
    PolylinePlaces::ForEachRepeated(place, [&](std::uint64_t texel, std::uint64_t vertex) {
        if (vertex < first || vertex - first >= vertices.count)
            return;
        AddBounds(texel, vertices.data[vertex - first]);
        texels.Update(texel, {&replaced[vertex - first], 1});
    });
    WarnOfRefused(refused, vertices.count, "vertices");
}

void LineBatch::Data::Upload(Drawing& drawing) {
    std::uint64_t const before = texels.GetUploadedCount();
    if (!texels.Upload(drawing.GetUploadBudget().GetLeft()))
        drawing.GetCounter().LeaveOut(LeftOutReason::NoBuffer);
    std::uint64_t const bytes = (texels.GetUploadedCount() - before) * sizeof(Texel);
    drawing.GetUploadBudget().Take(bytes);
    drawing.GetCounter().AddPrimitives(0, bytes);
}

std::uint64_t LineBatch::Data::CountDrawn() const {
    std::uint64_t const uploaded = texels.GetUploadedCount();
    if (kind == LineKind::Segments)
        return uploaded / 2;
    std::uint64_t const ahead = uploaded < texels.GetCount() ? kTexelsAhead : 1; // a gap at the very end
    return uploaded > ahead ? uploaded - ahead : 0;
}

void LineBatch::Data::Draw(Drawing& drawing, BGFXViewContext const& view, LineStyle const& style,
                           QMatrix4x4 const& transform) {
    FrameCounter& counter = drawing.GetCounter();
    counter.AddCall();
    Upload(drawing);

    QMatrix4x4 const model = ModelMatrix(origin, view.GetOrigin(), transform);
    ViewVolume const volume = VolumeOf(view, model, style);
    LineTechnique const technique(style, kind, view, bounds.IsInFront(volume));
    auto const program =
        zx3D::ProgramFactory::Get().CreateProgram(technique.GetVertexShader(), technique.GetFragmentShader());
    BatchUniforms& uniforms = BatchUniforms::Get();
    if (!program || !uniforms.Create())
        return counter.LeaveOut(LeftOutReason::NoProgram);

    std::uint32_t const modelId = bgfx::setTransform(model.constData(), 1);
    if (technique.RunsOn() &&
        !run.Measure(view, drawing.GetFrameNumber(), {texels, CountDrawn(), modelId, PatternLengthOf(style)}))
        return counter.LeaveOut(LeftOutReason::NoBuffer);
    // All at once where they are thin.
    auto const most = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(CountDrawn(), technique.IsThin() ? UINT32_MAX : QuadIndices::kMaxQuads));
    if (!technique.IsThin() && quads == nullptr)
        quads = QuadIndices::Share();
    if (!technique.IsThin() && !quads->Fit(most))
        return counter.LeaveOut(LeftOutReason::NoBuffer);
    std::uint32_t const texelsPerLine = kind == LineKind::Segments ? 2 : 1;
    auto const submitSome = [&](bgfx::TextureHandle texture, std::uint32_t first, std::uint32_t lines,
                                std::uint32_t rowLength) {
        bgfx::setTransform(modelId, 1);
        bgfx::setState(technique.GetState());
        if (technique.IsThin())
            SetVertexCount(2 * lines);
        else
            quads->Set(lines);
        bgfx::setTexture(0, uniforms[BatchUniform::Texels], texture);
        uniforms.Set(BatchUniform::Range, static_cast<float>(first), static_cast<float>(rowLength));
        technique.SetUniforms(uniforms, style, view);
        if (technique.RunsOn())
            run.Bind(texture, uniforms);
        bgfx::submit(view, *program, 0, BGFX_DISCARD_ALL);
        counter.AddPrimitives(lines, 0);
    };
    auto const submit = [&](bgfx::TextureHandle texture, std::uint32_t first, std::uint32_t count,
                            std::uint32_t rowLength) {
        std::uint32_t const lines = count / texelsPerLine;
        for (std::uint32_t done = 0; done < lines; done += most)
            submitSome(texture, first + done * texelsPerLine, std::min(lines - done, most), rowLength);
    };
    bounds.ForEachVisible(volume, CountDrawn(), [&](std::uint64_t first, std::uint64_t count) {
        texels.ForEachTexture(first * texelsPerLine, count * texelsPerLine, submit);
    });
    DrawHighlight(counter, view, style, model);
}

/// `forEachRun(draw)` calls `draw(first, count)` for the lines that are to be drawn, which are numbered as
/// their boxes; `submit(program, state, first)` ends each submission. False when bgfx has no program, uniform
/// or buffer left.
template<typename ForEachRun, typename Submit>
bool LineBatch::Data::DrawWithoutColors(BGFXViewContext const& view, LineStyle const& style,
                                        QMatrix4x4 const& model, char const* fragmentShader,
                                        ForEachRun forEachRun, Submit submit) {
    auto const program = zx3D::ProgramFactory::Get().CreateProgram(
        kind == LineKind::Segments ? "vs_pick_line" : "vs_pick_line_joined", fragmentShader);
    BatchUniforms& uniforms = BatchUniforms::Get();
    if (quads == nullptr)
        quads = QuadIndices::Share();
    auto const most =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(CountDrawn(), QuadIndices::kMaxQuads));
    if (!program || !uniforms.Create() || !quads->Fit(most))
        return false;
    std::uint32_t const modelId = bgfx::setTransform(model.constData(), 1);
    std::uint32_t const texelsPerLine = kind == LineKind::Segments ? 2 : 1;
    BGFXRenderState const state = Drawing::ForView(view, style.state.value_or(BGFXRenderer::STATE_OPAQUE));
    forEachRun([&](std::uint64_t first, std::uint64_t count) {
        std::uint64_t line = first;
        auto const submitTexture = [&](bgfx::TextureHandle texture, std::uint32_t firstTexel,
                                       std::uint32_t texelCount, std::uint32_t rowLength) {
            std::uint32_t const lines = texelCount / texelsPerLine;
            for (std::uint32_t done = 0; done < lines; done += most) {
                std::uint32_t const some = std::min(lines - done, most);
                bgfx::setTransform(modelId, 1);
                quads->Set(some);
                bgfx::setTexture(0, uniforms[BatchUniform::Texels], texture);
                uniforms.Set(BatchUniform::Range, static_cast<float>(firstTexel + done * texelsPerLine),
                             static_cast<float>(rowLength));
                SetLineSize(uniforms, style, view);
                SetLineShape(uniforms, style);
                submit(*program, state, line);
                line += some;
            }
        };
        texels.ForEachTexture(first * texelsPerLine, count * texelsPerLine, submitTexture);
    });
    return true;
}

void LineBatch::Data::DrawNumbers(IdPass& ids, LineStyle const& style, QMatrix4x4 const& transform) {
    BGFXViewContext const& view = ids.GetView();
    QMatrix4x4 const model = ModelMatrix(origin, view.GetOrigin(), transform);
    auto const forEachVisible = [&](auto draw) {
        bounds.ForEachVisible(VolumeOf(view, model, style), CountDrawn(), draw);
    };
    auto const submit = [&](bgfx::ProgramHandle program, BGFXRenderState state, std::uint64_t first) {
        ids.Submit(program, state, first);
    };
    if (!DrawWithoutColors(view, style, model, "fs_pick_line", forEachVisible, submit))
        ids.LeaveOut();
}

void LineBatch::Data::DrawHighlight(FrameCounter& counter, BGFXViewContext const& view,
                                    LineStyle const& style, QMatrix4x4 const& model) {
    if (style.highlight.elements.IsEmpty())
        return;
    auto const forEachRun = [&](auto draw) {
        style.highlight.ForEachRun(GetUploadedCount(), [&](std::uint64_t first, std::uint64_t count) {
            if (kind == LineKind::Segments)
                return draw(first, count);
            for (std::uint64_t i = first; i < first + count; ++i) {
                PolylinePlace const place = places.At(i, texels.GetCount());
                std::uint64_t const segments = place.vertexCount - (place.isClosed ? 0 : 1);
                if (place.vertexCount >= 2)
                    draw(place.firstVertex, segments);
            }
        });
    };
    LineStyle nearer = style;
    nearer.depthOffset += 1.0f;
    auto const submit = [&](bgfx::ProgramHandle program, BGFXRenderState state, std::uint64_t) {
        BatchUniforms::Get().SetColor(BatchUniform::Highlight, style.highlight.rgba);
        bgfx::setState(state.GetValue());
        bgfx::submit(view, program, 0, BGFX_DISCARD_ALL);
    };
    if (!DrawWithoutColors(view, nearer, model, "fs_highlight_line", forEachRun, submit))
        counter.LeaveOut(LeftOutReason::NoProgram);
}

bool LineBatch::Data::Resolve(std::uint64_t drawn, PickElement& element) const {
    if (kind == LineKind::Segments) {
        element.element = drawn;
        return drawn < GetCount();
    }
    if (drawn >= texels.GetCount() || drawn == 0)
        return false;
    element.element = places.Find(drawn);
    PolylinePlace const place = places.At(element.element, texels.GetCount());
    element.segment = drawn - place.firstVertex;
    return drawn >= place.firstVertex && element.segment < place.vertexCount;
}

void LineBatch::Data::Collect(PickCollection& collection) const {
    std::span<Texel const> const kept = texels.GetTexels();
    std::uint64_t const step = kind == LineKind::Segments ? 2 : 1;
    for (std::uint64_t i = 0; i + 1 < kept.size(); i += step) {
        PickElement element = collection.GetAddition();
        if (collection.HasLine(PlaceOf(kept[i]), PlaceOf(kept[i + 1])) && Resolve(i / step, element))
            collection.Add(element);
    }
}

LineBatch::LineBatch(KeepData keepData) : m_data(std::make_shared<Data>(keepData == KeepData::Yes)) {}
LineBatch::~LineBatch() = default;
LineBatch::LineBatch(LineBatch&& other) noexcept = default;
LineBatch& LineBatch::operator=(LineBatch&& other) noexcept = default;

void LineBatch::SetOrigin(WorldPosition const& origin) {
    m_data->origin = origin;
}

WorldPosition const& LineBatch::GetOrigin() const {
    return m_data->origin;
}

void LineBatch::Set(zx3D::DataSpan<LineSegment const> segments) {
    m_data->Clear();
    m_data->Append(segments);
}

void LineBatch::Set(zx3D::DataSpan<Polyline const> polylines) {
    m_data->Clear();
    m_data->Append(polylines);
}

void LineBatch::Append(zx3D::DataSpan<LineSegment const> segments) {
    m_data->Append(segments);
}

void LineBatch::Append(zx3D::DataSpan<Polyline const> polylines) {
    m_data->Append(polylines);
}

void LineBatch::Update(std::uint64_t first, zx3D::DataSpan<LineSegment const> segments) {
    m_data->Update(first, segments);
}

void LineBatch::Update(std::uint64_t polyline, std::uint64_t first,
                       zx3D::DataSpan<LineVertex const> vertices) {
    m_data->Update(polyline, first, vertices);
}

void LineBatch::Clear() {
    m_data->Clear();
}

std::uint64_t LineBatch::GetCount() const {
    return m_data->GetCount();
}

std::uint64_t LineBatch::GetUploadedCount() const {
    return m_data->GetUploadedCount();
}

std::optional<WorldBox> LineBatch::GetBoundingBox() const {
    if (GetCount() == 0)
        return std::nullopt;
    return InWorld(m_data->bounds.Total(), m_data->origin);
}

void LineBatch::Draw(BGFXRenderer const& renderer, BGFXViewContext const& view, LineStyle const& style,
                     QMatrix4x4 const& transform) {
    if (m_data->texels.IsLost()) {
        m_data->lost.Raise([] {
            LogWarning("line-batch.lost", [] {
                return QString(
                    "A batch of lines is empty: bgfx was shut down, and it does not keep its data");
            });
        });
    } else {
        m_data->lost.Clear();
    }
    if (GetCount() > 0 && zx3D::Context::IsInitialized())
        m_data->Draw(*renderer.m_drawing, view, style, transform);
}

void PickScene::Add(LineBatch& batch, LineStyle const& style, QMatrix4x4 const& transform) {
    LineBatch::Data& data = *batch.m_data;
    if (m_collection != nullptr) {
        if (!data.texels.KeepsData())
            return m_collection->Skip();
        m_collection->Begin(&batch, data.origin, transform, style.width, style.widthUnit);
        return data.Collect(*m_collection);
    }
    m_ids->Begin({&batch, PickKind::Lines, data.origin, transform,
                  [gone = std::weak_ptr(batch.m_data)](std::uint64_t drawn, PickElement& element) {
                      auto const there = gone.lock();
                      return there != nullptr && there->Resolve(drawn, element);
                  }});
    if (data.GetCount() > 0)
        data.DrawNumbers(*m_ids, style, transform);
}

} // namespace zarvex::zx3DQt
