// Looking for the files, and reading embedded textures.
#include "Textures.h"

#include "../MeshContent.h"

#include <QImageReader>

#include <algorithm>
#include <cmath>

namespace viewer {

namespace {

/// As many texels as a mesh's vertices can make use of. Making it smaller is what averages them.
constexpr int kLargestSide = 512;

QImage ReadEmbedded(aiTexture const& texture) {
    if (texture.mHeight == 0) // a compressed file of `mWidth` bytes
        return QImage::fromData(reinterpret_cast<uchar const*>(texture.pcData),
                                static_cast<int>(texture.mWidth));
    return QImage(reinterpret_cast<uchar const*>(texture.pcData), static_cast<int>(texture.mWidth),
                  static_cast<int>(texture.mHeight), QImage::Format_ARGB32)
        .copy();
}

int Texel(float coordinate, int size) {
    float const repeated = coordinate - std::floor(coordinate);
    return std::clamp(static_cast<int>(repeated * static_cast<float>(size)), 0, size - 1);
}

} // namespace

QImage const* Textures::FindDiffuse(aiMaterial const& material) {
    aiString path;
    if (material.GetTexture(aiTextureType_DIFFUSE, 0, &path) != AI_SUCCESS &&
        material.GetTexture(aiTextureType_BASE_COLOR, 0, &path) != AI_SUCCESS)
        return nullptr;
    auto const [entry, isNew] = m_images.try_emplace(path.C_Str());
    if (isNew)
        entry->second = Load(path);
    return entry->second.isNull() ? nullptr : &entry->second;
}

/// Files name their textures as they lay on the machine they were made on: tries the bare name, too.
QImage Textures::ReadFile(std::string name) const {
    std::ranges::replace(name, '\\', '/');
    QString obstacle;
    for (std::filesystem::path const& path :
         {std::filesystem::path(name), std::filesystem::path(name).filename()}) {
        try {
            std::unique_ptr<QFile> const file = m_folder.Open(path);
            // Formats without a signature are known by the name, which a file from a descriptor does not
            // tell.
            QImageReader reader(file.get(),
                                QByteArray::fromStdString(path.extension().string()).mid(1).toLower());
            if (QImage image = reader.read(); !image.isNull())
                return image;
            obstacle = obstacle.isEmpty() ? reader.errorString() : obstacle;
        } catch (FileError const& error) {
            obstacle = obstacle.isEmpty() ? error.what() : obstacle;
        }
    }
    m_notes << NoteOn(QString::fromStdString(name), obstacle);
    return {};
}

QImage Textures::Load(aiString const& path) const {
    aiTexture const* const embedded = m_scene.GetEmbeddedTexture(path.C_Str());
    QImage const image = embedded != nullptr ? ReadEmbedded(*embedded) : ReadFile(path.C_Str());
    if (std::max(image.width(), image.height()) <= kLargestSide)
        return image.convertToFormat(QImage::Format_ARGB32);
    return image.scaled(kLargestSide, kLargestSide, Qt::KeepAspectRatio, Qt::SmoothTransformation)
        .convertToFormat(QImage::Format_ARGB32);
}

QRgb SampleTexture(QImage const& texture, aiVector3D const& coordinates) {
    if (!std::isfinite(coordinates.x) || !std::isfinite(coordinates.y))
        return qRgb(255, 255, 255);
    return texture.pixel(Texel(coordinates.x, texture.width()),
                         Texel(1.0f - coordinates.y, texture.height()));
}

} // namespace viewer
