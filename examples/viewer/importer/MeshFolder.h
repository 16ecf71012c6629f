// The files that a mesh may bring along.
#pragma once

#include "../RegularFile.h"

#include <filesystem>
#include <memory>

namespace viewer {

/// A mesh, and what lies in its folder and below: nothing else is opened, whatever a file names.
class MeshFolder {
public:
    /// `mesh`: absolute. It may be a link to anywhere: a person chose it.
    explicit MeshFolder(std::filesystem::path const& mesh);

    /// Relative paths begin in the folder. Links are followed, but not out of it. Throws `FileError`.
    std::unique_ptr<QFile> Open(std::filesystem::path const& path) const;

private:
    std::filesystem::path m_mesh;
    std::filesystem::path m_folder; ///< without links
};

} // namespace viewer
