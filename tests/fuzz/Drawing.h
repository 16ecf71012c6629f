// Drawing fuzzed texts on the stand-in for bgfx, and what must hold for whatever is drawn.
#pragma once

#include <zx3D/Text.h>

#include <cstdint>
#include <string_view>

/// A text buffer's content and how it is submitted.
struct FuzzedText {
    zarvex::zx3D::TextBufferType type = zarvex::zx3D::TextBufferType::Transient;
    zarvex::zx3D::FontHandle font;
    std::string_view content;
    std::string_view more = {}; ///< appended after it
    float x = 20.0f;
    float y = 30.0f;
    float horizontal = 0.0f;
    float vertical = 0.0f;
    std::uint32_t rgba = 0xffffffff;
};

/// Starts a context, the first time.
void StartContext();

/// Draws the text in a frame of its own. Aborts when bgfx was misused, or when a glyph is not on whole
/// pixels, not within the bounds or not from within a page of the atlas.
void DrawChecked(FuzzedText const& text);

/// Ends the process, as a crash does.
void Require(bool condition, char const* what);
