// Dimension lines as lines, arrow heads and texts of the picture.
#include "../batch/DepthShift.h"
#include "../frame/Logging.h"
#include "PictureProjection.h"
#include "PixelLengths.h"

#include <zx3DQt/BGFXRenderer.h>
#include <zx3DQt/Dimensions.h>

#include <zx3D/Context.h>
#include <zx3D/Text.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

namespace zarvex::zx3DQt {

namespace {

/// A style with lengths that are lengths.
struct Lengths {
    explicit Lengths(DimensionStyle const& style)
        : line(std::max(LengthOr0(style.lineWidth), 1.0f)),
          arrow(LengthOr0(style.arrowLength)),
          breadth(LengthOr0(style.arrowBreadth)),
          gap(LengthOr0(style.extensionGap)),
          overshoot(LengthOr0(style.extensionOvershoot)),
          textGap(OffsetOr0(style.textGap)) {}

    float line;
    float arrow;
    float breadth;
    float gap;
    float overshoot;
    float textGap;
};

bool IsFinite(Dimension const& dimension) {
    auto const isFinite = [](auto const& v) {
        return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
    };
    return isFinite(dimension.from) && isFinite(dimension.to) && isFinite(dimension.offset);
}

/// The way from one place of the picture to another.
struct Way {
    PixelPlace from;
    PixelPlace to;
    double length; ///< pixels

    Way(PixelPlace const& begin, PixelPlace const& end)
        : from(begin),
          to(end),
          length(std::hypot(end.x - begin.x, end.y - begin.y)) {}

    zx3D::PictureDirection Direction() const {
        return {static_cast<float>((to.x - from.x) / length), static_cast<float>((to.y - from.y) / length),
                static_cast<float>((to.depth - from.depth) / length)};
    }

    /// The place so many pixels from its begin.
    zx3D::PicturePlace At(double pixels) const {
        double const t = pixels / length;
        return {static_cast<float>(from.x + t * (to.x - from.x)),
                static_cast<float>(from.y + t * (to.y - from.y)),
                static_cast<float>(from.depth + t * (to.depth - from.depth))};
    }
};

zx3D::PictureDirection Reversed(zx3D::PictureDirection const& direction) {
    return {-direction.x, -direction.y, -direction.depth};
}

/// The direction of a text along a line: to the right, or upwards along what is steep. What is all but level
/// is level, so that its glyphs are sharp.
zx3D::PictureDirection TextDirectionOf(zx3D::PictureDirection const& line) {
    constexpr float isLevel = 1e-4f;
    constexpr float isSteep = 0.17f; // within ten degrees of the vertical
    bool const isReversed = std::abs(line.x) < isSteep ? line.y > 0.0f : line.x < 0.0f;
    zx3D::PictureDirection const text = isReversed ? Reversed(line) : line;
    if (std::abs(text.y) < isLevel)
        return {1.0f, 0.0f, text.depth};
    if (std::abs(text.x) < isLevel)
        return {0.0f, -1.0f, text.depth};
    return text;
}

/// Collects dimensions.
class DimensionPainter {
public:
    DimensionPainter(BGFXViewContext const& view, DimensionStyle const& style)
        : m_view(view),
          m_style(style),
          m_lengths(style),
          m_rgba(style.color.ToRGBA()),
          m_shift(DepthShiftOf(view, OffsetOr0(style.depthOffset))) {}

    void Add(Dimension const& dimension) {
        PictureProjection const projection(m_view, dimension.from, {});
        auto const project = [&](WorldVector const& place) -> std::optional<PixelPlace> {
            ClipPlace const clip = projection.ToClip(place.x, place.y, place.z);
            if (!(clip.w > 0.0))
                return std::nullopt;
            PixelPlace pixels = projection.ToPixels(clip);
            pixels.depth = pixels.depth * double(m_shift.ofZ) + double(m_shift.ofW);
            return pixels;
        };
        WorldVector const length = dimension.to - dimension.from;
        auto const from = project({});
        auto const to = project(length);
        auto const lineFrom = project(dimension.offset);
        auto const lineTo = project(length + dimension.offset);
        if (!from || !to || !lineFrom || !lineTo)
            return;
        Way const line(*lineFrom, *lineTo);
        if (!(line.length > 0.0) || !std::isfinite(line.length))
            return;
        AddExtension({*from, *lineFrom});
        AddExtension({*to, *lineTo});
        AddLine(line);
        AddText(line, dimension.text);
    }

