// Turns glslang's reflection into bgfx's terms.
#include "ShaderReflection.h"

#include "SpirvBinding.h"
#include "Tokenizer.h"
#include "VertexAttribute.h"
#include "VulkanText.h"

#include <glslang/Include/Types.h>
#include <glslang/Public/ShaderLang.h>

#include <algorithm>
#include <array>
#include <limits>

namespace zarvex::zx3D::ShaderCompiler {

namespace {

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

std::string WithoutArraySuffix(std::string const& name) {
    return name.substr(0, name.find('['));
}

TextureDimension DimensionOf(glslang::TSampler const& type) {
    switch (type.dim) {
    case glslang::Esd1D:
        return type.arrayed ? TextureDimension::None : TextureDimension::Dimension1D;
    case glslang::Esd2D:
        return type.arrayed ? TextureDimension::Dimension2DArray : TextureDimension::Dimension2D;
    case glslang::EsdCube:
        return type.arrayed ? TextureDimension::DimensionCubeArray : TextureDimension::DimensionCube;
    case glslang::Esd3D:
        return TextureDimension::Dimension3D;
    default:
        return TextureDimension::None;
    }
}

TextureComponent ComponentOf(glslang::TSampler const& type) {
    if (type.shadow) {
        return TextureComponent::Depth;
    }
    switch (type.type) {
    case glslang::EbtInt:
        return TextureComponent::Int;
    case glslang::EbtUint:
        return TextureComponent::Uint;
    default:
        return TextureComponent::Float;
    }
}

std::string InterpolationOf(glslang::TQualifier const& qualifier) {
    return qualifier.flat ? "flat" : qualifier.nopersp ? "noperspective" : "smooth";
}

class Reflector {
public:
    Reflector(glslang::TProgram& program, ShaderStage stage, SourceText const& source,
              Diagnostics& diagnostics)
        : m_program(program),
          m_stage(stage),
          m_source(source),
          m_diagnostics(diagnostics),
          m_tokens(Tokenize(source.text)) {}

    ShaderInterface Run() {
        m_program.buildReflection(EShReflectionIntermediateIO | EShReflectionSeparateBuffers |
                                  EShReflectionAllBlockVariables | EShReflectionAllIOVariables);
        ReflectUniformBlocks();
        ReflectUniforms();
        ReflectBuffers();
        KeepBlockUpToDate();
        ReflectStageVariables();
        if (m_stage == ShaderStage::Vertex) {
            CheckVertexAttributes();
        }
        return std::move(m_interface);
    }

private:
    void Error(std::string const& name, std::string const& message) {
        auto const declared = std::ranges::find(m_tokens, name, &Token::text);
        auto const offset = declared == m_tokens.end() ? 0 : declared->offset;
        m_diagnostics.Error(m_source.LocationOfOffset(offset), "'" + name + "' : " + message);
    }

    void ReflectUniformBlocks() {
        for (int index = 0; index < m_program.getNumUniformBlocks(); ++index) {
            auto const& block = m_program.getUniformBlock(index);
            if (block.name != kUniformBlockName) {
                Error(block.name, "uniform blocks are not supported; declare loose uniforms");
            } else if (block.size > std::numeric_limits<std::uint16_t>::max() - 2 * kRegisterSize) {
                Error(block.name, "the uniforms take more than 64 KiB");
            } else {
                auto const registers = (block.size + kRegisterSize - 1) / kRegisterSize;
                m_interface.uniformBlockSize = static_cast<std::uint16_t>(registers * kRegisterSize);
                m_blockIndex = index;
            }
        }
    }

    void ReflectUniforms() {
        for (int index = 0; index < m_program.getNumUniformVariables(); ++index) {
            auto const& uniform = m_program.getUniform(index);
            if (uniform.getType()->getBasicType() == glslang::EbtSampler) {
                ReflectOpaqueUniform(uniform);
            } else if (uniform.index == m_blockIndex) {
                ReflectLooseUniform(uniform);
            }
        }
    }

