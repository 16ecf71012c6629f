// Turns SPIRV-Cross's reflection into bgfx's terms.
#include "ShaderReflection.h"

#include "GlslCompilation.h"
#include "SpirvBinding.h"
#include "VertexAttribute.h"

#include <spirv_cross.hpp>

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>
#include <utility>

namespace zarvex::zx3D::ShaderCompiler {

namespace {

using spirv_cross::Resource;
using spirv_cross::SPIRType;

constexpr std::uint16_t kRegisterSize = 16;
constexpr std::uint16_t kStorageImageDescriptor = 3;
constexpr std::uint16_t kStorageBufferDescriptor = 7;

/// The uniforms that bgfx itself keeps up to date, for draws and for dispatches.
constexpr std::array<std::string_view, 12> kPredefinedUniforms = {
    "u_viewRect", "u_viewTexel",   "u_view",  "u_invView",   "u_proj",          "u_invProj",
    "u_viewProj", "u_invViewProj", "u_model", "u_modelView", "u_modelViewProj", "u_alphaRef4",
};

bool IsPredefined(UniformEntry const& entry) {
    return std::ranges::find(kPredefinedUniforms, entry.name) != kPredefinedUniforms.end();
}

/// Textures, images and buffers have a binding; the other entries are places in the uniform block.
bool IsBound(UniformEntry const& entry) {
    return entry.type == UniformType::Sampler || entry.type == UniformType::End;
}

TextureDimension DimensionOf(SPIRType::ImageType const& image) {
    switch (image.dim) {
    case spv::Dim1D:
        return image.arrayed ? TextureDimension::None : TextureDimension::Dimension1D;
    case spv::Dim2D:
        return image.arrayed ? TextureDimension::Dimension2DArray : TextureDimension::Dimension2D;
    case spv::DimCube:
        return image.arrayed ? TextureDimension::DimensionCubeArray : TextureDimension::DimensionCube;
    case spv::Dim3D:
        return TextureDimension::Dimension3D;
    default:
        return TextureDimension::None;
    }
}

/// The type of a loose uniform and how many vec4 registers one of it takes; none when it is of another type.
UniformEntry EntryOfType(SPIRType const& type) {
    UniformEntry entry;
    if (type.basetype == SPIRType::Float && type.columns == 1 && type.vecsize == 4) {
        entry.type = UniformType::Vec4;
        entry.registerCount = 1;
    } else if (type.basetype == SPIRType::Float && type.columns == 3 && type.vecsize == 3) {
        entry.type = UniformType::Mat3;
        entry.registerCount = 3;
    } else if (type.basetype == SPIRType::Float && type.columns == 4 && type.vecsize == 4) {
        entry.type = UniformType::Mat4;
        entry.registerCount = 4;
    }
    return entry;
}

/// The name of a scalar, vector or matrix type in GLSL, with the number of elements of an array.
std::string TypeName(SPIRType const& type) {
    struct {
        SPIRType::BaseType base;
        char const* scalar;
        char const* prefix;
    } static constexpr kNames[] = {{SPIRType::Float, "float", ""},
                                   {SPIRType::Double, "double", "d"},
                                   {SPIRType::Int, "int", "i"},
                                   {SPIRType::UInt, "uint", "u"}};
    auto const found =
        std::ranges::find(kNames, type.basetype, &std::ranges::range_value_t<decltype(kNames)>::base);
    std::string name = "struct";
    if (found != std::end(kNames)) {
        auto const size = std::to_string(type.vecsize);
        name = type.columns > 1   ? found->prefix + ("mat" + std::to_string(type.columns)) + "x" + size
               : type.vecsize > 1 ? found->prefix + ("vec" + size)
                                  : found->scalar;
    }
    for (auto const size : type.array) {
        name += "[" + std::to_string(size) + "]";
    }
    return name;
}

class Reflector {
public:
    Reflector(std::vector<std::uint32_t> const& spirv, ShaderStage stage, SourceFiles const& files,
              Diagnostics& diagnostics)
        : m_compiler(spirv),
          m_stage(stage),
          m_files(files),
          m_diagnostics(diagnostics) {}

