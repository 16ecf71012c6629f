// What files say, and a good guess where they say nothing, or nonsense.
#include "Materials.h"

#include <assimp/GltfMaterial.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>

namespace viewer {

namespace {

std::optional<aiColor4D> FindColor(aiMaterial const& material, char const* key, unsigned type,
                                   unsigned index) {
    aiColor4D color;
    if (material.Get(key, type, index, color) != AI_SUCCESS)
        return std::nullopt;
    for (float* channel : {&color.r, &color.g, &color.b, &color.a})
        *channel = std::isfinite(*channel) ? std::clamp(*channel, 0.0f, 1.0f) : 1.0f;
    return color;
}

std::optional<float> FindNumber(aiMaterial const& material, char const* key, unsigned type, unsigned index) {
    float number = 0.0f;
    if (material.Get(key, type, index, number) != AI_SUCCESS || !std::isfinite(number))
        return std::nullopt;
    return number;
}

void Set(float (&values)[4], aiColor4D const& color) {
    values[0] = color.r;
    values[1] = color.g;
    values[2] = color.b;
}

/// What the screen shows for a share of the light: files that are rendered physically give shares.
float ToDisplay(float linear) {
    return std::pow(linear, 1.0f / 2.2f);
}

aiColor4D ToDisplay(aiColor4D const& linear) {
    return {ToDisplay(linear.r), ToDisplay(linear.g), ToDisplay(linear.b), linear.a};
}

float Brightness(aiColor4D const& color) {
    return std::max({color.r, color.g, color.b});
}

void SetDiffuse(MeshMaterial& result, aiColor4D const& color) {
    Set(result.diffuse, color);
    Set(result.ambient, color);
}

/// A rough surface spreads its highlights, a metal gives them its colour.
void SetPhysical(MeshMaterial& result, aiColor4D const& base, float roughness, float metallic) {
    SetDiffuse(result, ToDisplay(base));
    roughness = std::clamp(roughness, 0.1f, 1.0f);
    metallic = std::clamp(metallic, 0.0f, 1.0f);
    result.shininess = std::clamp(2.0f / std::pow(roughness, 4.0f) - 2.0f, 4.0f, 200.0f);
    float const strength = 0.55f * (1.0f - roughness) + 0.1f;
    for (int i = 0; i < 3; ++i)
        result.specular[i] = std::lerp(strength, result.diffuse[i] * (0.5f + strength), metallic);
}

void SetClassic(MeshMaterial& result, aiMaterial const& material) {
    if (auto const diffuse = FindColor(material, AI_MATKEY_COLOR_DIFFUSE))
        SetDiffuse(result, *diffuse);
    auto const shininess = FindNumber(material, AI_MATKEY_SHININESS);
    auto const specular = FindColor(material, AI_MATKEY_COLOR_SPECULAR);
    // Without an exponent the whole surface would be one highlight.
    if (specular && shininess.value_or(0.0f) >= 1.0f) {
        Set(result.specular, *specular);
        result.shininess = std::clamp(*shininess, 4.0f, 200.0f);
    }
}

/// True for what importers make up where the file has no material.
bool IsDefault(aiMaterial const& material) {
    aiString name;
    return material.Get(AI_MATKEY_NAME, name) == AI_SUCCESS &&
           std::string_view(name.C_Str()) == AI_DEFAULT_MATERIAL_NAME;
}

} // namespace

MeshMaterial ToMeshMaterial(aiMaterial const& material, bool hasColors) {
    MeshMaterial result;
    if (auto const roughness = FindNumber(material, AI_MATKEY_ROUGHNESS_FACTOR)) {
        SetPhysical(result, FindColor(material, AI_MATKEY_BASE_COLOR).value_or(aiColor4D(1, 1, 1, 1)),
                    *roughness, FindNumber(material, AI_MATKEY_METALLIC_FACTOR).value_or(0.0f));
    } else if (!IsDefault(material)) {
        SetClassic(result, material);
    }
    // Where colours come with the vertices, some files leave the material black, others grey.
    aiColor4D const diffuse(result.diffuse[0], result.diffuse[1], result.diffuse[2], 1.0f);
    if (hasColors && (IsDefault(material) || Brightness(diffuse) < 0.1f))
        SetDiffuse(result, aiColor4D(1, 1, 1, 1));
    if (auto const emission = FindColor(material, AI_MATKEY_COLOR_EMISSIVE))
        Set(result.emission, *emission);
    // No opacity at all is how some files say that they know of none.
    auto const opacity = FindNumber(material, AI_MATKEY_OPACITY);
    if (opacity && *opacity > 0.0f && *opacity < 1.0f)
        result.diffuse[3] = *opacity;
    return result;
}

} // namespace viewer