    void ReflectLooseUniform(glslang::TObjectReflection const& uniform) {
        auto const name = WithoutArraySuffix(uniform.name);
        if (auto const dot = name.find('.'); dot != std::string::npos) {
            Error(name.substr(0, dot), "a uniform of a structure type is not supported");
            return;
        }
        auto const& type = *uniform.getType();
        auto entry = EntryOfType(type);
        if (!entry) {
            Error(name, "a uniform of type " + TypeName(type) +
                            " is not supported; use vec4, mat3 or mat4, or an array of vec4");
            return;
        }
        if (uniform.size > std::numeric_limits<std::uint8_t>::max() ||
            (uniform.size > 1 && entry->type != UniformType::Vec4)) {
            Error(name, "only arrays of at most 255 vec4 are supported");
            return;
        }
        entry->name = name;
        entry->arraySize = static_cast<std::uint8_t>(std::max(uniform.size, 1));
        entry->registerIndex = static_cast<std::uint16_t>(uniform.offset);
        entry->registerCount = static_cast<std::uint16_t>(entry->registerCount * entry->arraySize);
        Add(std::move(*entry));
    }

    static std::optional<UniformEntry> EntryOfType(glslang::TType const& type) {
        UniformEntry entry;
        if (type.getBasicType() != glslang::EbtFloat) {
            return std::nullopt;
        }
        if (!type.isMatrix() && type.getVectorSize() == 4) {
            entry.type = UniformType::Vec4;
            entry.registerCount = 1;
        } else if (type.getMatrixCols() == 3 && type.getMatrixRows() == 3) {
            entry.type = UniformType::Mat3;
            entry.registerCount = 3;
        } else if (type.getMatrixCols() == 4 && type.getMatrixRows() == 4) {
            entry.type = UniformType::Mat4;
            entry.registerCount = 4;
        } else {
            return std::nullopt;
        }
        return entry;
    }

    void ReflectOpaqueUniform(glslang::TObjectReflection const& uniform) {
        auto const name = WithoutArraySuffix(uniform.name);
        auto const& type = uniform.getType()->getSampler();
        if (type.isPureSampler()) {
            CheckSeparateSampler(name);
        } else if (uniform.getType()->isArray() || uniform.size > 1) {
            Error(name, "arrays of samplers or images are not supported");
        } else if (type.isImage()) {
            ReflectImage(name, uniform);
        } else if (type.isCombined() || DimensionOf(type) == TextureDimension::None) {
            Error(name, "a uniform of type " + std::string(type.getString()) +
                            " is not supported; use sampler2D, sampler2DArray, sampler3D or samplerCube");
        } else {
            ReflectTexture(name, uniform);
        }
    }

    /// A sampler of its own has no texture that bgfx could bind it with.
    void CheckSeparateSampler(std::string const& name) {
        auto const suffix = SeparateSamplerName("");
        if (!name.ends_with(suffix)) {
            Error(name, "a sampler without a texture is not supported; use sampler2D and the like");
        }
    }

    void ReflectTexture(std::string const& name, glslang::TObjectReflection const& uniform) {
        auto const& type = uniform.getType()->getSampler();
        UniformEntry entry;
        entry.name = name;
        entry.type = UniformType::Sampler;
        entry.isShadow = type.shadow;
        entry.component = ComponentOf(type);
        entry.dimension = DimensionOf(type);
        AddBound(std::move(entry), uniform.getBinding());
    }

    void ReflectImage(std::string const& name, glslang::TObjectReflection const& uniform) {
        auto const& type = uniform.getType()->getSampler();
        UniformEntry entry;
        entry.name = name;
        entry.type = UniformType::End;
        entry.isReadOnly = uniform.getType()->getQualifier().isReadOnly();
        entry.arraySize = 0;
        entry.registerCount = kStorageImageDescriptor;
        entry.component = ComponentOf(type);
        entry.dimension = DimensionOf(type);
        AddBound(std::move(entry), uniform.getBinding());
    }

