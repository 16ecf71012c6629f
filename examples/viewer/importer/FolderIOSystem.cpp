// Files are mapped, and read as assimp reads from memory.
#include "FolderIOSystem.h"

#include "../MeshContent.h"

#include <assimp/MemoryIOWrapper.h>

#include <system_error>
#include <utility>

namespace viewer {

namespace {

class MappedStream : public Assimp::MemoryIOStream {
public:
    MappedStream(std::unique_ptr<QFile> file, uchar const* bytes)
        : MemoryIOStream(bytes, static_cast<std::size_t>(file->size())),
          m_file(std::move(file)) {}

private:
    std::unique_ptr<QFile> m_file;
};

} // namespace

std::unique_ptr<QFile> FolderIOSystem::TryOpen(char const* path) const {
    std::error_code error;
    if (!std::filesystem::exists(path, error))
        return nullptr; // importers try several names
    try {
        return m_folder.Open(path);
    } catch (FileError const& obstacle) {
        m_notes << NoteOn(path, obstacle.what());
        return nullptr;
    }
}

bool FolderIOSystem::Exists(char const* path) const {
    return TryOpen(path) != nullptr;
}

Assimp::IOStream* FolderIOSystem::Open(char const* path, char const*) {
    std::unique_ptr<QFile> file = TryOpen(path);
    if (file == nullptr)
        return nullptr;
    uchar const* const bytes = file->map(0, file->size());
    return bytes != nullptr ? new MappedStream(std::move(file), bytes) : nullptr;
}

} // namespace viewer
