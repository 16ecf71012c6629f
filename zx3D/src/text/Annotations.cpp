// Shapes become corners at once; texts wait for their glyphs' places.
#include <zx3D/Annotations.h>

#include "AnnotationItems.h"
#include "ShapeCache.h"
#include "TextSystem.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zarvex::zx3D {

namespace {

/// Half a pixel beyond the edge, there is nothing.
constexpr float kMargin = 0.5f;

/// What is longer has sharp ends, since its steps are too many for 16 bits.
constexpr float kMaxReach = std::numeric_limits<std::int16_t>::max() / AnnotationVertex::kSteps - 1.0f;

std::int16_t ToSteps(float pixels) {
    return static_cast<std::int16_t>(std::lround(pixels * AnnotationVertex::kSteps));
}

/// A place along and across a shape's middle.
struct Offset {
    float along;
    float across;
};

AnnotationVertex CornerAt(PicturePlace const& center, PictureDirection const& direction, Offset const& place,
                          Offset const& reach, std::uint32_t rgba) {
    bool const isLong = std::abs(place.along) > kMaxReach;
    bool const isBroad = std::abs(place.across) > kMaxReach;
    return {center.x + place.along * direction.x - place.across * direction.y,
            center.y + place.along * direction.y + place.across * direction.x,
            center.depth + place.along * direction.depth,
            {ToSteps(isLong ? 0.0f : place.along), ToSteps(isBroad ? 0.0f : place.across),
             ToSteps(isLong ? 1.0f : reach.along), ToSteps(isBroad ? 1.0f : reach.across)},
            ToBytes(rgba)};
}

AnnotationQuad BoxAround(PicturePlace const& center, PictureDirection const& direction, Offset const& reach,
                         std::uint32_t rgba) {
    float const along = reach.along + kMargin;
    float const across = reach.across + kMargin;
    auto const corner = [&](Offset const& place) { return CornerAt(center, direction, place, reach, rgba); };
    return {corner({-along, -across}), corner({along, -across}), corner({along, across}),
            corner({-along, across})};
}

} // namespace

TextLayout::TextLayout(FontHandle font, std::string_view utf8) {
    *this = TextSystem::Get().LayOut(font, utf8);
}

TextSize TextLayout::GetSize() const {
    return m_text != nullptr ? TextSize{m_text->shaped.width, m_text->shaped.height} : TextSize();
}

bool TextLayout::IsOf(FontHandle font) const {
    Font const* const found = TextSystem::Get().FindFont(font);
    return found != nullptr && m_text != nullptr && m_font.idx == font.idx && found->GetId() == m_fontId;
}

Annotations::Annotations() : m_items(std::make_unique<AnnotationItems>()) {}
Annotations::~Annotations() = default;
Annotations::Annotations(Annotations&& other) noexcept = default;
Annotations& Annotations::operator=(Annotations&& other) noexcept = default;

void Annotations::AddText(TextLayout const& text, PicturePlace const& topLeft, std::uint32_t rgba,
                          PictureDirection const& direction, float alignment) {
    if (!text.IsEmpty())
        m_items->texts.push_back({text, topLeft, direction, alignment, rgba, m_items->shapes.size()});
}

void Annotations::AddBox(PicturePlace const& center, float length, float breadth, std::uint32_t rgba,
                         PictureDirection const& direction) {
    m_items->shapes.push_back(BoxAround(center, direction, {0.5f * length, 0.5f * breadth}, rgba));
}

void Annotations::AddLine(PicturePlace const& from, PicturePlace const& to, float width, std::uint32_t rgba) {
    float const x = to.x - from.x;
    float const y = to.y - from.y;
    float const length = std::hypot(x, y);
    PictureDirection const direction =
        length > 0.0f ? PictureDirection{x / length, y / length, (to.depth - from.depth) / length}
                      : PictureDirection{};
    PicturePlace const center{0.5f * (from.x + to.x), 0.5f * (from.y + to.y), 0.5f * (from.depth + to.depth)};
    m_items->shapes.push_back(
        BoxAround(center, direction, {0.5f * length, 0.5f * std::max(width, 1.0f)}, rgba));
}

void Annotations::AddArrowHead(PicturePlace const& tip, PictureDirection const& direction, float length,
                               float breadth, std::uint32_t rgba) {
    float const half = 0.5f * length;
    PicturePlace const center{tip.x - half * direction.x, tip.y - half * direction.y,
                              tip.depth - half * direction.depth};
    // How far it reaches to the sides shrinks towards the tip, and beyond the ends goes on as it shrinks.
    float const shrinks = length > kMargin ? 0.5f * breadth * kMargin / length : 0.5f * breadth;
    Offset const base{half, 0.5f * breadth + shrinks};
    Offset const end{half, -shrinks};
    float const along = half + kMargin;
    float const across = base.across + kMargin;
    auto const corner = [&](float place, float side, Offset const& reach) {
        return CornerAt(center, direction, {place, side}, reach, rgba);
    };
    m_items->shapes.push_back({corner(-along, -across, base), corner(along, -kMargin, end),
                               corner(along, kMargin, end), corner(-along, across, base)});
}

bool Annotations::IsEmpty() const {
    return m_items->shapes.empty() && m_items->texts.empty();
}

void Annotations::Clear() {
    m_items->shapes.clear();
    m_items->texts.clear();
}

Annotations::Submitted Annotations::Submit(std::uint16_t viewId, AnnotationDepth depth) const {
    return IsEmpty() ? Submitted() : TextSystem::Get().Submit(*m_items, viewId, depth);
}

} // namespace zarvex::zx3D
