// Decoding UTF-8: what is well formed, and what becomes U+FFFD.
#include "Utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

using namespace zarvex::zx3D;

namespace {

std::u32string Decode(std::string_view bytes) {
    std::u32string text;
    AppendDecodedUtf8(bytes, text);
    return text;
}

/// Encodes any number below 2^21, valid or not.
std::string Encode(char32_t codePoint) {
    auto const tail = [codePoint](int shift) {
        return static_cast<char>(0x80 | (codePoint >> shift & 0x3F));
    };
    if (codePoint < 0x80)
        return {static_cast<char>(codePoint)};
    if (codePoint < 0x800)
        return {static_cast<char>(0xC0 | codePoint >> 6), tail(0)};
    if (codePoint < 0x10000)
        return {static_cast<char>(0xE0 | codePoint >> 12), tail(6), tail(0)};
    return {static_cast<char>(0xF0 | codePoint >> 18), tail(12), tail(6), tail(0)};
}

} // namespace

TEST(Utf8Test, EveryCodePointIsDecoded) {
    for (char32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
        bool const isSurrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
        std::u32string const expected =
            isSurrogate ? std::u32string(3, kReplacementCharacter) : std::u32string(1, codePoint);
        ASSERT_EQ(Decode(Encode(codePoint)), expected) << static_cast<std::uint32_t>(codePoint);
    }
}

TEST(Utf8Test, EachMaximalMalformedPartBecomesOneReplacement) {
    // The examples of the Unicode standard, tables 3-8 to 3-11.
    EXPECT_EQ(Decode("\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41"),
              U"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\x41");
    EXPECT_EQ(Decode("\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41"),
              U"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\x41");
    EXPECT_EQ(Decode("\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42"),
              U"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\x41\uFFFD\uFFFD\x42");
    EXPECT_EQ(Decode("\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41"), U"\uFFFD\uFFFD\uFFFD\uFFFD\x41");
}

TEST(Utf8Test, ATextThatEndsWithinASequenceEndsWithOneReplacement) {
    EXPECT_EQ(Decode("a\xC3"), U"a\uFFFD");
    EXPECT_EQ(Decode("a\xE2\x82"), U"a\uFFFD");
    EXPECT_EQ(Decode("a\xF0\x9F\x98"), U"a\uFFFD");
}

TEST(Utf8Test, ZeroBytesAreCharacters) {
    EXPECT_EQ(Decode(std::string_view("a\0b", 3)), std::u32string(U"a\0b", 3));
}

TEST(Utf8Test, EveryPairOfBytesDecodesToAtLeastOneCodePointPerSequence) {
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            std::string const bytes = {static_cast<char>(first), static_cast<char>(second)};
            std::size_t const count = Decode(bytes).size();
            EXPECT_TRUE(count == 1 || count == 2);
        }
    }
}

TEST(Utf8Test, TruncationKeepsSequencesWhole) {
    std::string const text = "aé€😀";
    EXPECT_EQ(TruncateUtf8(text, 100), text);
    EXPECT_EQ(TruncateUtf8(text, 10), text);
    for (std::size_t size : {6, 7, 8, 9})
        EXPECT_EQ(TruncateUtf8(text, size), "aé€");
    for (std::size_t size : {3, 4, 5})
        EXPECT_EQ(TruncateUtf8(text, size), "aé");
    EXPECT_EQ(TruncateUtf8(text, 2), "a");
    EXPECT_EQ(TruncateUtf8(text, 1), "a");
    EXPECT_EQ(TruncateUtf8(text, 0), "");
}

TEST(Utf8Test, TruncationCutsStrayBytesAnywhere) {
    std::string const stray(10, '\x80');
    EXPECT_EQ(TruncateUtf8(stray, 7).size(), 7u);
    EXPECT_EQ(TruncateUtf8(stray, 2).size(), 2u);
}
