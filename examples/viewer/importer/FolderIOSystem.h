// How assimp opens files: as the mesh's folder lets it.
#pragma once

#include "MeshFolder.h"

#include <assimp/IOStream.hpp>
#include <assimp/IOSystem.hpp>

#include <QStringList>

namespace viewer {

/// Of use for reading only. Files that are there and are refused are noted.
class FolderIOSystem : public Assimp::IOSystem {
public:
    FolderIOSystem(MeshFolder const& folder, QStringList& notes) : m_folder(folder), m_notes(notes) {}

    bool Exists(char const* path) const override;
    char getOsSeparator() const override { return '/'; }
    Assimp::IOStream* Open(char const* path, char const* mode) override;
    void Close(Assimp::IOStream* stream) override { delete stream; }

private:
    /// Null when it cannot be read.
    std::unique_ptr<QFile> TryOpen(char const* path) const;

    MeshFolder const& m_folder;
    QStringList& m_notes;
};

} // namespace viewer
