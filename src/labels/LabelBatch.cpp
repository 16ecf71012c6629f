// Labels in the process, and their way into a picture.
#include <zx3DQt/LabelBatch.h>

#include "../batch/DepthShift.h"
#include "../batch/PieceBounds.h"
#include "../frame/Logging.h"
#include "../render/Alignment.h"
#include "LabelChoice.h"
#include "PictureProjection.h"
#include "PixelLengths.h"

#include <zx3DQt/BGFXRenderer.h>

#include <zx3D/Context.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <numbers>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

namespace zarvex::zx3DQt {

namespace {

/// A style, computed once for all labels of a frame.
struct Appearance {
    explicit Appearance(LabelStyle const& style)
        : alongFactor(HorizontalFactor(style.alignment)),
          downFactor(VerticalFactor(style.alignment)),
          along(OffsetOr0(style.offset.x())),
          down(OffsetOr0(style.offset.y())),
          padding(std::round(LengthOr0(style.padding))),
          rgba(style.color.ToRGBA()) {}

    float alongFactor; ///< which part of the box lies before the place
    float downFactor;
    float along; ///< pixels
    float down;
    float padding; ///< whole pixels
    std::uint32_t rgba;
};

/// The box of an upright text is at whole pixels.
PictureBox BoxOf(Appearance const& look, zx3D::TextSize const& size, PixelPlace const& place,
                 zx3D::PictureDirection const& direction) {
    float const length = static_cast<float>(size.width) + 2.0f * look.padding;
    float const breadth = static_cast<float>(size.height) + 2.0f * look.padding;
    float const left = look.along - look.alongFactor * length;
    float const top = look.down - look.downFactor * breadth;
    auto const x = static_cast<float>(place.x);
    auto const y = static_cast<float>(place.y);
    PictureBox box{0.0f, 0.0f, 0.5f * length, 0.5f * breadth, direction};
    if (direction.y == 0.0f) {
        box.x = std::floor(x + left + 0.5f) + box.halfLength;
        box.y = std::floor(y + top + 0.5f) + box.halfBreadth;
    } else {
        float const along = left + box.halfLength;
        float const down = top + box.halfBreadth;
        box.x = x + along * direction.x - down * direction.y;
        box.y = y + along * direction.y + down * direction.x;
    }
    return box;
}

/// Where the middle of a label's box is, at the depth that its text has there.
zx3D::PicturePlace MiddleOf(LabelCandidate const& label) {
    PictureBox const& box = label.box;
    float const way = (box.x - label.placeX) * box.direction.x + (box.y - label.placeY) * box.direction.y;
    return {box.x, box.y, label.depth + way * box.direction.depth};
}

/// A place in a label's box, from its middle along and across.
zx3D::PicturePlace PlaceIn(LabelCandidate const& label, float along, float across) {
    zx3D::PicturePlace const middle = MiddleOf(label);
    zx3D::PictureDirection const& direction = label.box.direction;
    return {middle.x + along * direction.x - across * direction.y,
            middle.y + along * direction.y + across * direction.x, middle.depth + along * direction.depth};
}

/// Whether both ends of a label are between the near plane and the far plane.
bool IsInDepths(LabelCandidate const& label, double nearest) {
    return std::ranges::all_of(std::array{-label.box.halfLength, label.box.halfLength}, [&](float end) {
        double const depth = PlaceIn(label, end, 0.0f).depth;
        return depth >= nearest && depth <= 1.0;
    });
}

/// The line from a label's place to its box, unless it is inside.
void AddLeader(zx3D::Annotations& annotations, LabelCandidate const& label, LabelStyle const& style) {
    PictureBox const& box = label.box;
    float const x = label.placeX - box.x;
    float const y = label.placeY - box.y;
    float const along = x * box.direction.x + y * box.direction.y;
    float const across = y * box.direction.x - x * box.direction.y;
    if (std::abs(along) <= box.halfLength && std::abs(across) <= box.halfBreadth)
        return;
    annotations.AddLine({label.placeX, label.placeY, label.depth},
                        PlaceIn(label, std::clamp(along, -box.halfLength, box.halfLength),
                                std::clamp(across, -box.halfBreadth, box.halfBreadth)),
                        LengthOr0(style.leaderWidth), style.leaderColor->ToRGBA());
}

DrawnLabel ToDrawn(LabelCandidate const& label) {
    PictureBox const& box = label.box;
    double const angle = std::atan2(-box.direction.y, box.direction.x) * 180.0 / std::numbers::pi;
    return {label.index, QPointF(box.x, box.y), QSizeF(2.0 * box.halfLength, 2.0 * box.halfBreadth), angle};
}

} // namespace

class LabelBatch::Data {
public:
    void Append(zx3D::DataSpan<Label const> labels);
    void Update(std::uint64_t first, zx3D::DataSpan<Label const> labels);
    void Draw(BGFXRenderer const& renderer, BGFXViewContext const& view, LabelStyle const& style,
              QMatrix4x4 const& transform);

