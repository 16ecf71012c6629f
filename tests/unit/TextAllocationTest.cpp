// What is drawn in every frame takes no memory from the heap once it was drawn before.
#include <zx3D/Context.h>
#include <zx3D/Text.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

using namespace zarvex::zx3D;

namespace {

// Of the thread that calls the library; bgfx's own memory does not come from operator new.
thread_local long allocations = 0;

void* Allocate(std::size_t size) {
    ++allocations;
    if (void* const block = std::malloc(size == 0 ? 1 : size))
        return block;
    throw std::bad_alloc();
}

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

void* operator new(std::size_t size) {
    return Allocate(size);
}
void* operator new[](std::size_t size) {
    return Allocate(size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}

TEST_F(TextAllocationTest, TheCounterCountsWhatTheLibraryAllocates) {
    long const before = allocations;
    FontHandle const font = *LoadDefaultFont(12);
    EXPECT_GT(allocations, before);
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
    drawAll(TextBufferType::Transient);
    drawAll(TextBufferType::Static);
    long const before = allocations;
    for (int frame = 0; frame < 3; ++frame) {
        drawAll(TextBufferType::Transient);
        drawAll(TextBufferType::Static);
    }
    EXPECT_EQ(allocations, before);
    DestroyFont(font);
}
