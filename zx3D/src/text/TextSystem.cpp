// The way of a text from its buffer to bgfx.
#include "TextSystem.h"

#include "../message/Say.h"
#include "TextDirection.h"
#include "Utf8.h"

#include <zx3D/Context.h>

#include <algorithm>
#include <cmath>

namespace zarvex::zx3D {

namespace {

constexpr std::size_t kMaxTextSize = 64 << 10;

/// Buffers keep no more than this for their next text.
constexpr std::size_t kMaxIdleText = 4 << 10;

/// The block's begin in whole pixels; empty where no target is, and for what is no number.
std::optional<std::int32_t> PlaceBlock(float pen, float factor, std::int32_t extent) {
    double const shift = double(factor) * extent;
    double const place = double(pen) - shift + 0.5;
    bool const isInReach =
        std::abs(shift) <= kMaxTextExtent && place >= -kMaxTextExtent && place < kMaxTextExtent + 1;
    if (!isInReach)
        return std::nullopt;
    auto const towardsZero = static_cast<std::int32_t>(place); // far quicker than to round down
    return towardsZero - (towardsZero > place ? 1 : 0);
}

std::optional<TextAppearance> AppearanceOf(TextBuffer::Settings const& settings, ShapedText const& text) {
    auto const left = PlaceBlock(settings.x, settings.horizontal, text.width);
    auto const top = PlaceBlock(settings.y, settings.vertical, text.height);
    if (!left || !top)
        return std::nullopt;
    TextAppearance appearance{*left, *top, settings.horizontal, settings.rgba, std::nullopt};
    if (!IsUpright(settings.angle)) {
        auto const penX = PlaceBlock(settings.x, 0.0f, 0);
        auto const penY = PlaceBlock(settings.y, 0.0f, 0);
        if (!penX || !penY)
            return std::nullopt;
        appearance.turn =
            TextTurn{static_cast<float>(*penX), static_cast<float>(*penY), DirectionOfAngle(settings.angle)};
    }
    return appearance;
}

bool IsView(std::uint16_t view) {
    bgfx::Caps const* const caps = bgfx::getCaps();
    return caps != nullptr && view < caps->limits.maxViews;
}

} // namespace

std::optional<FontHandle> TextSystem::AddFont(std::unique_ptr<Face> face) {
    std::optional<std::uint16_t> const index = m_fonts.Take();
    if (!index)
        return std::nullopt;
    *m_fonts.Find(*index) =
        std::make_unique<Font>(m_nextFontId++, std::move(face), m_faceLoader, m_systemFonts);
    return FontHandle{*index};
}

void TextSystem::DestroyFont(FontHandle handle) {
    Font* const font = FindFont(handle);
    if (font == nullptr)
        return;
    m_shapeCache.Forget(font->GetId());
    for (auto const& face : font->GetFaces())
        m_atlas.Forget(face->GetId());
    m_fonts.Find(handle.idx)->reset();
    m_fonts.Free(handle.idx);
}

Font* TextSystem::FindFont(FontHandle handle) {
    auto* const font = m_fonts.Find(handle.idx);
    return font != nullptr ? font->get() : nullptr;
}

TextSize TextSystem::Measure(Font& font, std::string_view utf8) {
    std::string_view const text = TruncateUtf8(utf8, kMaxTextSize);
    std::shared_ptr<CachedText> const known = m_shapeCache.Find(font.GetId(), text);
    std::shared_ptr<CachedText> const measured = known != nullptr ? known : Layout(text, font);
    return {measured->shaped.width, measured->shaped.height};
}

TextLayout TextSystem::LayOut(FontHandle handle, std::string_view utf8) {
    TextLayout layout;
    Font* const font = FindFont(handle);
    if (font == nullptr) {
        WarnOf(NoFont);
        return layout;
    }
    std::string_view const text = TruncateUtf8(utf8, kMaxTextSize);
    if (text.size() < utf8.size())
        WarnOfLength(utf8.size() - text.size());
    // Those who keep their layouts would only push other texts out of the cache.
    layout.m_text = m_shapeCache.Find(font->GetId(), text);
    if (layout.m_text == nullptr) {
        layout.m_text = std::make_shared<CachedText>();
        layout.m_text->shaped = m_shaper.Shape(text, *font);
    }
    layout.m_font = handle;
    layout.m_fontId = font->GetId();
    return layout;
}

TextBufferHandle TextSystem::CreateBuffer(TextBufferType type, FontHandle font) {
    std::optional<std::uint16_t> const index = m_buffers.Take();
    if (!index) {
        WarnOf(NoBuffer);
        return {};
    }
    Font const* const found = FindFont(font);
    m_buffers.Find(*index)->settings = {type, font, found != nullptr ? found->GetId() : 0};
    return {*index};
}

void TextSystem::DestroyBuffer(TextBufferHandle handle) {
    TextBuffer* const buffer = FindBuffer(handle);
    if (buffer == nullptr)
        return;
    buffer->cached.reset();
    buffer->text.clear();
    if (buffer->text.capacity() > kMaxIdleText)
        buffer->text.shrink_to_fit();
    m_buffers.Free(handle.idx);
}

void TextSystem::Append(TextBuffer& buffer, std::string_view utf8) {
    std::string_view const fitting = TruncateUtf8(utf8, kMaxTextSize - buffer.text.size());
    buffer.text.append(fitting);
    buffer.cached.reset();
    if (fitting.size() < utf8.size())
        WarnOfLength(utf8.size() - fitting.size());
}

void TextSystem::WarnOfLength(std::size_t leftOut) {
    m_tooLong.Raise([&] {
        Say(MessageLevel::Warning, "text.too-long",
            "a text buffer takes 64 KiB of text; %zu bytes are left out", leftOut);
    });
}

void TextSystem::Submit(TextBuffer& buffer, std::uint16_t view, std::int32_t depth) {
    Draw(buffer, view, depth);
    if (buffer.settings.type == TextBufferType::Transient) {
        buffer.text.clear();
        buffer.cached.reset();
    }
}

void TextSystem::Draw(TextBuffer& buffer, std::uint16_t view, std::int32_t depth) {
    if (buffer.text.empty())
        return;
    Font* const font = FindFont(buffer.settings.font);
    if (font == nullptr || font->GetId() != buffer.settings.fontId)
        return WarnOf(NoFont);
    if (!Context::IsInitialized())
        return WarnOf(NoContext);
    if (!IsView(view))
        return WarnOf(NoView);
    CachedText& text = Layout(buffer, *font);
    std::optional<TextAppearance> const appearance = AppearanceOf(buffer.settings, text.shaped);
    if (!appearance)
        return;
    if (!m_renderer.Start())
        return WarnOf(NoResources);
    m_atlas.BeginText();
    PlaceInAtlas(text, *font);
    auto const unsignedDepth = static_cast<std::uint32_t>(std::max(depth, 0)); // bgfx knows none below
    if (!m_renderer.Draw(text.shaped, text.quads, *appearance, m_atlas, view, unsignedDepth))
        WarnOf(FullFrame);
}

Annotations::Submitted TextSystem::Submit(AnnotationItems const& items, std::uint16_t view,
                                          AnnotationDepth depth) {
    auto const leaveOut = [this](Omission omission) {
        WarnOf(omission);
        return Annotations::Submitted();
    };
    if (!Context::IsInitialized())
        return leaveOut(NoContext);
    if (!IsView(view))
        return leaveOut(NoView);
    if (!m_renderer.Start() || !m_annotationRenderer.Start())
        return leaveOut(NoResources);
    Resolve(items.texts);
    Annotations::Submitted const submitted =
        m_annotationRenderer.Draw(items.shapes, m_resolved, m_atlas, m_renderer, view, depth);
    if (submitted.leftOut > 0)
        WarnOf(FullFrame);
    return submitted;
}

/// All of them at once: none may take the place of another.
void TextSystem::Resolve(std::span<AnnotationText const> texts) {
    m_resolved.clear();
    m_atlas.BeginText();
    for (AnnotationText const& text : texts) {
        Font const* const font = FindFont(text.layout.m_font);
        if (font == nullptr || font->GetId() != text.layout.m_fontId) {
            WarnOf(NoFont);
            continue;
        }
        CachedText& cached = *text.layout.m_text;
        PlaceInAtlas(cached, *font);
        for (TextQuad const& quad : cached.quads.quads)
            m_atlas.Use(quad.page);
        m_resolved.push_back({&text, &cached});
    }
}

CachedText& TextSystem::Layout(TextBuffer& buffer, Font& font) {
    if (buffer.cached != nullptr)
        return *buffer.cached;
    std::shared_ptr<CachedText> const& known = m_shapeCache.Find(font.GetId(), buffer.text);
    if (known != nullptr && buffer.settings.type == TextBufferType::Transient)
        return *known; // the next submission is of another text
    buffer.cached = known != nullptr ? known : Layout(buffer.text, font);
    return *buffer.cached;
}

std::shared_ptr<CachedText> TextSystem::Layout(std::string_view utf8, Font& font) {
    return m_shapeCache.Add(font.GetId(), utf8, m_shaper.Shape(utf8, font));
}

void TextSystem::PlaceInAtlas(CachedText& text, Font const& font) {
    if (text.quads.generation == m_atlas.GetGeneration())
        return;
    GlyphResolver::Missing const missing = m_resolver.Resolve(text.shaped, font, m_atlas, text.quads);
    if (missing.damaged != 0)
        Say(MessageLevel::Warning, "text.damaged-glyphs", "%zu glyphs are damaged or too large to be drawn",
            missing.damaged);
    if (missing.homeless != 0)
        WarnOf(FullAtlas);
}

void TextSystem::OnContextStopping() {
    m_atlas.Clear();
    m_renderer = {};
    m_annotationRenderer = {};
    m_omissions = {};
    m_tooLong.Clear();
}

void TextSystem::WarnOf(Omission omission) {
    struct Warning {
        char const* name;
        char const* text;
    };
    static constexpr std::array<Warning, OmissionCount> warnings{{
        {"text.no-buffer", "text is left out, there are 65,535 text buffers already"},
        {"text.no-font", "text is left out, its font was not loaded or is destroyed"},
        {"text.no-context", "text is left out, the context does not run"},
        {"text.no-view", "text is left out, bgfx has no view of that number"},
        {"text.no-resources", "text is left out, bgfx does not create what it is drawn with"},
        {"text.full-atlas", "glyphs are left out, there are too many large ones at once, or textures"},
        {"text.full-frame", "text is left out, the frame's transient vertices are used up"},
    }};
    m_omissions[omission].Raise(
        [&] { Say(MessageLevel::Warning, warnings[omission].name, "%s", warnings[omission].text); });
}

} // namespace zarvex::zx3D
