// Lines, tabs, and HarfBuzz for what is between them.
#include "TextShaper.h"

#include "Font.h"
#include "Utf8.h"

#include <algorithm>
#include <optional>
#include <span>

namespace zarvex::zx3D {

namespace {

constexpr int kBlanksPerTab = 8;

/// More would only come from a font that multiplies glyphs.
constexpr std::size_t kMaxGlyphs = 1 << 18;

/// HarfBuzz counts in 1/64 pixel.
std::int64_t RoundToPixels(std::int64_t position) {
    return (position + 32) >> 6;
}

bool IsInExtent(std::int64_t position) {
    return position >= -kMaxTextExtent && position <= kMaxTextExtent;
}

std::int32_t ClampToExtent(std::int64_t position) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(position, -kMaxTextExtent, kMaxTextExtent));
}

bool IsLineBreak(char32_t codePoint) {
    constexpr char32_t lineSeparator = 0x2028, paragraphSeparator = 0x2029;
    return codePoint == U'\n' || codePoint == lineSeparator || codePoint == paragraphSeparator;
}

bool IsDropped(char32_t codePoint) {
    bool const isControl = codePoint < 0x20 || (codePoint >= 0x7F && codePoint < 0xA0);
    return isControl && codePoint != U'\n' && codePoint != U'\t';
}

int LineHeight(FaceMetrics const& metrics) {
    return metrics.ascender - metrics.descender;
}

/// Places a run's glyphs with the pen on whole pixels at the start of every cluster, and within a cluster,
/// where marks sit on their letter, as exactly as pixels allow.
class RunPen {
public:
    struct Place {
        std::int64_t x;
        std::int64_t y;
    };

    Place Put(hb_glyph_info_t const& info, hb_glyph_position_t const& position) {
        if (m_cluster != info.cluster) {
            m_cluster = info.cluster;
            m_clusterStart += RoundToPixels(m_advance);
            m_advance = 0;
        }
        std::int64_t const x = m_clusterStart + RoundToPixels(m_advance + position.x_offset);
        m_advance += position.x_advance;
        return {x, -RoundToPixels(position.y_offset)};
    }

    std::int64_t GetWidth() const { return m_clusterStart + RoundToPixels(m_advance); }

private:
    std::optional<std::uint32_t> m_cluster;
    std::int64_t m_clusterStart = 0; // pixels
    std::int64_t m_advance = 0;      // since the cluster's start, 1/64 pixels
};

} // namespace

TextShaper::TextShaper() : m_buffer(hb_buffer_create()) {}

ShapedText TextShaper::Shape(std::string_view utf8, Font& font) {
    ShapedText text;
    if (utf8.empty())
        return text;
    FaceMetrics const& metrics = font.GetPrimaryFace().GetMetrics();
    DecodeLines(utf8);
    std::u32string_view rest = m_codePoints;
    std::int64_t top = 0;
    for (bool isLast = false; !isLast; top += LineHeight(metrics) + metrics.lineGap) {
        std::size_t const length = std::min(rest.find(U'\n'), rest.size());
        isLast = length == rest.size();
        ShapeLine(rest.substr(0, length), top + metrics.ascender, font, text);
        rest.remove_prefix(isLast ? length : length + 1);
    }
    text.height = ClampToExtent(top - metrics.lineGap);
    return text;
}

void TextShaper::DecodeLines(std::string_view utf8) {
    m_codePoints.clear();
    AppendDecodedUtf8(utf8, m_codePoints);
    std::erase_if(m_codePoints, IsDropped);
    std::replace_if(m_codePoints.begin(), m_codePoints.end(), IsLineBreak, U'\n');
}

void TextShaper::ShapeLine(std::u32string_view line, std::int64_t baseline, Font& font, ShapedText& text) {
    auto const firstGlyph = static_cast<std::uint32_t>(text.glyphs.size());
    std::vector<TextRun> const& runs = m_splitter.Split(line, font);
    m_extents.clear();
    for (TextRun const& run : runs)
        m_extents.push_back(run.isTab ? RunExtent{} : ShapeRun(line, run, baseline, font, text));
    FitTabs(runs, font);
    std::int64_t left = 0;
    for (RunExtent const& extent : m_extents) {
        for (ShapedGlyph& glyph : std::span(text.glyphs).subspan(extent.firstGlyph, extent.glyphCount))
            glyph.x = ClampToExtent(left + glyph.x);
        left += extent.width;
    }
    auto const glyphCount = static_cast<std::uint32_t>(text.glyphs.size()) - firstGlyph;
    text.lines.push_back({firstGlyph, glyphCount, ClampToExtent(left)});
    text.width = std::max(text.width, text.lines.back().width);
}

TextShaper::RunExtent TextShaper::ShapeRun(std::u32string_view line, TextRun const& run,
                                           std::int64_t baseline, Font const& font, ShapedText& text) {
    hb_buffer_t* const buffer = m_buffer.get();
    hb_buffer_clear_contents(buffer);
    hb_buffer_add_utf32(buffer, reinterpret_cast<std::uint32_t const*>(line.data()),
                        static_cast<int>(line.size()), run.start, static_cast<int>(run.length));
    hb_buffer_set_direction(buffer, run.IsRightToLeft() ? HB_DIRECTION_RTL : HB_DIRECTION_LTR);
    hb_buffer_set_script(buffer, run.script);
    hb_buffer_set_language(buffer, hb_language_get_default());
    hb_shape(font.GetFaces()[run.face]->GetHarfBuzzFont(), buffer, nullptr, 0);

    unsigned count = 0;
    hb_glyph_info_t const* const infos = hb_buffer_get_glyph_infos(buffer, &count);
    hb_glyph_position_t const* const positions = hb_buffer_get_glyph_positions(buffer, &count);
    RunExtent extent{static_cast<std::uint32_t>(text.glyphs.size()), 0, 0};
    RunPen pen;
    for (unsigned i = 0; i < count && text.glyphs.size() < kMaxGlyphs; ++i) {
        auto const [x, y] = pen.Put(infos[i], positions[i]);
        if (!IsInExtent(x) || !IsInExtent(baseline + y))
            continue;
        text.glyphs.push_back({static_cast<std::int32_t>(x), static_cast<std::int32_t>(baseline + y),
                               infos[i].codepoint, run.face});
        ++extent.glyphCount;
    }
    extent.width = std::max<std::int64_t>(pen.GetWidth(), 0);
    return extent;
}

// Tab stops count from the side on which the line begins, so the runs are walked from there.
void TextShaper::FitTabs(std::vector<TextRun> const& runs, Font const& font) {
    std::int64_t const stop = kBlanksPerTab * font.GetPrimaryFace().GetBlankAdvance();
    std::int64_t position = 0;
    for (std::size_t n = 0; n < runs.size(); ++n) {
        std::size_t const i = m_splitter.IsLineRightToLeft() ? runs.size() - 1 - n : n;
        if (runs[i].isTab)
            m_extents[i].width = stop - position % stop;
        position += m_extents[i].width;
    }
}

} // namespace zarvex::zx3D
