// Directions by FriBidi, scripts by HarfBuzz's tables, faces by what the font has.
#include "TextRuns.h"

#include "Font.h"

#include <fribidi.h>

#include <algorithm>

namespace zarvex::zx3D {

namespace {

static_assert(sizeof(FriBidiCharType) == sizeof(std::uint32_t));
static_assert(sizeof(FriBidiBracketType) == sizeof(std::uint32_t));
static_assert(sizeof(FriBidiLevel) == sizeof(std::int8_t));
static_assert(sizeof(FriBidiChar) == sizeof(char32_t));

hb_unicode_funcs_t* Unicode() {
    return hb_unicode_funcs_get_default();
}

bool BelongsToAnyScript(hb_script_t script) {
    return script == HB_SCRIPT_COMMON || script == HB_SCRIPT_INHERITED || script == HB_SCRIPT_UNKNOWN;
}

bool IsMark(char32_t codePoint) {
    hb_unicode_general_category_t const category = hb_unicode_general_category(Unicode(), codePoint);
    return category == HB_UNICODE_GENERAL_CATEGORY_NON_SPACING_MARK ||
           category == HB_UNICODE_GENERAL_CATEGORY_SPACING_MARK ||
           category == HB_UNICODE_GENERAL_CATEGORY_ENCLOSING_MARK;
}

/// Joiners, variation selectors, direction marks and their like, which need no glyph.
bool IsInvisible(char32_t codePoint) {
    bool const isVariationSelector =
        (codePoint >= 0xFE00 && codePoint <= 0xFE0F) || (codePoint >= 0xE0100 && codePoint <= 0xE01EF);
    return isVariationSelector ||
           hb_unicode_general_category(Unicode(), codePoint) == HB_UNICODE_GENERAL_CATEGORY_FORMAT;
}

/// Letters with more marks are not looked at any closer.
constexpr std::size_t kMaxMarks = 16;

/// No right-to-left script and no direction control has a code point below.
constexpr char32_t kFirstBidirectional = 0x0590;

} // namespace

std::vector<TextRun> const& TextRunSplitter::Split(std::u32string_view line, Font& font) {
    m_runs.clear();
    FindLevels(line);
    FindScripts(line);
    FindFaces(line, font);
    CollectRuns(line);
    OrderRuns();
    return m_runs;
}

void TextRunSplitter::FindLevels(std::u32string_view line) {
    m_isLineRightToLeft = false;
    m_levels.assign(line.size(), 0);
    if (std::all_of(line.begin(), line.end(), [](char32_t c) { return c < kFirstBidirectional; }))
        return;
    m_bidiTypes.resize(line.size());
    m_bracketTypes.resize(line.size());
    auto const* const characters = reinterpret_cast<FriBidiChar const*>(line.data());
    auto const length = static_cast<FriBidiStrIndex>(line.size());
    fribidi_get_bidi_types(characters, length, m_bidiTypes.data());
    fribidi_get_bracket_types(characters, length, m_bidiTypes.data(), m_bracketTypes.data());
    FriBidiParType direction = FRIBIDI_PAR_ON; // that of the first letter
    if (fribidi_get_par_embedding_levels_ex(m_bidiTypes.data(), m_bracketTypes.data(), length, &direction,
                                            m_levels.data()) == 0)
        m_levels.assign(line.size(), 0);
    m_isLineRightToLeft = FRIBIDI_IS_RTL(direction);
}

// Blanks, punctuation and marks take the script of what is before them, at the line's start of what follows.
void TextRunSplitter::FindScripts(std::u32string_view line) {
    m_scripts.resize(line.size());
    hb_script_t script = HB_SCRIPT_COMMON;
    for (std::size_t i = 0; i < line.size(); ++i) {
        hb_script_t const own = hb_unicode_script(Unicode(), line[i]);
        if (!BelongsToAnyScript(own)) {
            if (script == HB_SCRIPT_COMMON)
                std::fill_n(m_scripts.begin(), i, own);
            script = own;
        }
        m_scripts[i] = script;
    }
}

// A mark is shaped with the letter before it, so both take one face: the letter's, unless another has both.
void TextRunSplitter::FindFaces(std::u32string_view line, Font& font) {
    m_faces.resize(line.size());
    std::size_t letter = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        bool const isMark = IsMark(line[i]);
        if (i == 0 || !(isMark || IsInvisible(line[i]))) {
            letter = i;
            m_faces[i] = font.FindFace(line[i]);
            continue;
        }
        m_faces[i] = m_faces[i - 1];
        if (!isMark || i - letter > kMaxMarks || font.HasGlyph(m_faces[i], line[i]))
            continue;
        std::uint32_t const face = font.FindFace(line[i]);
        bool const hasAll = std::all_of(line.begin() + letter, line.begin() + i + 1,
                                        [&](char32_t c) { return IsInvisible(c) || font.HasGlyph(face, c); });
        if (hasAll)
            std::fill(m_faces.begin() + letter, m_faces.begin() + i + 1, face);
    }
}

void TextRunSplitter::CollectRuns(std::u32string_view line) {
    for (std::size_t i = 0; i < line.size(); ++i) {
        bool const isTab = line[i] == U'\t';
        auto const level = static_cast<std::uint8_t>(m_levels[i]);
        if (!m_runs.empty()) {
            TextRun& last = m_runs.back();
            if (!isTab && !last.isTab && last.level == level && last.script == m_scripts[i] &&
                last.face == m_faces[i]) {
                ++last.length;
                continue;
            }
        }
        m_runs.push_back({static_cast<std::uint32_t>(i), 1, m_faces[i], m_scripts[i], level, isTab});
    }
}

// Rule L2 of the bidirectional algorithm: from the highest level down to the lowest odd one, reverse what is
// at that level or above.
void TextRunSplitter::OrderRuns() {
    int highest = 0;
    for (TextRun const& run : m_runs)
        highest = std::max<int>(highest, run.level);
    for (int level = highest; level > 0; --level) {
        auto const isAtLevel = [level](TextRun const& run) { return run.level >= level; };
        auto begin = std::find_if(m_runs.begin(), m_runs.end(), isAtLevel);
        while (begin != m_runs.end()) {
            auto const end = std::find_if_not(begin, m_runs.end(), isAtLevel);
            std::reverse(begin, end);
            begin = std::find_if(end, m_runs.end(), isAtLevel);
        }
    }
}

} // namespace zarvex::zx3D
