// The bytes of a font file.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>

namespace zarvex::zx3D {

/// A font file in memory. Copies share the bytes.
struct FontData {
    std::shared_ptr<std::byte const[]> owner; ///< null when the bytes live as long as the library
    std::span<std::byte const> bytes;
};

/// Larger font files are refused.
constexpr std::size_t kMaxFontFileSize = std::size_t(128) << 20;

/// The bytes, copied.
FontData CopyFontData(std::span<std::byte const> bytes);

/// A file's bytes; empty when it is no regular file, cannot be read, or is too large.
std::optional<FontData> ReadFontFile(std::filesystem::path const& path);

/// DejaVu Sans, which is built into the library.
FontData DefaultFontData();

} // namespace zarvex::zx3D