    ShaderInterface Run() {
        auto const used = m_compiler.get_shader_resources(m_compiler.get_active_interface_variables());
        ForEach(used.uniform_buffers, &Reflector::ReflectUniformBlock);
        ForEach(used.sampled_images, &Reflector::ReflectTexture);
        ForEach(used.separate_images, &Reflector::RejectTexture);
        ForEach(used.separate_samplers, &Reflector::RejectTexture);
        ForEach(used.storage_images, &Reflector::ReflectImage);
        ForEach(used.storage_buffers, &Reflector::ReflectBuffer);
        KeepBlockUpToDate();

        // The stages have to agree on unused variables, too.
        auto const declared = m_compiler.get_shader_resources();
        m_interface.inputs = StageVariables(declared.stage_inputs);
        m_interface.outputs = StageVariables(declared.stage_outputs);
        if (m_stage == ShaderStage::Vertex) {
            CheckVertexAttributes();
        }
        return std::move(m_interface);
    }

private:
    template<typename Resources>
    void ForEach(Resources const& resources, void (Reflector::*reflect)(Resource const&)) {
        for (auto const& resource : resources) {
            (this->*reflect)(resource);
        }
    }

    void Error(std::string const& name, std::string const& message) {
        m_diagnostics.Error(m_files.FindDeclaration(name), "'" + name + "' : " + message);
    }

    void ReflectUniformBlock(Resource const& block) {
        if (block.name != kUniformBlockName) {
            Error(block.name, "uniform blocks are not supported; declare loose uniforms");
            return;
        }
        auto const& type = m_compiler.get_type(block.base_type_id);
        auto const registers =
            (m_compiler.get_declared_struct_size(type) + kRegisterSize - 1) / kRegisterSize;
        if (registers > std::numeric_limits<std::uint16_t>::max() / kRegisterSize - 1) {
            m_diagnostics.Error(m_files.FindDeclaration(m_compiler.get_member_name(block.base_type_id, 0)),
                                "the uniforms take more than 64 KiB");
            return;
        }
        m_interface.uniformBlockSize = static_cast<std::uint16_t>(registers * kRegisterSize);
        for (std::uint32_t index = 0; index < type.member_types.size(); ++index) {
            ReflectLooseUniform(block, type, index);
        }
    }

    void ReflectLooseUniform(Resource const& block, SPIRType const& blockType, std::uint32_t index) {
        auto const name = m_compiler.get_member_name(block.base_type_id, index);
        auto const& type = m_compiler.get_type(blockType.member_types[index]);
        auto entry = EntryOfType(type);
        auto const size = type.array.empty() ? 1 : type.array[0];
        if (entry.registerCount == 0 || type.array.size() > 1 ||
            size > std::numeric_limits<std::uint8_t>::max() ||
            (size > 1 && entry.type != UniformType::Vec4)) {
            Error(name, "a uniform has to be a vec4, mat3 or mat4, or an array of at most 255 vec4");
            return;
        }
        entry.name = name;
        entry.arraySize = static_cast<std::uint8_t>(size);
        entry.registerIndex =
            static_cast<std::uint16_t>(m_compiler.type_struct_member_offset(blockType, index));
        entry.registerCount = static_cast<std::uint16_t>(entry.registerCount * size);
        Add(std::move(entry));
    }

    void ReflectTexture(Resource const& texture) {
        auto const& type = m_compiler.get_type(texture.type_id);
        auto entry = EntryOfImage(type);
        if (entry.dimension == TextureDimension::None || entry.dimension == TextureDimension::Dimension1D ||
            type.image.ms || !type.array.empty()) {
            RejectTexture(texture);
            return;
        }
        entry.type = UniformType::Sampler;
        entry.isShadow = type.image.depth;
        if (entry.isShadow) {
            entry.component = TextureComponent::Depth;
        }
        AddBound(std::move(entry), texture);
    }

    void RejectTexture(Resource const& texture) {
        Error(texture.name,
              "a texture has to be a sampler2D, sampler2DArray, sampler3D or samplerCube, and no array");
    }

    void ReflectImage(Resource const& image) {
        auto const& type = m_compiler.get_type(image.type_id);
        auto entry = EntryOfImage(type);
        if (entry.dimension == TextureDimension::None || type.image.ms || !type.array.empty()) {
            Error(image.name,
                  "an image has to be an image2D, image2DArray, image3D or imageCube, and no array");
            return;
        }
        entry.isReadOnly = m_compiler.has_decoration(image.id, spv::DecorationNonWritable);
        AddUnordered(std::move(entry), image, kStorageImageDescriptor);
    }

    void ReflectBuffer(Resource const& buffer) {
        UniformEntry entry;
        entry.isReadOnly = m_compiler.get_buffer_block_flags(buffer.id).get(spv::DecorationNonWritable);
        AddUnordered(std::move(entry), buffer, kStorageBufferDescriptor);
    }

