// What a shader exchanges with bgfx and with the other stage: its uniforms, resources, inputs and outputs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zarvex::zx3D::ShaderCompiler {

/// bgfx's uniform types, as its shader container numbers them. `End` marks storage buffers and images.
enum class UniformType : std::uint8_t { Sampler = 0, End = 1, Vec4 = 2, Mat3 = 3, Mat4 = 4 };

/// The component type of a texture or image, as the container numbers it.
enum class TextureComponent : std::uint8_t { Float = 0, Int = 1, Uint = 2, Depth = 3 };

/// The shape of a texture or image, as the container numbers it.
enum class TextureDimension : std::uint8_t {
    None = 0,
    Dimension1D = 1,
    Dimension2D = 2,
    Dimension2DArray = 3,
    DimensionCube = 4,
    DimensionCubeArray = 5,
    Dimension3D = 6
};

/// One entry of the container's uniform table.
struct UniformEntry {
    std::string name;
    UniformType type = UniformType::Vec4;
    bool isReadOnly = false;
    bool isShadow = false;
    std::uint8_t arraySize = 1;
    std::uint16_t registerIndex = 0;
    std::uint16_t registerCount = 0;
    TextureComponent component = TextureComponent::Float;
    TextureDimension dimension = TextureDimension::None;
};

/// A variable that enters or leaves a stage.
struct StageVariable {
    std::string name;
    std::string type;
    std::string interpolation;
    int location = 0;

    bool operator==(StageVariable const&) const = default;
};

struct ShaderInterface {
    std::vector<UniformEntry> uniforms;
    /// Bytes of the uniform block, whole vec4 registers.
    std::uint16_t uniformBlockSize = 0;
    /// Both in ascending order of location.
    std::vector<StageVariable> inputs;
    std::vector<StageVariable> outputs;
};

/// A hash over every name, type, interpolation and location; never 0, which bgfx reads as "do not compare".
/// bgfx makes a program only of shaders whose hashes agree: OpenGL joins the stages by name, Vulkan by
/// location.
std::uint32_t HashStageVariables(std::vector<StageVariable> const& variables);

} // namespace zarvex::zx3D::ShaderCompiler
