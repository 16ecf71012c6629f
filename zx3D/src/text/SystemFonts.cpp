// Questions to fontconfig.
#include "SystemFonts.h"

namespace zarvex::zx3D {

namespace {

// Sorting all fonts of a system takes tens of milliseconds and the result some memory.
constexpr std::size_t kMaxLooks = 64;

/// Outline fonts in one colour, as far as there are any.
void PreferDrawable(FcPattern* pattern) {
    FcPatternAddBool(pattern, FC_SCALABLE, FcTrue);
    FcPatternAddBool(pattern, FC_COLOR, FcFalse);
}

FontPatternOwner PatternOf(FontLook const& look) {
    FontPatternOwner pattern(FcPatternCreate());
    FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<FcChar8 const*>(look.family.c_str()));
    FcPatternAddInteger(pattern.get(), FC_WEIGHT, look.isBold ? FC_WEIGHT_BOLD : FC_WEIGHT_REGULAR);
    FcPatternAddInteger(pattern.get(), FC_SLANT, look.isItalic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    PreferDrawable(pattern.get());
    return pattern;
}

bool HasCodePoint(FcPattern* font, char32_t codePoint) {
    FcCharSet* characters = nullptr;
    return FcPatternGetCharSet(font, FC_CHARSET, 0, &characters) == FcResultMatch &&
           FcCharSetHasChar(characters, codePoint);
}

} // namespace

std::optional<SystemFont> SystemFonts::Find(std::string const& pattern) {
    FontPatternOwner const wanted(FcNameParse(reinterpret_cast<FcChar8 const*>(pattern.c_str())));
    if (wanted == nullptr)
        return std::nullopt;
    PreferDrawable(wanted.get());
    FcConfigSubstitute(GetConfig(), wanted.get(), FcMatchPattern);
    FcDefaultSubstitute(wanted.get());
    FcResult result = FcResultNoMatch;
    FontPatternOwner const found(FcFontMatch(GetConfig(), wanted.get(), &result));
    return found != nullptr ? Load(found.get()) : std::nullopt;
}

std::optional<int> SystemFonts::FindFallback(FontLook const& look, char32_t codePoint, int begin) {
    FcFontSet const* const fonts = GetFallbacks(look);
    for (int position = begin; fonts != nullptr && position < fonts->nfont; ++position) {
        if (HasCodePoint(fonts->fonts[position], codePoint))
            return position;
    }
    return std::nullopt;
}

std::optional<SystemFont> SystemFonts::LoadFallback(FontLook const& look, int position) {
    FcFontSet const* const fonts = GetFallbacks(look);
    return fonts != nullptr ? Load(fonts->fonts[position]) : std::nullopt;
}

FcConfig* SystemFonts::GetConfig() {
    if (m_config == nullptr)
        m_config.reset(FcConfigReference(nullptr)); // the process's own, shared with the toolkit
    return m_config.get();
}

FcFontSet const* SystemFonts::GetFallbacks(FontLook const& look) {
    if (auto const known = m_fallbacks.find(look); known != m_fallbacks.end())
        return known->second.get();
    if (m_fallbacks.size() == kMaxLooks)
        m_fallbacks.clear();
    FontPatternOwner const pattern = PatternOf(look);
    FcConfigSubstitute(GetConfig(), pattern.get(), FcMatchPattern);
    FcDefaultSubstitute(pattern.get());
    FcResult result = FcResultNoMatch;
    constexpr FcBool withoutThoseThatAddNothing = FcTrue;
    FontSetOwner fonts(FcFontSort(GetConfig(), pattern.get(), withoutThoseThatAddNothing, nullptr, &result));
    return m_fallbacks.emplace(look, std::move(fonts)).first->second.get();
}

std::optional<SystemFont> SystemFonts::Load(FcPattern* pattern) {
    FcChar8* path = nullptr;
    if (FcPatternGetString(pattern, FC_FILE, 0, &path) != FcResultMatch)
        return std::nullopt;
    int faceIndex = 0;
    FcPatternGetInteger(pattern, FC_INDEX, 0, &faceIndex);
    std::optional<FontData> data = Read(reinterpret_cast<char const*>(path));
    if (!data)
        return std::nullopt;
    return SystemFont{*std::move(data), faceIndex};
}

std::optional<FontData> SystemFonts::Read(std::string const& path) {
    if (auto const file = m_files.find(path); file != m_files.end()) {
        if (std::shared_ptr<std::byte const[]> owner = file->second.owner.lock())
            return FontData{owner, {owner.get(), file->second.size}};
    }
    std::erase_if(m_files, [](auto const& file) { return file.second.owner.expired(); });
    std::optional<FontData> data = ReadFontFile(path);
    if (data)
        m_files[path] = {data->owner, data->bytes.size()};
    return data;
}

} // namespace zarvex::zx3D
