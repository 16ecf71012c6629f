// Finds the variables in which two stages differ.
#include "StageMatch.h"

#include <algorithm>

namespace zarvex::zx3D::ShaderCompiler {

namespace {

std::string Describe(StageVariable const& variable) {
    return variable.interpolation + " " + variable.type + " " + variable.name + " at location " +
           std::to_string(variable.location);
}

bool Contains(std::vector<StageVariable> const& variables, StageVariable const& variable) {
    return std::ranges::find(variables, variable) != variables.end();
}

} // namespace

bool MatchStages(std::vector<StageVariable> const& vertexOutputs, std::filesystem::path const& vertexShader,
                 std::vector<StageVariable> const& fragmentInputs, SourceFiles const& fragmentFiles,
                 Diagnostics& diagnostics) {
    auto const vertexName = vertexShader.filename().string();
    bool matches = true;
    for (auto const& input : fragmentInputs) {
        if (!Contains(vertexOutputs, input)) {
            diagnostics.Error(fragmentFiles.FindDeclaration(input.name),
                              "input " + Describe(input) + " is no output of " + vertexName);
            matches = false;
        }
    }
    for (auto const& output : vertexOutputs) {
        if (!Contains(fragmentInputs, output)) {
            diagnostics.Error(fragmentFiles.FindDeclaration(output.name),
                              "output " + Describe(output) + " of " + vertexName + " is no input here");
            matches = false;
        }
    }
    return matches;
}

} // namespace zarvex::zx3D::ShaderCompiler
