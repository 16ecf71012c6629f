// Reading the file, and walking through its scene.
#include "Import.h"

#include "../SplitMesh.h"
#include "FolderIOSystem.h"
#include "Materials.h"
#include "Textures.h"

#include <assimp/Importer.hpp>
#include <assimp/ProgressHandler.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <QFileInfo>

#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace viewer {

namespace {

/// Reading is the larger part of an import, what is done here afterwards the smaller.
constexpr float kShareOfReading = 0.8f;

/// Edges between faces that meet at a larger angle stay edges where the file has no normals, degrees.
constexpr float kSmoothingAngle = 50.0f;

class ProgressReport : public Assimp::ProgressHandler {
public:
    explicit ProgressReport(std::function<void(int)> const& onProgress) : m_onProgress(onProgress) {}

    bool Update(float fraction) override {
        if (fraction >= 0.0f)
            m_onProgress(static_cast<int>(100.0f * kShareOfReading * std::min(fraction, 1.0f)));
        return true;
    }

private:
    std::function<void(int)> const& m_onProgress;
};

/// Faces of one material with the same number of corners, from all meshes.
struct Group {
    std::vector<MeshVertex> vertices;
    std::vector<std::uint32_t> indices;
};

using GroupKey = std::pair<unsigned, unsigned>; // material, corners
using Groups = std::map<GroupKey, Group>;

/// A mesh where a node of the scene puts it.
struct PlacedMesh {
    aiMesh const* mesh = nullptr;
    aiMatrix4x4 transform;
};

std::vector<PlacedMesh> PlaceMeshes(aiScene const& scene) {
    std::vector<PlacedMesh> placed;
    std::vector<std::pair<aiNode const*, aiMatrix4x4>> nodes{{scene.mRootNode, aiMatrix4x4()}};
    while (!nodes.empty()) {
        auto const [node, parent] = nodes.back();
        nodes.pop_back();
        if (node == nullptr)
            continue;
        aiMatrix4x4 const transform = parent * node->mTransformation;
        for (unsigned i = 0; i < node->mNumMeshes; ++i) {
            if (node->mMeshes[i] >= scene.mNumMeshes)
                throw ImportError("A node refers to a mesh that is not there.");
            placed.push_back({scene.mMeshes[node->mMeshes[i]], transform});
        }
        for (unsigned i = 0; i < node->mNumChildren; ++i)
            nodes.emplace_back(node->mChildren[i], transform);
    }
    return placed;
}

bx::Vec3 ToVec3(aiVector3D const& vector) {
    return {vector.x, vector.y, vector.z};
}

/// Transforms normals, whose length does not matter.
aiMatrix3x3 NormalTransform(aiMatrix4x4 const& transform) {
    aiMatrix3x3 matrix(transform);
    return matrix.Inverse().Transpose();
}

/// Where the colours of a mesh's vertices come from: from the mesh itself, from a texture, or from nowhere.
class VertexColors {
public:
    VertexColors(aiMesh const& mesh, QImage const* texture)
        : m_mesh(mesh),
          m_texture(mesh.HasTextureCoords(0) && !mesh.HasVertexColors(0) ? texture : nullptr) {}

