// Owners of the objects of FreeType, HarfBuzz and fontconfig.
#pragma once

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include <hb.h>
#include FT_FREETYPE_H
#include FT_MODULE_H

#include <memory>

namespace zarvex::zx3D {

/// Calls the library's own function.
template<auto Function>
struct Release {
    template<typename T>
    void operator()(T* object) const {
        Function(object);
    }
};

using FreeTypeFaceOwner = std::unique_ptr<FT_FaceRec_, Release<FT_Done_Face>>;
using FreeTypeLibraryOwner = std::unique_ptr<FT_LibraryRec_, Release<FT_Done_Library>>;

using HarfBuzzBufferOwner = std::unique_ptr<hb_buffer_t, Release<hb_buffer_destroy>>;
using HarfBuzzFontOwner = std::unique_ptr<hb_font_t, Release<hb_font_destroy>>;

using FontconfigOwner = std::unique_ptr<FcConfig, Release<FcConfigDestroy>>;
using FontPatternOwner = std::unique_ptr<FcPattern, Release<FcPatternDestroy>>;
using FontSetOwner = std::unique_ptr<FcFontSet, Release<FcFontSetDestroy>>;

} // namespace zarvex::zx3D
