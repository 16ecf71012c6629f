// All fonts and texts of the process.
#pragma once

#include "AnnotationRenderer.h"
#include "Font.h"
#include "GlyphAtlas.h"
#include "ShapeCache.h"
#include "Slots.h"
#include "TextQuads.h"
#include "TextRenderer.h"
#include "TextShaper.h"

#include <zx3D/Annotations.h>
#include <zx3D/ContextListener.h>
#include <zx3D/Message.h>
#include <zx3D/Text.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zarvex::zx3D {

/// What a text buffer handle stands for.
struct TextBuffer {
    struct Settings {
        TextBufferType type = TextBufferType::Static;
        FontHandle font;
        std::uint32_t fontId = 0; ///< tells whether the handle still stands for the same font
        float x = 0.0f;
        float y = 0.0f;
        std::uint32_t rgba = 0xffffffff;
        float horizontal = 0.0f;
        float vertical = 0.0f;
        float angle = 0.0f; ///< degrees, anticlockwise
    };

    Settings settings;
    std::string text;                   ///< keeps its memory when the buffer is destroyed
    std::shared_ptr<CachedText> cached; ///< what was drawn before, null since the text changed
};

/// Owns fonts and text buffers, which need no context, and what a running context draws them with.
class TextSystem final : private ContextListener {
public:
    static TextSystem& Get() {
        // Never destroyed: handles of static storage duration may be given back at the very end of the
        // process.
        static TextSystem& system = *new TextSystem;
        return system;
    }

    FaceLoader& GetFaceLoader() { return m_faceLoader; }
    SystemFonts& GetSystemFonts() { return m_systemFonts; }

    /// Empty when there are 65,535 fonts already.
    std::optional<FontHandle> AddFont(std::unique_ptr<Face> face);
    void DestroyFont(FontHandle handle);
    Font* FindFont(FontHandle handle);

    TextSize Measure(Font& font, std::string_view utf8);

    /// Empty in an unknown font.
    TextLayout LayOut(FontHandle font, std::string_view utf8);

    TextBufferHandle CreateBuffer(TextBufferType type, FontHandle font);
    void DestroyBuffer(TextBufferHandle handle);
    TextBuffer* FindBuffer(TextBufferHandle handle) { return m_buffers.Find(handle.idx); }

    void Append(TextBuffer& buffer, std::string_view utf8);
    void Submit(TextBuffer& buffer, std::uint16_t view, std::int32_t depth);

    Annotations::Submitted Submit(AnnotationItems const& items, std::uint16_t view, AnnotationDepth depth);

private:
    TextSystem() = default;
    ~TextSystem() = default;

    /// Why a text, or a part of it, is not drawn.
    enum Omission { NoBuffer, NoFont, NoContext, NoView, NoResources, FullAtlas, FullFrame, OmissionCount };

    void OnContextStopping() override;
    void WarnOf(Omission omission);
    void Draw(TextBuffer& buffer, std::uint16_t view, std::int32_t depth);
    CachedText& Layout(TextBuffer& buffer, Font& font);
    std::shared_ptr<CachedText> Layout(std::string_view utf8, Font& font);
    void PlaceInAtlas(CachedText& text, Font const& font);
    void Resolve(std::span<AnnotationText const> texts);
    void WarnOfLength(std::size_t leftOut);

    FaceLoader m_faceLoader; // outlives the faces
    SystemFonts m_systemFonts;
    Slots<std::unique_ptr<Font>> m_fonts;
    std::uint32_t m_nextFontId = 1;
    Slots<TextBuffer> m_buffers;
    TextShaper m_shaper;
    ShapeCache m_shapeCache;
    GlyphResolver m_resolver;
    GlyphAtlas m_atlas;
    TextRenderer m_renderer;
    AnnotationRenderer m_annotationRenderer;
    std::vector<ResolvedText> m_resolved;                // keeps its memory between annotations
    std::array<OncePerCause, OmissionCount> m_omissions; // in this run of the context
    OncePerCause m_tooLong;
};

} // namespace zarvex::zx3D
