// More glyphs than the atlas holds, and backends beside each other. Each test has runs of its own.
#include "ImageComparison.h"
#include "OffscreenTarget.h"
#include "RenderTest.h"
#include "TextPainting.h"

#include <harness/LibraryRun.h>

#include <zx3D/Text.h>

using namespace zarvex;
using namespace zarvex::testing;

namespace {

std::string Utf8(char32_t codePoint) {
    return {static_cast<char>(0xC0 | codePoint >> 6), static_cast<char>(0x80 | (codePoint & 0x3F))};
}

/// Letters of the size fill about a page in fours.
constexpr int kLargeSize = 500;

using TextAtlasTest = BackendTest;

} // namespace

TEST_P(TextAtlasTest, WhatAFrameSubmittedStaysThoughItsPageIsReplaced) {
    OffscreenTarget target(QSize(400, 400));
    zx3DQt::BGFXRenderer renderer;
    for (int frame = 0; frame < 3; ++frame) {
        ASSERT_TRUE(renderer.StartFrame(target.GetFrameBuffer()));
        PixelView(target.GetViewport()).Submit(target.GetFrameBuffer());
        QImage expected = FilledImage(QSize(400, 400), Qt::black);
        zx3D::FontHandle const font = zx3D::LoadDefaultFont(kLargeSize).value();
        int count = 0;
        for (char32_t letter = 0x410; letter < 0x470; ++letter, ++count) {
            // Every eighth is seen, the others only fill the atlas.
            bool const isSeen = count % 8 == 0;
            float const place = isSeen ? -static_cast<float>(count) : 5000.0f;
            zx3D::TextBufferHandle const text = zx3D::CreateTextBuffer(zx3D::TextBufferType::Transient, font);
            zx3D::SetPenPosition(text, place, -150.0f);
            zx3D::AppendText(text, Utf8(letter).c_str());
            zx3D::SubmitTextBuffer(text, 0, 0);
            zx3D::DestroyTextBuffer(text);
            if (isSeen) {
                ReferenceLine const line = ShapeReferenceLine(DEFAULT_FONT_FILE, kLargeSize, Utf8(letter));
                Paint(expected, line, -count, -150 + line.ascender, Qt::white);
            }
        }
        zx3D::DestroyFont(font);
        EXPECT_TRUE(Matches(ReadBack(target.GetFrameBuffer()), expected)) << "frame " << frame;
    }
}

ZX3D_INSTANTIATE_BACKENDS(TextAtlasTest);

TEST(TextOnBothBackendsTest, PicturesDifferByAStepAtMost) {
    std::vector<QImage> pictures;
    for (bgfx::RendererType::Enum const backend : {bgfx::RendererType::OpenGL, bgfx::RendererType::Vulkan}) {
        LibraryRun const run(backend);
        OffscreenTarget target(QSize(500, 200));
        zx3DQt::BGFXRenderer renderer;
        ASSERT_TRUE(renderer.StartFrame(target.GetFrameBuffer()));
        PixelView(target.GetViewport(), QColor(40, 70, 90)).Submit(target.GetFrameBuffer());
        Draw({.text = "The quick brown fox\nשלום 123 עולם\nالسلام عليكم\te\u0301",
              .x = 3,
              .y = 4,
              .pixelSize = 22});
        Draw({.text = "half", .x = 250.3f, .y = 90.7f, .pixelSize = 71, .color = QColor(250, 130, 20, 99)});
        Draw({.text = "small", .x = 499, .y = 199, .pixelSize = 9, .horizontal = 1.0f, .vertical = 1.0f});
        pictures.push_back(ReadBack(target.GetFrameBuffer()));
    }
    EXPECT_TRUE(Matches(pictures[1], pictures[0]));
}
