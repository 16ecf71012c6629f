// Reading font files.
#include "FontData.h"

#include <algorithm>
#include <fstream>

namespace zarvex::zx3D {

namespace {

std::shared_ptr<std::byte[]> Allocate(std::size_t size) {
    return std::shared_ptr<std::byte[]>(new std::byte[size]);
}

} // namespace

FontData CopyFontData(std::span<std::byte const> bytes) {
    auto const copy = Allocate(bytes.size());
    std::copy(bytes.begin(), bytes.end(), copy.get());
    return {copy, {copy.get(), bytes.size()}};
}

// Read rather than mapped: a mapped file that somebody shortens takes the process down.
std::optional<FontData> ReadFontFile(std::filesystem::path const& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) // reading a pipe or a device may never end
        return std::nullopt;
    std::uintmax_t const size = std::filesystem::file_size(path, error);
    if (error || size > kMaxFontFileSize)
        return std::nullopt;
    auto const data = Allocate(size);
    std::ifstream file(path, std::ios::binary);
    if (!file.read(reinterpret_cast<char*>(data.get()), static_cast<std::streamsize>(size)))
        return std::nullopt;
    return FontData{data, {data.get(), size}};
}

} // namespace zarvex::zx3D
