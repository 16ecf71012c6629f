// Reading UTF-8 that may be anything.
#pragma once

#include <string>
#include <string_view>

namespace zarvex::zx3D {

constexpr char32_t kReplacementCharacter = 0xFFFD;

/// Appends the code points of UTF-8 text. Each maximal part of a malformed sequence that could have begun a
/// well-formed one becomes one U+FFFD, as browsers do; so does every other stray byte.
void AppendDecodedUtf8(std::string_view bytes, std::u32string& codePoints);

/// The longest beginning of at most `size` bytes that does not cut a well-formed sequence in two.
std::string_view TruncateUtf8(std::string_view bytes, std::size_t size);

} // namespace zarvex::zx3D
