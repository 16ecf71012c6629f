// Open first, then ask the kernel where that is: names may change their meaning meanwhile.
#include "MeshFolder.h"

#include <algorithm>
#include <string>
#include <system_error>

namespace viewer {

namespace fs = std::filesystem;

namespace {

/// Without links; empty where the kernel does not tell.
fs::path PlaceOf(QFile const& file) {
    std::error_code error;
    return fs::read_symlink("/proc/self/fd/" + std::to_string(file.handle()), error);
}

bool Holds(fs::path const& folder, fs::path const& file) {
    return std::ranges::mismatch(folder, file).in1 == folder.end();
}

} // namespace

MeshFolder::MeshFolder(fs::path const& mesh) : m_mesh(mesh), m_folder(fs::canonical(mesh.parent_path())) {}

std::unique_ptr<QFile> MeshFolder::Open(fs::path const& path) const {
    std::unique_ptr<QFile> file = OpenRegularFile(m_folder / path);
    if (path != m_mesh && !Holds(m_folder, PlaceOf(*file)))
        throw FileError("It lies outside the mesh's folder");
    return file;
}

} // namespace viewer
