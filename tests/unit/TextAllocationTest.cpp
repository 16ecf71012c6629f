// Text that was drawn before takes no memory from the heap.
#include "AllocationCounter.h"

#include <zx3D/Context.h>
#include <zx3D/Text.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace zarvex::zx3D;
using zarvex::testing::CountAllocations;
using zarvex::testing::CountAllocationsOfAUniform;
using zarvex::testing::CountAllocationsOfBindings;

namespace {

void DrawLabel(FontHandle font, TextBufferType type, std::string const& text, float x) {
    TextBufferHandle const buffer = CreateTextBuffer(type, font);
    SetPenPosition(buffer, x, 20.0f);
    SetTextColor(buffer, 0x12345678);
    AppendText(buffer, text.c_str());
    AlignText(buffer, 0.5f, 1.0f);
    SubmitTextBuffer(buffer, 3, 7);
    DestroyTextBuffer(buffer);
}

class TextAllocationTest : public testing::Test {
protected:
    void SetUp() override {
        Context::PreferRenderer(bgfx::RendererType::Noop);
        ASSERT_TRUE(Context::Initialize(ContextOptions::Create(
            nullptr, 64, 64, nullptr, ContextOptions::ThreadMode::MultiThreaded, false)));
    }
    void TearDown() override { Context::Shutdown(); }
};

} // namespace

TEST_F(TextAllocationTest, TheCounterCountsWhatTheLibraryAllocates) {
    long const before = CountAllocations();
    FontHandle const font = *LoadDefaultFont(12);
    EXPECT_GT(CountAllocations(), before);
    DestroyFont(font);
}

TEST_F(TextAllocationTest, AThousandLabelsDrawnBeforeAllocateNothing) {
    FontHandle const font = *LoadDefaultFont(12);
    std::vector<std::string> texts;
    for (int i = 0; i < 1000; ++i)
        texts.push_back("label number " + std::to_string(i) + " שלום\nof a thousand");
    auto const drawAll = [&](TextBufferType type) {
        for (std::string const& text : texts)
            DrawLabel(font, type, text, static_cast<float>(text.size()));
        bgfx::frame();
    };
    // In each of the frames the text's texture is bound, and nothing.
    long const ofBgfx = 6000 * CountAllocationsOfAUniform() + 6 * 2 * CountAllocationsOfBindings();
    drawAll(TextBufferType::Transient);
    drawAll(TextBufferType::Static);
    long const before = CountAllocations();
    for (int frame = 0; frame < 3; ++frame) {
        drawAll(TextBufferType::Transient);
        drawAll(TextBufferType::Static);
    }
    EXPECT_EQ(CountAllocations() - before, ofBgfx);
    DestroyFont(font);
}
