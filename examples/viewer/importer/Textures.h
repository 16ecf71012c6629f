// Colours at places of a scene's textures. The lighting program has none, so they go into the vertices.
#pragma once

#include "MeshFolder.h"

#include <assimp/scene.h>

#include <QImage>
#include <QStringList>

#include <map>

namespace viewer {

/// Loads the textures of a scene when they are asked for.
class Textures {
public:
    /// `folder`: where the file lies that the scene was read from. Textures that cannot be read are noted.
    Textures(aiScene const& scene, MeshFolder const& folder, QStringList& notes)
        : m_scene(scene),
          m_folder(folder),
          m_notes(notes) {}

    /// The texture of the diffuse colour; null when the material has none, or it cannot be read.
    QImage const* FindDiffuse(aiMaterial const& material);

private:
    QImage Load(aiString const& path) const;
    QImage ReadFile(std::string name) const;

    aiScene const& m_scene;
    MeshFolder const& m_folder;
    QStringList& m_notes;
    std::map<QString, QImage> m_images;
};

/// The colour at texture coordinates, which repeat beyond 0 to 1 and count from the bottom left.
QRgb SampleTexture(QImage const& texture, aiVector3D const& coordinates);

} // namespace viewer