    zx3D::Annotations const& GetAnnotations() const { return m_annotations; }

private:
    void AddExtension(Way const& way) {
        if (way.length > double(m_lengths.gap))
            m_annotations.AddLine(way.At(m_lengths.gap), way.At(way.length + double(m_lengths.overshoot)),
                                  m_lengths.line, m_rgba);
    }

    void AddLine(Way const& way) {
        constexpr double leastRoom = 2.5; // arrow heads
        double const arrow = m_lengths.arrow;
        bool const isInside = way.length >= leastRoom * arrow;
        // To the arrow heads' bases; or beyond those outside.
        double const inset = isInside ? arrow : -2.0 * arrow;
        m_annotations.AddLine(way.At(inset), way.At(way.length - inset), m_lengths.line, m_rgba);
        zx3D::PictureDirection const onwards = way.Direction();
        zx3D::PictureDirection const back = Reversed(onwards);
        AddHead(way.At(0.0), isInside ? back : onwards);
        AddHead(way.At(way.length), isInside ? onwards : back);
    }

    void AddHead(zx3D::PicturePlace const& tip, zx3D::PictureDirection const& direction) {
        if (m_lengths.arrow > 0.0f)
            m_annotations.AddArrowHead(tip, direction, m_lengths.arrow, m_lengths.breadth, m_rgba);
    }

    void AddText(Way const& way, QString const& text) {
        if (text.isEmpty())
            return;
        std::string const utf8 = text.toStdString();
        zx3D::TextSize const size = zx3D::MeasureText(m_style.font, utf8.c_str()); // keeps it for the layout
        zx3D::TextLayout const layout(m_style.font, utf8);
        zx3D::PictureDirection const along = TextDirectionOf(way.Direction());
        float const left = -0.5f * static_cast<float>(size.width);
        float const top = -(static_cast<float>(size.height) + m_lengths.textGap + 0.5f * m_lengths.line);
        zx3D::PicturePlace place = way.At(0.5 * way.length);
        place.x += left * along.x - top * along.y;
        place.y += left * along.y + top * along.x;
        place.depth += left * along.depth;
        if (along.x == 0.0f || along.y == 0.0f) {
            place.x = std::round(place.x);
            place.y = std::round(place.y);
        }
        m_annotations.AddText(layout, place, m_rgba, along);
    }

    BGFXViewContext const& m_view;
    DimensionStyle const& m_style;
    Lengths m_lengths;
    std::uint32_t m_rgba;
    DepthShift m_shift;
    zx3D::Annotations m_annotations;
};

} // namespace

void DrawDimensions(BGFXRenderer const& renderer, BGFXViewContext const& view,
                    zx3D::DataSpan<Dimension const> dimensions, DimensionStyle const& style) {
    if (dimensions.IsEmpty() || !zx3D::Context::IsInitialized())
        return;
    DimensionPainter painter(view, style);
    std::uint64_t refused = 0;
    for (std::uint64_t i = 0; i < dimensions.count; ++i) {
        if (IsFinite(dimensions.data[i]))
            painter.Add(dimensions.data[i]);
        else
            ++refused;
    }
    if (refused > 0)
        LogWarning("dimension.not-finite", [&] {
            return QString("%1 of %2 dimensions are not drawn: they are not finite")
                .arg(refused)
                .arg(dimensions.count);
        });
    renderer.DrawAnnotations(view, painter.GetAnnotations(), style.depth);
}

void DrawDimension(BGFXRenderer const& renderer, BGFXViewContext const& view, Dimension const& dimension,
                   DimensionStyle const& style) {
    DrawDimensions(renderer, view, {&dimension, 1}, style);
}

} // namespace zarvex::zx3DQt
