// Fonts, and strings drawn with them.
#pragma once

#include <zx3D/TextHandles.h>
#include <zx3D/zx3DExport.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace zarvex::zx3D {

// A label, in order:
//
//     TextBufferHandle const label = CreateTextBuffer(TextBufferType::Transient, font);
//     SetPenPosition(label, 100.0f, 40.0f);
//     SetTextColor(label, 0xffffffff);
//     AppendText(label, "Δx = 0.25 mm");
//     AlignText(label, 0.5f, 1.0f); // centred above the pen
//     SubmitTextBuffer(label, viewId, 0);
//     DestroyTextBuffer(label);
//
// Text is Unicode: shaped (ligatures, combining marks, Arabic, Indic scripts), ordered by the bidirectional
// algorithm, with glyphs that the font lacks taken from the system's fonts. Glyphs are rasterised once, with
// 256 levels of coverage, and land on whole pixels.
//
// It does not: wrap lines, use colour glyphs, draw text in perspective.
//
// Thread: the one that calls bgfx's API. Errors: an unknown or invalid handle makes every operation do
// nothing. Text that is not drawn, for whatever reason, is a warning, once in a run of the context.

/// Loads a font file (whatever FreeType reads; the first face of a collection) at a size. `pixelSize` is the
/// height of the em square in physical pixels, 1 to 512. Empty, with a message, when there is no such file,
/// it is no font, it is larger than 128 MiB, or the size is out of range.
///
/// A font belongs to the caller until `DestroyFont`; it needs no context and outlives it.
ZX3D_EXPORT std::optional<FontHandle> LoadFont(std::filesystem::path const& path, std::uint16_t pixelSize);

/// The same from a font file's bytes, which are copied.
ZX3D_EXPORT std::optional<FontHandle> LoadFontFromMemory(std::span<std::byte const> bytes,
                                                         std::uint16_t pixelSize);

/// The same from the system's font that comes nearest to a family name such as "Noto Sans", in a fontconfig
/// pattern also with a style: "Noto Sans:bold". Empty, with a message, when the system has no font.
ZX3D_EXPORT std::optional<FontHandle> LoadSystemFont(std::string const& family, std::uint16_t pixelSize);

/// The same from the font that zx3D brings along: DejaVu Sans.
ZX3D_EXPORT std::optional<FontHandle> LoadDefaultFont(std::uint16_t pixelSize);

/// Frees the font. Text buffers that use it stay, and draw nothing.
ZX3D_EXPORT void DestroyFont(FontHandle font);

/// A font's vertical metrics, pixels.
struct FontInfo {
    std::uint16_t pixelSize = 0; ///< as it was loaded
    float ascender = 0.0f;       ///< from the baseline up, positive
    float descender = 0.0f;      ///< from the baseline down, negative
    float lineGap = 0.0f;        ///< between a line's bottom and the next one's top
};

/// All zero for an unknown font.
ZX3D_EXPORT FontInfo GetFontInfo(FontHandle font);

/// The size of a block of lines, pixels.
struct TextSize {
    std::int32_t width = 0;  ///< of the longest line: what its pen advances
    std::int32_t height = 0; ///< of all lines, each from ascender to descender, with the gaps between them
};

/// The size of the block that `AlignText` moves: UTF-8 from `begin` to `end`, or, with a null `end`, to the
/// terminating zero, as `AppendText` takes it. Needs no context, and is kept for drawing. All zero for an
/// unknown font and for an empty text.
ZX3D_EXPORT TextSize MeasureText(FontHandle font, char const* begin, char const* end = nullptr);

/// What is to become of a text buffer's content.
enum class TextBufferType : std::uint8_t {
    Static = 0,    ///< set once, submitted in many frames
    Dynamic = 1,   ///< changed now and then
    Transient = 2, ///< submitted once: submitting empties the buffer
};

/// An empty text buffer: pen at (0, 0), white, aligned to its top left. Belongs to the caller until
/// `DestroyTextBuffer`. The invalid handle when there are 65,535 already.
ZX3D_EXPORT TextBufferHandle CreateTextBuffer(TextBufferType type, FontHandle font);

/// Where the text goes: physical pixels from the top left of the target (not of the view), y down.
ZX3D_EXPORT void SetPenPosition(TextBufferHandle text, float x, float y);

/// The colour, 0xRRGGBBAA, not premultiplied, of all the buffer's text.
ZX3D_EXPORT void SetTextColor(TextBufferHandle text, std::uint32_t rgba);

/// Appends UTF-8 from `begin` to `end`, or, with a null `end`, to the terminating zero. A line feed (or one
/// of Unicode's line and paragraph separators) starts a new line, a tab goes to the next multiple of eight
/// blanks, other control characters are left out, and malformed bytes show as U+FFFD. A buffer takes 64 KiB;
/// what is beyond is left out with a message.
ZX3D_EXPORT void AppendText(TextBufferHandle text, char const* begin, char const* end = nullptr);

/// Moves the block of lines left by `horizontal` times its width and up by `vertical` times its height, and
/// each line within the block: (0, 0) puts the top left on the pen, (1, 1) the bottom right. The block is as
/// wide as its longest line and as high as its lines, each from ascender to descender, with the line gap
/// between them. Its place is rounded to whole pixels.
ZX3D_EXPORT void AlignText(TextBufferHandle text, float horizontal, float vertical);

/// Turns the text about its pen, anticlockwise as it is seen, degrees: what would be drawn without is turned
/// about the whole pixel next to the pen, and its glyphs are interpolated between their pixels. Quarter turns
/// stay sharp. An angle that is not finite counts as 0.
ZX3D_EXPORT void SetTextAngle(TextBufferHandle text, float degrees);

/// Draws the text into a view, blended over what is there, without a depth test. In a view of the default
/// mode it comes after all geometry, and texts are ordered by `depth`, the larger over the smaller; what is
/// below 0 counts as 0. In a view of mode Sequential everything is in the order of the calls. Needs a
/// context.
///
/// In the default mode, blended geometry of a program that was created after the context's first text still
/// comes later: create programs before, or give text a view of its own.
ZX3D_EXPORT void SubmitTextBuffer(TextBufferHandle text, std::uint16_t viewId, std::int32_t depth);

/// Frees the text buffer. What was submitted is drawn.
ZX3D_EXPORT void DestroyTextBuffer(TextBufferHandle text);

} // namespace zarvex::zx3D