    void ReflectBuffers() {
        for (int index = 0; index < m_program.getNumBufferBlocks(); ++index) {
            auto const& buffer = m_program.getBufferBlock(index);
            UniformEntry entry;
            entry.name = WithoutArraySuffix(buffer.name);
            entry.type = UniformType::End;
            entry.isReadOnly = AreMembersReadOnly(*buffer.getType());
            entry.arraySize = 0;
            entry.registerCount = kStorageBufferDescriptor;
            AddBound(std::move(entry), buffer.getBinding());
        }
    }

    static bool AreMembersReadOnly(glslang::TType const& block) {
        return block.getQualifier().isReadOnly() ||
               std::ranges::all_of(*block.getStruct(), [](glslang::TTypeLoc const& member) {
                   return member.type->getQualifier().isReadOnly();
               });
    }

    void AddBound(UniformEntry entry, int binding) {
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

    void ReflectStageVariables() {
        for (int index = 0; index < m_program.getNumPipeInputs(); ++index) {
            AddStageVariable(m_interface.inputs, m_program.getPipeInput(index));
        }
        for (int index = 0; index < m_program.getNumPipeOutputs(); ++index) {
            AddStageVariable(m_interface.outputs, m_program.getPipeOutput(index));
        }
        std::ranges::sort(m_interface.inputs, {}, &StageVariable::location);
        std::ranges::sort(m_interface.outputs, {}, &StageVariable::location);
    }

    void AddStageVariable(std::vector<StageVariable>& variables, glslang::TObjectReflection const& variable) {
        auto const& type = *variable.getType();
        auto const name = WithoutArraySuffix(variable.name);
        if (type.isBuiltIn() || name.starts_with("gl_")) {
            return;
        }
        if (type.getBasicType() == glslang::EbtBlock) {
            // gl_Position and its siblings are a block, too.
            if (!std::string_view(type.getTypeName().c_str()).starts_with("gl_")) {
                Error(type.getTypeName().c_str(), "blocks between stages are not supported");
            }
            return;
        }
        auto typeName = TypeName(type);
        if (type.isArray()) {
            typeName += "[" + std::to_string(type.getCumulativeArraySize()) + "]";
        }
        variables.push_back({name, typeName, InterpolationOf(type.getQualifier()),
                             static_cast<int>(type.getQualifier().layoutLocation)});
    }

    void CheckVertexAttributes() {
        for (auto const& input : m_interface.inputs) {
            if (!FindVertexAttributeId(input.name)) {
                Error(input.name, "not a vertex attribute of bgfx; use a_position, a_normal, a_tangent, "
                                  "a_bitangent, a_color0 or 1, a_indices, a_weight, a_texcoord0 to 7");
            }
        }
    }

    /// The name of a scalar, vector or matrix type in GLSL; array sizes are left out.
    static std::string TypeName(glslang::TType const& type) {
        auto const scalar = std::string(type.getBasicTypeString().c_str());
        auto const prefix = type.getBasicType() == glslang::EbtFloat ? "" : scalar.substr(0, 1);
        if (type.isMatrix()) {
            return prefix + "mat" + std::to_string(type.getMatrixCols()) + "x" +
                   std::to_string(type.getMatrixRows());
        }
        return type.getVectorSize() > 1 ? prefix + "vec" + std::to_string(type.getVectorSize()) : scalar;
    }

    glslang::TProgram& m_program;
    ShaderStage m_stage;
    SourceText const& m_source;
    Diagnostics& m_diagnostics;
    std::vector<Token> m_tokens;
    ShaderInterface m_interface;
    int m_blockIndex = -1;
};

} // namespace

ShaderInterface ReflectShader(glslang::TProgram& program, ShaderStage stage, SourceText const& source,
                              Diagnostics& diagnostics) {
    return Reflector(program, stage, source, diagnostics).Run();
}

} // namespace zarvex::zx3D::ShaderCompiler
