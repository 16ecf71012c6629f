// Fonts that are damaged on purpose or by chance: nothing, or something bounded, but no crash.
#include <zx3D/Context.h>
#include <zx3D/Text.h>

#include <Fixtures.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

using namespace zarvex::zx3D;

namespace {

using HostileFontTest = ContextFixture;

using Bytes = std::vector<std::byte>;

Bytes ReadFile(char const* path) {
    std::ifstream file(path, std::ios::binary);
    std::string const text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    auto const* const bytes = reinterpret_cast<std::byte const*>(text.data());
    return {bytes, bytes + text.size()};
}

Bytes const& DejaVu() {
    static Bytes const bytes = ReadFile(DEFAULT_FONT_FILE);
    return bytes;
}

/// Loads the bytes as a font and, when that works, draws a text with it. True when it works.
bool TryOut(Bytes const& bytes) {
    std::optional<FontHandle> const font = LoadFontFromMemory(bytes, 14);
    if (!font)
        return false;
    FontInfo const info = GetFontInfo(*font);
    EXPECT_LE(info.ascender, 4.0f * 14.0f);
    EXPECT_GE(info.descender, -4.0f * 14.0f);
    EXPECT_LE(info.lineGap, 4.0f * 14.0f);
    TextBufferHandle const text = CreateTextBuffer(TextBufferType::Transient, *font);
    AppendText(text, "AVAST fi é\nשלום عليكم ∫");
    SubmitTextBuffer(text, 0, 0);
    DestroyTextBuffer(text);
    DestroyFont(*font);
    return true;
}

} // namespace

TEST_F(HostileFontTest, NoBytesAreNoFont) {
    EXPECT_FALSE(TryOut({}));
    ASSERT_EQ(m_callback.traces.size(), 1u);
    EXPECT_THAT(m_callback.traces.front(), testing::HasSubstr("not a font"));
}

TEST_F(HostileFontTest, AFontMayEndAnywhere) {
    Bytes const& whole = DejaVu();
    ASSERT_GT(whole.size(), 100'000u);
    std::mt19937 random(1);
    std::uniform_int_distribution<std::size_t> anySize(0, whole.size() - 1);
    for (std::size_t size = 0; size < 600; ++size)
        TryOut(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
    for (int i = 0; i < 200; ++i)
        TryOut(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(anySize(random))));
}

TEST_F(HostileFontTest, RandomBytesAreNoFont) {
    std::mt19937 random(2);
    for (std::size_t size = 1; size < 5000; size += 37) {
        Bytes bytes(size);
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::byte>(random()); });
        EXPECT_FALSE(TryOut(bytes));
    }
}

TEST_F(HostileFontTest, BitsMayBeFlipped) {
    std::mt19937 random(3);
    std::uniform_int_distribution<std::size_t> anywhere(0, DejaVu().size() - 1);
    std::uniform_int_distribution<std::size_t> inTheTables(0, 4000);
    int stillFonts = 0;
    for (int i = 0; i < 300; ++i) {
        Bytes bytes = DejaVu();
        for (int flip = 0; flip < 1 + i % 50; ++flip) {
            std::size_t const place = flip % 2 == 0 ? anywhere(random) : inTheTables(random);
            bytes[place] ^= static_cast<std::byte>(1 << random() % 8);
        }
        stillFonts += TryOut(bytes);
    }
    EXPECT_GT(stillFonts, 0) << "nothing of this was drawn with";
}

TEST_F(HostileFontTest, ACompressedFontThatAsksForGigabytesIsRefused) {
    // A WOFF header of one table that promises 4 GB of font.
    Bytes bytes(44 + 20 + 64);
    auto const put = [&bytes](std::size_t offset, std::uint32_t value) {
        for (int i = 0; i < 4; ++i)
            bytes[offset + i] = static_cast<std::byte>(value >> (24 - 8 * i));
    };
    put(0, 0x774F4646); // wOFF
    put(4, 0x00010000);
    put(8, static_cast<std::uint32_t>(bytes.size()));
    put(12, 0x00010000);
    put(16, 12 + 16 + 0xF0000000);
    put(44, 0x676C7966); // glyf
    put(48, 64);
    put(52, 64);
    put(56, 0xF0000000);
    EXPECT_FALSE(TryOut(bytes));
}