    /// What each view has of the labels.
    struct ViewState {
        LabelMemory memory;
        std::vector<DrawnLabel> drawn;
    };
    using ViewKey = std::pair<void const*, std::uint16_t>; // renderer and view

    /// A label's text, as it was handed over and laid out.
    struct Text {
        std::string utf8;
        zx3D::TextLayout layout; ///< empty until the label is in the view
        std::optional<std::uint32_t> rgba;
    };

    // Of each label. Those that every frame reads for every label are next to each other.
    std::vector<bx::Vec3> positions; ///< not finite: refused
    std::vector<bx::Vec3> directions;
    std::vector<float> priorities;
    std::vector<Text> texts;

    WorldPosition origin;
    std::map<ViewKey, ViewState> views;

private:
    void Put(std::size_t index, Label const& label);
    void WarnOfRefused(zx3D::DataSpan<Label const> labels) const;
    bool UseFont(zx3D::FontHandle font);
    void SortByPriority();
    zx3D::PictureDirection DirectionOf(std::uint32_t label, PictureProjection const& projection,
                                       ClipPlace const& clip, double depthScale, LabelMemory& memory) const;
    void FindCandidates(BGFXViewContext const& view, LabelStyle const& style, QMatrix4x4 const& transform,
                        LabelMemory& memory);
    void Annotate(std::span<LabelCandidate const> labels, LabelStyle const& style);