    UniformEntry EntryOfImage(SPIRType const& type) const {
        UniformEntry entry;
        auto const sampled = m_compiler.get_type(type.image.type).basetype;
        entry.component = sampled == SPIRType::Int    ? TextureComponent::Int
                          : sampled == SPIRType::UInt ? TextureComponent::Uint
                                                      : TextureComponent::Float;
        entry.dimension = DimensionOf(type.image);
        return entry;
    }

    /// Storage, which a shader may read and write in any order.
    void AddUnordered(UniformEntry entry, Resource const& resource, std::uint16_t descriptor) {
        entry.type = UniformType::End;
        entry.arraySize = 0;
        entry.registerCount = descriptor;
        AddBound(std::move(entry), resource);
    }

    void AddBound(UniformEntry entry, Resource const& resource) {
        entry.name = resource.name;
        auto const binding = m_compiler.get_decoration(resource.id, spv::DecorationBinding);
        if (binding < kResourceBindingShift || binding >= kResourceBindingShift + kStageCount) {
            Error(entry.name, "needs layout(binding = 0) to layout(binding = 15)");
            return;
        }
        entry.registerIndex = static_cast<std::uint16_t>(binding);
        auto const other = std::ranges::find_if(m_interface.uniforms, [&](UniformEntry const& candidate) {
            return IsBound(candidate) && candidate.registerIndex == entry.registerIndex;
        });
        if (other != m_interface.uniforms.end()) {
            Error(entry.name, "has the same binding as '" + other->name + "'");
            return;
        }
        Add(std::move(entry));
    }

    void Add(UniformEntry entry) {
        if (entry.name.size() > std::numeric_limits<std::uint8_t>::max()) {
            Error(entry.name, "the name is longer than 255 characters");
            return;
        }
        m_interface.uniforms.push_back(std::move(entry));
    }

    /// bgfx writes a program's uniform block, and passes on where it wrote it, only when a uniform changed or
    /// the program uses a predefined one. Without either, the second use in a row is bound without the offset
    /// that the block needs, so a block without a predefined uniform gets one at its end.
    void KeepBlockUpToDate() {
        if (m_interface.uniformBlockSize == 0 || std::ranges::any_of(m_interface.uniforms, IsPredefined)) {
            return;
        }
        UniformEntry entry;
        entry.name = "u_viewRect";
        entry.type = UniformType::Vec4;
        entry.registerIndex = m_interface.uniformBlockSize;
        entry.registerCount = 1;
        Add(std::move(entry));
        m_interface.uniformBlockSize =
            static_cast<std::uint16_t>(m_interface.uniformBlockSize + kRegisterSize);
    }

    template<typename Resources>
    std::vector<StageVariable> StageVariables(Resources const& resources) {
        std::vector<StageVariable> variables;
        for (Resource const& resource : resources) {
            if (m_compiler.has_decoration(resource.base_type_id, spv::DecorationBlock)) {
                Error(resource.name, "blocks between stages are not supported");
                continue;
            }
            auto const has = [&](spv::Decoration decoration) {
                return m_compiler.has_decoration(resource.id, decoration);
            };
            variables.push_back(
                {resource.name, TypeName(m_compiler.get_type(resource.type_id)),
                 has(spv::DecorationFlat)            ? "flat"
                 : has(spv::DecorationNoPerspective) ? "noperspective"
                                                     : "smooth",
                 static_cast<int>(m_compiler.get_decoration(resource.id, spv::DecorationLocation))});
        }
        std::ranges::sort(variables, {}, &StageVariable::location);
        return variables;
    }

    void CheckVertexAttributes() {
        for (auto const& input : m_interface.inputs) {
            if (!FindVertexAttributeId(input.name)) {
                Error(input.name, "not a vertex attribute of bgfx; use a_position, a_normal, a_tangent, "
                                  "a_bitangent, a_color0 or 1, a_indices, a_weight, a_texcoord0 to 7");
            }
        }
    }

    spirv_cross::Compiler m_compiler;
    ShaderStage m_stage;
    SourceFiles const& m_files;
    Diagnostics& m_diagnostics;
    ShaderInterface m_interface;
};

} // namespace

ShaderInterface ReflectShader(std::vector<std::uint32_t> const& spirv, ShaderStage stage,
                              SourceFiles const& files, Diagnostics& diagnostics) {
    return Reflector(spirv, stage, files, diagnostics).Run();
}

} // namespace zarvex::zx3D::ShaderCompiler
