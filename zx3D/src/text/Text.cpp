// The public operations: from handles to objects.
#include <zx3D/Text.h>

#include "../message/Say.h"
#include "TextSystem.h"

#include <zx3D/Context.h>

#include <cstring>

namespace zarvex::zx3D {

namespace {

constexpr std::uint16_t kMaxPixelSize = 512;

/// More than a text buffer takes.
constexpr std::size_t kLongText = 1 << 20;

/// Empty when there is none.
std::string_view ToView(char const* begin, char const* end) {
    if (begin == nullptr || (end != nullptr && end < begin))
        return {};
    return {begin, end != nullptr ? static_cast<std::size_t>(end - begin) : strnlen(begin, kLongText)};
}

void Report(char const* name, char const* problem) {
    constexpr int longest = 256;
    Say(MessageLevel::Warning, "font.not-loaded", "font \"%.*s\": %s", longest, name, problem);
}

std::optional<FontHandle> AddFont(char const* name, FontData data, long faceIndex, std::uint16_t pixelSize) {
    if (pixelSize == 0 || pixelSize > kMaxPixelSize) {
        Report(name, "the size is not between 1 and 512 pixels");
        return std::nullopt;
    }
    TextSystem& system = TextSystem::Get();
    std::unique_ptr<Face> face = system.GetFaceLoader().Load(std::move(data), faceIndex, pixelSize);
    if (face == nullptr) {
        Report(name, "not a font that can be drawn at the size");
        return std::nullopt;
    }
    std::optional<FontHandle> const font = system.AddFont(std::move(face));
    if (!font)
        Report(name, "there are too many fonts");
    return font;
}

} // namespace

std::optional<FontHandle> LoadFont(std::filesystem::path const& path, std::uint16_t pixelSize) {
    std::optional<FontData> data = ReadFontFile(path);
    if (!data) {
        Report(path.c_str(), "not a file that can be read, or larger than 128 MiB");
        return std::nullopt;
    }
    return AddFont(path.c_str(), *std::move(data), 0, pixelSize);
}

std::optional<FontHandle> LoadFontFromMemory(std::span<std::byte const> bytes, std::uint16_t pixelSize) {
    constexpr char const* name = "(in memory)";
    if (bytes.size() > kMaxFontFileSize) {
        Report(name, "larger than 128 MiB");
        return std::nullopt;
    }
    return AddFont(name, CopyFontData(bytes), 0, pixelSize);
}

std::optional<FontHandle> LoadSystemFont(std::string const& family, std::uint16_t pixelSize) {
    std::optional<SystemFont> font = TextSystem::Get().GetSystemFonts().Find(family);
    if (!font) {
        Report(family.c_str(), "the system has no font");
        return std::nullopt;
    }
    return AddFont(family.c_str(), std::move(font->data), font->faceIndex, pixelSize);
}

std::optional<FontHandle> LoadDefaultFont(std::uint16_t pixelSize) {
    return AddFont("(default)", DefaultFontData(), 0, pixelSize);
}

void DestroyFont(FontHandle font) {
    TextSystem::Get().DestroyFont(font);
}

FontInfo GetFontInfo(FontHandle font) {
    Font const* const found = TextSystem::Get().FindFont(font);
    if (found == nullptr)
        return {};
    FaceMetrics const& metrics = found->GetPrimaryFace().GetMetrics();
    return {found->GetPrimaryFace().GetPixelSize(), static_cast<float>(metrics.ascender),
            static_cast<float>(metrics.descender), static_cast<float>(metrics.lineGap)};
}

TextSize MeasureText(FontHandle font, char const* begin, char const* end) {
    Font* const found = TextSystem::Get().FindFont(font);
    std::string_view const text = ToView(begin, end);
    return found != nullptr && !text.empty() ? TextSystem::Get().Measure(*found, text) : TextSize();
}

TextBufferHandle CreateTextBuffer(TextBufferType type, FontHandle font) {
    return TextSystem::Get().CreateBuffer(type, font);
}

void SetPenPosition(TextBufferHandle text, float x, float y) {
    if (TextBuffer* const buffer = TextSystem::Get().FindBuffer(text)) {
        buffer->settings.x = x;
        buffer->settings.y = y;
    }
}

void SetTextColor(TextBufferHandle text, std::uint32_t rgba) {
    if (TextBuffer* const buffer = TextSystem::Get().FindBuffer(text))
        buffer->settings.rgba = rgba;
}

void AppendText(TextBufferHandle text, char const* begin, char const* end) {
    TextBuffer* const buffer = TextSystem::Get().FindBuffer(text);
    if (buffer != nullptr && begin != nullptr && (end == nullptr || begin <= end))
        TextSystem::Get().Append(*buffer, ToView(begin, end));
}

void AlignText(TextBufferHandle text, float horizontal, float vertical) {
    if (TextBuffer* const buffer = TextSystem::Get().FindBuffer(text)) {
        buffer->settings.horizontal = horizontal;
        buffer->settings.vertical = vertical;
    }
}

void SetTextAngle(TextBufferHandle text, float degrees) {
    if (TextBuffer* const buffer = TextSystem::Get().FindBuffer(text))
        buffer->settings.angle = degrees;
}

void SubmitTextBuffer(TextBufferHandle text, std::uint16_t viewId, std::int32_t depth) {
    if (TextBuffer* const buffer = TextSystem::Get().FindBuffer(text))
        TextSystem::Get().Submit(*buffer, viewId, depth);
}

void DestroyTextBuffer(TextBufferHandle text) {
    TextSystem::Get().DestroyBuffer(text);
}

} // namespace zarvex::zx3D
