// Texts, boxes, lines and arrows over a picture, drawn together.
#pragma once

#include <zx3D/Text.h>
#include <zx3D/TextHandles.h>
#include <zx3D/zx3DExport.h>

#include <cstdint>
#include <memory>
#include <string_view>

namespace zarvex::zx3D {

struct CachedText;
struct AnnotationItems;

/// A text laid out in a font, to be drawn in many frames without being shaped again. A value, cheap to copy.
///
/// Lifetime: needs no context, and outlives it and the font; without its font it is not drawn. Thread: the
/// one that calls bgfx's API. Errors: with an unknown font it is empty, with a warning ("text.no-font");
/// beyond 64 KiB it is cut with one ("text.too-long").
class ZX3D_EXPORT TextLayout {
public:
    /// Empty.
    TextLayout() = default;

    /// Lays out UTF-8, which `AppendText` describes.
    TextLayout(FontHandle font, std::string_view utf8);

    /// Of the block of lines, pixels; all zero for an empty text.
    TextSize GetSize() const;

    /// Whether there is anything.
    bool IsEmpty() const { return m_text == nullptr; }

    /// Whether it was laid out in that very font: not in one that was destroyed since and had the same
    /// handle.
    bool IsOf(FontHandle font) const;

private:
    friend class TextSystem;

    std::shared_ptr<CachedText> m_text;
    FontHandle m_font;
    std::uint32_t m_fontId = 0;
};

/// Where something is in a picture.
struct PicturePlace {
    float x = 0.0f;     ///< pixels of the target from its left
    float y = 0.0f;     ///< from its top, down
    float depth = 0.0f; ///< what is compared with the depth buffer: clip z divided by w
};

/// A unit vector in the picture, y down.
struct PictureDirection {
    float x = 1.0f;     ///< to the right
    float y = 0.0f;     ///< down
    float depth = 0.0f; ///< how much the depth grows for each pixel on the way
};

/// How annotations and the depth buffer go together. They never write depth.
enum class AnnotationDepth : std::uint8_t {
    Ignored, ///< nothing hides them
    Tested,  ///< hidden, pixel by pixel, where something nearer was drawn before
};

/// Texts, boxes, lines and arrows in pixels of the target, collected and drawn for a few calls of bgfx, what
/// was added later over what was added before:
///
///     TextLayout const text(font, "M8");                           // once
///     Annotations annotations;                                     // in every frame
///     annotations.AddLine({100, 80}, {140, 60}, 1, 0xffffffff);
///     annotations.AddText(text, {144, 52}, 0xffffffff);
///     annotations.Submit(viewId, AnnotationDepth::Ignored);
///
/// Edges are smooth, by alpha, over one pixel. Upright texts at whole pixels are as sharp as those of text
/// buffers; elsewhere their pixels are interpolated. Colours are 0xRRGGBBAA, not premultiplied.
///
/// In a view of the default mode annotations come after all geometry of programs that were created before,
/// as texts do; in one of mode Sequential in the order of calls. A glyph, box, line or arrow takes 96 bytes
/// of the frame's transient vertices.
///
/// Lifetime: needs no context until `Submit`. Thread: the one that calls bgfx's API. Errors: what is not
/// drawn is a warning, once in a run of the context, and counted by `Submit`. Coordinates are not checked.
class ZX3D_EXPORT Annotations {
public:
    /// Without anything.
    Annotations();
    ~Annotations();

    /// Takes over what the other has, which may only be destroyed or assigned to afterwards.
    /// @{
    Annotations(Annotations&& other) noexcept;
    Annotations& operator=(Annotations&& other) noexcept;
    /// @}

    /// Adds a text with the top left of its block at a place, its lines running along a direction and, where
    /// they are shorter than the longest one, moved by `alignment` times what they are shorter. The layout is
    /// kept.
    void AddText(TextLayout const& text, PicturePlace const& topLeft, std::uint32_t rgba,
                 PictureDirection const& direction = {}, float alignment = 0.0f);

    /// Adds a filled rectangle around a place, pixels along a direction and across it.
    void AddBox(PicturePlace const& center, float length, float breadth, std::uint32_t rgba,
                PictureDirection const& direction = {});

    /// Adds a line between two places, `width` pixels wide, at least 1, cut off straight.
    void AddLine(PicturePlace const& from, PicturePlace const& to, float width, std::uint32_t rgba);

    /// Adds a filled arrow head: its tip, the direction in which it points, its length and its breadth at the
    /// base, pixels.
    void AddArrowHead(PicturePlace const& tip, PictureDirection const& direction, float length, float breadth,
                      std::uint32_t rgba);

    /// Whether nothing was added.
    bool IsEmpty() const;

    /// Removes everything, and keeps the memory.
    void Clear();

    /// What came of a submission: glyphs, boxes, lines and arrow heads.
    struct Submitted {
        std::uint32_t drawn = 0;   ///< handed to bgfx
        std::uint32_t leftOut = 0; ///< without room in the frame's transient vertices: those added last
    };

    /// Draws everything into a view. Needs a context.
    Submitted Submit(std::uint16_t viewId, AnnotationDepth depth) const;

private:
    std::unique_ptr<AnnotationItems> m_items;
};

} // namespace zarvex::zx3D