    std::vector<std::uint32_t> m_byPriority; ///< all labels, the greatest first; empty: not known
    zx3D::TextLayout m_fontProbe;            ///< tells whether layouts are of the style's font
    std::vector<LabelCandidate> m_candidates;
    LabelChooser m_chooser;
    zx3D::Annotations m_annotations;
};

void LabelBatch::Data::Put(std::size_t index, Label const& label) {
    bool const isFinite = IsFinite(label.position) && IsFinite(label.direction);
    constexpr float none = std::numeric_limits<float>::quiet_NaN();
    positions[index] = isFinite ? label.position : bx::Vec3(none, none, none);
    directions[index] = label.direction;
    priorities[index] = std::isnan(label.priority) ? -std::numeric_limits<float>::infinity() : label.priority;
    Text& text = texts[index];
    std::string utf8 = label.text.toStdString();
    if (text.utf8 != utf8) {
        text.utf8 = std::move(utf8);
        text.layout = {};
    }
    text.rgba = label.rgba;
}

void LabelBatch::Data::WarnOfRefused(zx3D::DataSpan<Label const> labels) const {
    auto const refused = std::count_if(labels.data, labels.data + labels.count, [](Label const& label) {
        return !IsFinite(label.position) || !IsFinite(label.direction);
    });
    if (refused > 0)
        LogWarning("label-batch.not-finite", [&] {
            return QString("%1 of %2 labels are not drawn: their positions or directions are not finite")
                .arg(refused)
                .arg(labels.count);
        });
}

void LabelBatch::Data::Append(zx3D::DataSpan<Label const> labels) {
    if (labels.IsEmpty())
        return;
    std::size_t const first = texts.size();
    std::size_t const count = first + labels.count;
    try {
        texts.resize(count);
        positions.resize(count, bx::Vec3(0.0f, 0.0f, 0.0f));
        directions.resize(count, bx::Vec3(0.0f, 0.0f, 0.0f));
        priorities.resize(count);
        for (std::size_t i = 0; i < labels.count; ++i)
            Put(first + i, labels.data[i]);
    } catch (std::bad_alloc const&) {
        texts.resize(first);
        positions.resize(std::min(positions.size(), first), bx::Vec3(0.0f, 0.0f, 0.0f));
        directions.resize(std::min(directions.size(), first), bx::Vec3(0.0f, 0.0f, 0.0f));
        priorities.resize(std::min(priorities.size(), first));
        throw;
    }
    m_byPriority.clear();
    WarnOfRefused(labels);
}

void LabelBatch::Data::Update(std::uint64_t first, zx3D::DataSpan<Label const> labels) {
    if (labels.IsEmpty())
        return;
    if (first > texts.size() || labels.count > texts.size() - first) {
        LogWarning("label-batch.range", [&] {
            return QString("Labels %1 to %2 are not updated: the batch has %3")
                .arg(first)
                .arg(first + labels.count - 1)
                .arg(texts.size());
        });
        return;
    }
    for (std::size_t i = 0; i < labels.count; ++i)
        Put(first + i, labels.data[i]);
    m_byPriority.clear();
    WarnOfRefused(labels);
}

/// False without a font. Another font than in the frame before makes all layouts anew.
bool LabelBatch::Data::UseFont(zx3D::FontHandle font) {
    if (m_fontProbe.IsOf(font))
        return true;
    for (Text& text : texts)
        text.layout = {};
    m_fontProbe = zx3D::TextLayout(font, " ");
    return !m_fontProbe.IsEmpty();
}

void LabelBatch::Data::SortByPriority() {
    if (!m_byPriority.empty())
        return;
    m_byPriority.resize(texts.size());
    std::iota(m_byPriority.begin(), m_byPriority.end(), 0u);
    std::stable_sort(m_byPriority.begin(), m_byPriority.end(),
                     [this](std::uint32_t a, std::uint32_t b) { return priorities[a] > priorities[b]; });
}

zx3D::PictureDirection LabelBatch::Data::DirectionOf(std::uint32_t label, PictureProjection const& projection,
                                                     ClipPlace const& clip, double depthScale,
                                                     LabelMemory& memory) const {
    bx::Vec3 const& direction = directions[label];
    if (direction.x == 0.0f && direction.y == 0.0f && direction.z == 0.0f)
        return {};
    ClipPlace const step = projection.ToClip(direction.x, direction.y, direction.z, 0.0);
    PixelPlace const speed = projection.SpeedOf(clip, step);
    double const length = std::hypot(speed.x, speed.y);
    if (!(length > 0.0) || !std::isfinite(length))
        return {};
    bool const isReversed = memory.IsReversed(label, speed.x / length, speed.y / length);
    double const scale = (isReversed ? -1.0 : 1.0) / length;
    return {static_cast<float>(scale * speed.x), static_cast<float>(scale * speed.y),
            static_cast<float>(scale * speed.depth * depthScale)};
}

void LabelBatch::Data::FindCandidates(BGFXViewContext const& view, LabelStyle const& style,
                                      QMatrix4x4 const& transform, LabelMemory& memory) {
    PictureProjection const projection(view, origin, transform);
    DepthShift const shift = DepthShiftOf(view, OffsetOr0(style.depthOffset));
    Appearance const look(style);
    m_candidates.clear();
    for (std::uint32_t const label : m_byPriority) {
        bx::Vec3 const& position = positions[label];
        ClipPlace const clip = projection.ToClip(position.x, position.y, position.z);
        Text& text = texts[label];
        if (!projection.IsInView(clip) || text.utf8.empty())
            continue;
        if (text.layout.IsEmpty())
            text.layout = zx3D::TextLayout(style.font, text.utf8);
        PixelPlace const place = projection.ToPixels(clip);
        double const depth = place.depth * double(shift.ofZ) + double(shift.ofW);
        zx3D::PictureDirection const direction =
            DirectionOf(label, projection, clip, double(shift.ofZ), memory);
        m_candidates.push_back({label, priorities[label], static_cast<float>(place.x),
                                static_cast<float>(place.y),
                                static_cast<float>(std::clamp(depth, projection.GetNearestDepth(), 1.0)),
                                BoxOf(look, text.layout.GetSize(), place, direction)});
        if (!IsInDepths(m_candidates.back(), projection.GetNearestDepth()))
            m_candidates.back().box.direction.depth = 0.0f; // nothing of it is to be cut off
    }
}

void LabelBatch::Data::Annotate(std::span<LabelCandidate const> labels, LabelStyle const& style) {
    Appearance const look(style);
    m_annotations.Clear();
    if (style.leaderColor) { // below all labels
        for (LabelCandidate const& label : labels)
            AddLeader(m_annotations, label, style);
    }
    for (LabelCandidate const& label : labels) {
        PictureBox const& box = label.box;
        if (style.boxColor)
            m_annotations.AddBox(MiddleOf(label), 2.0f * box.halfLength, 2.0f * box.halfBreadth,
                                 style.boxColor->ToRGBA(), box.direction);
        Text const& text = texts[label.index];
        m_annotations.AddText(text.layout,
                              PlaceIn(label, look.padding - box.halfLength, look.padding - box.halfBreadth),
                              text.rgba.value_or(look.rgba), box.direction, look.alongFactor);
    }
}

void LabelBatch::Data::Draw(BGFXRenderer const& renderer, BGFXViewContext const& view,
                            LabelStyle const& style, QMatrix4x4 const& transform) {
    ViewState& state = views[{&renderer, view.GetViewId()}];
    state.drawn.clear();
    state.memory.Resize(texts.size());
    if (!UseFont(style.font))
        return;
    SortByPriority();
    FindCandidates(view, style, transform, state.memory);

    std::span<LabelCandidate const> chosen = m_candidates;
    if (style.overlap == LabelOverlap::Avoided)
        chosen = m_chooser.Choose(
            m_candidates, view.GetViewport(),
            {LengthOr0(style.gap), style.priorityLead > 0.0f ? style.priorityLead : 0.0f}, state.memory);
    for (LabelCandidate const& label : chosen)
        state.drawn.push_back(ToDrawn(label));
    if (style.overlap == LabelOverlap::Allowed)
        std::reverse(m_candidates.begin(), m_candidates.end()); // the greatest priority on top
    Annotate(chosen, style);
    renderer.DrawAnnotations(view, m_annotations, style.depth);
}

LabelBatch::LabelBatch() : m_data(std::make_unique<Data>()) {}
LabelBatch::~LabelBatch() = default;
LabelBatch::LabelBatch(LabelBatch&& other) noexcept = default;
LabelBatch& LabelBatch::operator=(LabelBatch&& other) noexcept = default;

void LabelBatch::SetOrigin(WorldPosition const& origin) {
    m_data->origin = origin;
}

WorldPosition const& LabelBatch::GetOrigin() const {
    return m_data->origin;
}

void LabelBatch::Set(zx3D::DataSpan<Label const> labels) {
    Clear();
    m_data->Append(labels);
}

void LabelBatch::Append(zx3D::DataSpan<Label const> labels) {
    m_data->Append(labels);
}

void LabelBatch::Update(std::uint64_t first, zx3D::DataSpan<Label const> labels) {
    m_data->Update(first, labels);
}

void LabelBatch::Clear() {
    auto empty = std::make_unique<Data>();
    empty->origin = m_data->origin;
    m_data = std::move(empty);
}

std::uint64_t LabelBatch::GetCount() const {
    return m_data->texts.size();
}

std::optional<WorldBox> LabelBatch::GetBoundingBox() const {
    std::optional<WorldBox> box;
    for (bx::Vec3 const& position : m_data->positions) {
        if (!IsFinite(position))
            continue;
        WorldPosition const place = m_data->origin + WorldVector{position.x, position.y, position.z};
        if (!box)
            box = WorldBox{place, place};
        box->minimum = {std::min(box->minimum.x, place.x), std::min(box->minimum.y, place.y),
                        std::min(box->minimum.z, place.z)};
        box->maximum = {std::max(box->maximum.x, place.x), std::max(box->maximum.y, place.y),
                        std::max(box->maximum.z, place.z)};
    }
    return box;
}

void LabelBatch::Draw(BGFXRenderer const& renderer, BGFXViewContext const& view, LabelStyle const& style,
                      QMatrix4x4 const& transform) {
    if (GetCount() > 0 && zx3D::Context::IsInitialized())
        m_data->Draw(renderer, view, style, transform);
}

zx3D::DataSpan<DrawnLabel const> LabelBatch::GetDrawnLabels(BGFXRenderer const& renderer,
                                                            BGFXViewContext const& view) const {
    auto const state = m_data->views.find({&renderer, view.GetViewId()});
    return state != m_data->views.end() ? zx3D::DataSpan<DrawnLabel const>(state->second.drawn)
                                        : zx3D::DataSpan<DrawnLabel const>();
}

} // namespace zarvex::zx3DQt
