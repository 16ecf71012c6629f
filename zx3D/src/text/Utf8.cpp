// Well-formed sequences as table 3-7 of the Unicode standard lists them.
#include "Utf8.h"

#include <algorithm>
#include <cstdint>

namespace zarvex::zx3D {

namespace {

std::uint8_t ByteAt(std::string_view bytes, std::size_t index) {
    return static_cast<std::uint8_t>(bytes[index]);
}

/// The length that a sequence's first byte promises; 0 when it begins none.
std::size_t SequenceLength(std::uint8_t lead) {
    if (lead < 0x80)
        return 1;
    if (lead < 0xC2)
        return 0;
    if (lead < 0xE0)
        return 2;
    if (lead < 0xF0)
        return 3;
    return lead < 0xF5 ? 4 : 0;
}

/// False for second bytes that would make an overlong form, a surrogate or a code point beyond U+10FFFF.
bool IsSecondByte(std::uint8_t lead, std::uint8_t byte) {
    std::uint8_t const lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    std::uint8_t const highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    return byte >= lowest && byte <= highest;
}

bool IsContinuation(std::uint8_t byte) {
    return (byte & 0xC0) == 0x80;
}

/// Decodes one code point, or one malformed part, and moves past it.
char32_t DecodeNext(std::string_view& bytes) {
    std::uint8_t const lead = ByteAt(bytes, 0);
    std::size_t const length = SequenceLength(lead);
    char32_t codePoint = length == 1 ? lead : lead & (0x7Fu >> length);
    std::size_t read = 1;
    while (read < length && read < bytes.size()) {
        std::uint8_t const byte = ByteAt(bytes, read);
        if (read == 1 ? !IsSecondByte(lead, byte) : !IsContinuation(byte))
            break;
        codePoint = codePoint << 6 | (byte & 0x3Fu);
        ++read;
    }
    bytes.remove_prefix(read);
    return read == length ? codePoint : kReplacementCharacter;
}

} // namespace

void AppendDecodedUtf8(std::string_view bytes, std::u32string& codePoints) {
    while (!bytes.empty())
        codePoints.push_back(DecodeNext(bytes));
}

std::string_view TruncateUtf8(std::string_view bytes, std::size_t size) {
    if (bytes.size() <= size)
        return bytes;
    constexpr std::size_t longestTail = 3;
    std::size_t cut = size;
    while (cut > 0 && size - cut < longestTail && IsContinuation(ByteAt(bytes, cut)))
        --cut;
    // Continuation bytes without a beginning belong to nothing, and may be cut anywhere.
    return bytes.substr(0, IsContinuation(ByteAt(bytes, cut)) ? size : cut);
}

} // namespace zarvex::zx3D
