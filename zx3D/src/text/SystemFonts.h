// The fonts that are installed.
#pragma once

#include "FontData.h"
#include "LibraryOwners.h"

#include <map>
#include <optional>
#include <string>

namespace zarvex::zx3D {

/// One face of an installed font file.
struct SystemFont {
    FontData data;
    long faceIndex = 0;
};

/// What a substitute should look like.
struct FontLook {
    std::string family;
    bool isBold = false;
    bool isItalic = false;

    friend auto operator<=>(FontLook const&, FontLook const&) = default;
};

/// Asks fontconfig, which is started by the first question.
class SystemFonts {
public:
    SystemFonts() = default;

    SystemFonts(SystemFonts const&) = delete;
    SystemFonts& operator=(SystemFonts const&) = delete;

    /// The font nearest to a fontconfig pattern such as "Noto Sans:bold". Empty when the pattern cannot be
    /// read or there is no font.
    std::optional<SystemFont> Find(std::string const& pattern);

    /// The position of the first font from `begin` on that has the code point, in the order of similarity to
    /// the look; empty when there is none.
    std::optional<int> FindFallback(FontLook const& look, char32_t codePoint, int begin);

    /// The font at a position that `FindFallback` gave.
    std::optional<SystemFont> LoadFallback(FontLook const& look, int position);

private:
    FcConfig* GetConfig();
    FcFontSet const* GetFallbacks(FontLook const& look);
    std::optional<SystemFont> Load(FcPattern* pattern);
    std::optional<FontData> Read(std::string const& path);

    /// A file that some face uses. All sizes of a font share it.
    struct File {
        std::weak_ptr<std::byte const[]> owner;
        std::size_t size = 0;
    };

    FontconfigOwner m_config;
    std::map<FontLook, FontSetOwner> m_fallbacks;
    std::map<std::string, File> m_files;
};

} // namespace zarvex::zx3D
