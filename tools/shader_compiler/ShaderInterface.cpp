// Hashes the variables between two stages.
#include "ShaderInterface.h"

#include <string_view>

namespace zarvex::zx3D::ShaderCompiler {

namespace {

constexpr std::uint32_t kFnvOffset = 2166136261u;
constexpr std::uint32_t kFnvPrime = 16777619u;

std::uint32_t HashText(std::uint32_t hash, std::string_view text) {
    for (char const character : text) {
        hash = (hash ^ static_cast<unsigned char>(character)) * kFnvPrime;
    }
    return hash * kFnvPrime;
}

} // namespace

std::uint32_t HashStageVariables(std::vector<StageVariable> const& variables) {
    auto hash = kFnvOffset;
    for (auto const& variable : variables) {
        hash = HashText(hash, variable.name);
        hash = HashText(hash, variable.type);
        hash = HashText(hash, variable.interpolation);
        hash = HashText(hash, std::to_string(variable.location));
    }
    return hash == 0 ? 1 : hash;
}

} // namespace zarvex::zx3D::ShaderCompiler
