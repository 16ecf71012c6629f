// Through the public operations; the vertices are read again from what was recorded.
#include "Drawing.h"

#include <Recorder.h>

#include <zx3D/Context.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>

using namespace zarvex::zx3D;

namespace {

/// Pixels of the target, sixteenths of a texel, colour.
struct TextVertex {
    float x, y;
    std::int16_t u, v;
    std::uint8_t color[4];
};

constexpr std::size_t kVerticesPerQuad = 4;
constexpr int kTexelSteps = 16;
constexpr int kPageSize = 1024 * kTexelSteps;
constexpr float kFarthest = 1 << 26;      // three extents of a text: place, line, glyph
constexpr float kExactlyPlaced = 1 << 23; // sums of floats are whole pixels so far

bool IsWholePixel(float position) {
    return std::abs(position) <= kFarthest && position == std::floor(position);
}

bool IsInPage(std::int16_t texel) {
    return texel >= 0 && texel <= kPageSize;
}

void CheckQuad(TextVertex const* corners) {
    for (std::size_t i = 0; i < kVerticesPerQuad; ++i) {
        Require(IsWholePixel(corners[i].x) && IsWholePixel(corners[i].y), "a glyph is on whole pixels");
        Require(IsInPage(corners[i].u) && IsInPage(corners[i].v), "a glyph comes from within a page");
    }
    if (std::abs(corners[0].x) > kExactlyPlaced || std::abs(corners[0].y) > kExactlyPlaced)
        return;
    float const width = corners[2].x - corners[0].x;
    float const height = corners[2].y - corners[0].y;
    Require(width > 0.0f && height > 0.0f, "a glyph that is drawn has a size");
    Require(width * kTexelSteps == static_cast<float>(corners[2].u - corners[0].u) &&
                height * kTexelSteps == static_cast<float>(corners[2].v - corners[0].v),
            "a texel is a pixel");
}

void CheckDraws() {
    for (recorder::Draw const& draw : recorder::Draws()) {
        std::vector<TextVertex> const vertices = draw.VerticesAs<TextVertex>();
        Require(!vertices.empty() && vertices.size() % kVerticesPerQuad == 0, "whole quads are drawn");
        for (std::size_t i = 0; i < vertices.size(); i += kVerticesPerQuad)
            CheckQuad(&vertices[i]);
    }
    for (std::string const& error : recorder::Errors())
        Require(false, error.c_str());
}

void Append(TextBufferHandle buffer, std::string_view text) {
    AppendText(buffer, text.data(), text.data() + text.size());
}

} // namespace

void StartContext() {
    if (Context::IsInitialized())
        return;
    Context::PreferRenderer(bgfx::RendererType::Noop);
    Require(Context::Initialize(ContextOptions::Create(nullptr, 64, 64, nullptr,
                                                       ContextOptions::ThreadMode::SingleThreaded, false)),
            "a context starts");
}

void DrawChecked(FuzzedText const& text) {
    recorder::ClearCalls();
    TextBufferHandle const buffer = CreateTextBuffer(text.type, text.font);
    SetPenPosition(buffer, text.x, text.y);
    SetTextColor(buffer, text.rgba);
    AlignText(buffer, text.horizontal, text.vertical);
    Append(buffer, text.content);
    Append(buffer, text.more);
    SubmitTextBuffer(buffer, 0, 0);
    SubmitTextBuffer(buffer, 1, -1); // again from the cache
    DestroyTextBuffer(buffer);
    CheckDraws();
    bgfx::frame();
}

void Require(bool condition, char const* what) {
    if (condition)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}