    zarvex::zx3D::Color At(unsigned vertex) const {
        if (m_mesh.HasVertexColors(0)) {
            aiColor4D const& color = m_mesh.mColors[0][vertex];
            return {color.r, color.g, color.b, color.a};
        }
        if (m_texture != nullptr) {
            QColor const color = SampleTexture(*m_texture, m_mesh.mTextureCoords[0][vertex]);
            return {color.redF(), color.greenF(), color.blueF(), 1.0f};
        }
        return {1.0f, 1.0f, 1.0f, 1.0f};
    }

private:
    aiMesh const& m_mesh;
    QImage const* m_texture;
};

bool HasColors(aiMesh const& mesh, QImage const* texture) {
    return mesh.HasVertexColors(0) || (texture != nullptr && mesh.HasTextureCoords(0));
}

/// Beyond every group's end, where the mesh has no such vertex: such primitives are left out.
std::uint32_t IndexInGroup(unsigned index, aiMesh const& mesh, std::uint32_t firstVertex) {
    return index < mesh.mNumVertices ? firstVertex + index : std::numeric_limits<std::uint32_t>::max();
}

void Append(Groups& groups, PlacedMesh const& placed, VertexColors const& colors) {
    aiMesh const& mesh = *placed.mesh;
    aiMatrix3x3 const normalTransform = NormalTransform(placed.transform);
    // Most meshes have faces of one kind; where they are mixed each kind gets the vertices.
    std::map<unsigned, std::uint32_t> firstVertices;
    for (unsigned i = 0; i < mesh.mNumFaces; ++i) {
        aiFace const& face = mesh.mFaces[i];
        if (face.mNumIndices < 1 || face.mNumIndices > 3)
            continue;
        Group& group = groups[{mesh.mMaterialIndex, face.mNumIndices}];
        auto const [first, isNew] =
            firstVertices.try_emplace(face.mNumIndices, static_cast<std::uint32_t>(group.vertices.size()));
        if (isNew) {
            for (unsigned v = 0; v < mesh.mNumVertices; ++v) {
                aiVector3D const normal =
                    mesh.HasNormals() ? normalTransform * mesh.mNormals[v] : aiVector3D();
                group.vertices.emplace_back(ToVec3(placed.transform * mesh.mVertices[v]), ToVec3(normal),
                                            colors.At(v));
            }
        }
        for (unsigned corner = 0; corner < face.mNumIndices; ++corner)
            group.indices.push_back(IndexInGroup(face.mIndices[corner], mesh, first->second));
    }
}

/// Files of these formats come from drawing offices and workshops, where z is up; elsewhere y is.
bool IsZUp(QString const& path) {
    static std::set<QString> const formats{"stl", "3mf", "dxf", "amf", "off"};
    return formats.contains(QFileInfo(path).suffix().toLower());
}

/// Reads the file; the scene belongs to the importer.
aiScene const& Read(Assimp::Importer& importer, QString const& path) {
    unsigned steps = aiProcess_Triangulate | aiProcess_GenSmoothNormals | aiProcess_SortByPType;
    importer.SetPropertyFloat(AI_CONFIG_PP_GSN_MAX_SMOOTHING_ANGLE, kSmoothingAngle);
    // STL files give each triangle a normal of its own; curved surfaces are better off without.
    if (QFileInfo(path).suffix().toLower() == "stl") {
        importer.SetPropertyInteger(AI_CONFIG_PP_RVC_FLAGS, aiComponent_NORMALS);
        steps |= aiProcess_RemoveComponent;
    }
    aiScene const* const scene = importer.ReadFile(QFile::encodeName(path).toStdString(), steps);
    if (scene == nullptr)
        throw ImportError(importer.GetErrorString());
    return *scene;
}

} // namespace

MeshContent Import(QString const& path, std::function<void(int)> const& onProgress) {
    ProgressReport report(onProgress);
    Assimp::Importer importer;
    importer.SetProgressHandler(&report);
    MeshFolder const folder(QFile::encodeName(path).toStdString());
    QStringList notes;
    importer.SetIOHandler(new FolderIOSystem(folder, notes));
    auto const releaseReport = qScopeGuard([&] { importer.SetProgressHandler(nullptr); });
    aiScene const& scene = Read(importer, path);

    if (scene.mNumMaterials > kMaxMaterials)
        throw ImportError("It has more than " + std::to_string(kMaxMaterials) + " materials");
    Textures textures(scene, folder, notes);
    MeshContent content{.zIsUp = IsZUp(path), .materials = {}, .pieces = {}, .notes = {}};
    content.materials.resize(std::max(scene.mNumMaterials, 1u));
    Groups groups;
    for (PlacedMesh const& placed : PlaceMeshes(scene)) {
        if (placed.mesh->mMaterialIndex >= scene.mNumMaterials)
            throw ImportError("A mesh refers to a material that is not there.");
        aiMaterial const& material = *scene.mMaterials[placed.mesh->mMaterialIndex];
        QImage const* const texture = textures.FindDiffuse(material);
        content.materials[placed.mesh->mMaterialIndex] =
            ToMeshMaterial(material, HasColors(*placed.mesh, texture));
        Append(groups, placed, VertexColors(*placed.mesh, texture));
    }
    importer.FreeScene();

    std::size_t done = 0;
    for (auto& [key, group] : groups) {
        for (MeshPiece& piece : SplitMesh(group.vertices, group.indices, key.second)) {
            piece.material = key.first;
            content.pieces.push_back(std::move(piece));
        }
        group = Group();
        ++done;
        onProgress(static_cast<int>(
            100.0f * std::lerp(kShareOfReading, 1.0f, static_cast<float>(done) / groups.size())));
    }
    if (content.pieces.empty())
        throw ImportError("There is nothing to draw in it");
    notes.removeDuplicates();
    content.notes = notes;
    return content;
}

} // namespace viewer
