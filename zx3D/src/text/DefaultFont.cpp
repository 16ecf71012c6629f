// The font that is always there: a file that the assembler copies into the library.
#include "FontData.h"

#include <cstdint>

asm(".pushsection .rodata\n"
    ".balign 16\n"
    ".globl zx3d_default_font\n"
    ".hidden zx3d_default_font\n"
    "zx3d_default_font:\n"
    ".incbin \"" ZX3D_DEFAULT_FONT_FILE "\"\n"
    "1:\n"
    ".balign 8\n"
    ".globl zx3d_default_font_size\n"
    ".hidden zx3d_default_font_size\n"
    "zx3d_default_font_size:\n"
    ".quad 1b - zx3d_default_font\n"
    ".popsection\n");

extern "C" {
extern std::byte const zx3d_default_font[] __attribute__((visibility("hidden")));
extern std::uint64_t const zx3d_default_font_size __attribute__((visibility("hidden")));
}

namespace zarvex::zx3D {

FontData DefaultFontData() {
    return {nullptr, {zx3d_default_font, zx3d_default_font_size}};
}

} // namespace zarvex::zx3D
