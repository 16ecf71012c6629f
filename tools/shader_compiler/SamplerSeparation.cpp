// Rewrites the instructions of a SPIR-V module that deal with combined samplers.
#include "SamplerSeparation.h"

#include "SpirvBinding.h"

#include <spirv.hpp>

#include <algorithm>
#include <initializer_list>
#include <map>
#include <span>

namespace zarvex::zx3D::ShaderCompiler {

namespace {

using Words = std::vector<std::uint32_t>;
using Instruction = std::span<std::uint32_t const>;

constexpr std::size_t kHeaderWords = 5;
constexpr std::size_t kIdBoundWord = 3;

spv::Op OpcodeOf(Instruction instruction) {
    return static_cast<spv::Op>(instruction[0] & spv::OpCodeMask);
}

class SamplerSeparator {
public:
    explicit SamplerSeparator(Words const& module)
        : m_module(module),
          m_result(module.begin(), module.begin() + kHeaderWords) {}

    Words Run() {
        ForEachInstruction([this](Instruction instruction) { Collect(instruction); });
        ForEachInstruction([this](Instruction instruction) { Rewrite(instruction); });
        return std::move(m_result);
    }

private:
    template<typename Visit>
    void ForEachInstruction(Visit visit) const {
        for (auto index = kHeaderWords; index < m_module.size();) {
            auto const length = m_module[index] >> spv::WordCountShift;
            visit(Instruction(m_module).subspan(index, length));
            index += length;
        }
    }

    /// Finds the types that have to do with combined samplers, and gives each variable and parameter of such
    /// a type a sampler beside it.
    void Collect(Instruction instruction) {
        switch (OpcodeOf(instruction)) {
        case spv::OpTypeSampledImage:
            m_imageOf[instruction[1]] = instruction[2];
            break;
        case spv::OpTypePointer:
            if (m_imageOf.contains(instruction[3])) {
                m_imageOfPointer[instruction[1]] = m_imageOf[instruction[3]];
            }
            break;
        case spv::OpVariable:
        case spv::OpFunctionParameter:
            if (m_imageOfPointer.contains(instruction[1])) {
                m_samplerOf[instruction[2]] = NewId();
            }
            break;
        default:
            break;
        }
    }

    void Rewrite(Instruction instruction) {
        switch (OpcodeOf(instruction)) {
        case spv::OpSourceExtension: // tells only that files were included
            break;
        case spv::OpDecorate:
            Copy(instruction);
            DecorateSampler(instruction);
            break;
        case spv::OpTypePointer:
            DeclarePointer(instruction);
            break;
        case spv::OpVariable:
        case spv::OpFunctionParameter:
            Copy(instruction);
            DeclareSampler(instruction);
            break;
        case spv::OpTypeFunction:
            AppendToEach(instruction, 3, [this](std::uint32_t type) {
                return m_imageOfPointer.contains(type) ? m_samplerPointer : 0;
            });
            break;
        case spv::OpFunctionCall:
            AppendToEach(instruction, 4, [this](std::uint32_t argument) { return SamplerOf(argument); });
            break;
        case spv::OpLoad:
            Load(instruction);
            break;
        default:
            Copy(instruction);
        }
    }

    void DecorateSampler(Instruction decoration) {
        auto const sampler = SamplerOf(decoration[1]);
        if (sampler == 0) {
            return;
        }
        if (decoration[2] == spv::DecorationBinding) {
            Emit(spv::OpDecorate, {sampler, decoration[2], decoration[3] + kSamplerBindingOffset});
        } else if (decoration[2] == spv::DecorationDescriptorSet) {
            Emit(spv::OpDecorate, {sampler, decoration[2], decoration[3]});
        }
    }

    /// A pointer to a combined sampler becomes one to its texture. Samplers all have the same type.
    void DeclarePointer(Instruction pointer) {
        auto const found = m_imageOfPointer.find(pointer[1]);
        if (found == m_imageOfPointer.end()) {
            Copy(pointer);
            return;
        }
        if (m_samplerPointer == 0) {
            m_samplerType = NewId();
            m_samplerPointer = NewId();
            Emit(spv::OpTypeSampler, {m_samplerType});
            Emit(spv::OpTypePointer, {m_samplerPointer, pointer[2], m_samplerType});
        }
        Emit(spv::OpTypePointer, {pointer[1], pointer[2], found->second});
    }

    void DeclareSampler(Instruction declaration) {
        auto const sampler = SamplerOf(declaration[2]);
        if (sampler == 0) {
            return;
        }
        if (OpcodeOf(declaration) == spv::OpVariable) {
            Emit(spv::OpVariable, {m_samplerPointer, sampler, declaration[3]});
        } else {
            Emit(spv::OpFunctionParameter, {m_samplerPointer, sampler});
        }
    }

    void Load(Instruction load) {
        auto const sampler = SamplerOf(load[3]);
        if (sampler == 0) {
            Copy(load);
            return;
        }
        auto const image = NewId();
        auto const loadedSampler = NewId();
        Emit(spv::OpLoad, {m_imageOf[load[1]], image, load[3]});
        Emit(spv::OpLoad, {m_samplerType, loadedSampler, sampler});
        Emit(spv::OpSampledImage, {load[1], load[2], image, loadedSampler});
    }

    /// Copies an instruction and puts a companion, where there is one, after each operand from `first` on.
    template<typename Companion>
    void AppendToEach(Instruction instruction, std::size_t first, Companion companion) {
        Words operands(instruction.begin() + 1, instruction.begin() + std::min(first, instruction.size()));
        for (auto index = first; index < instruction.size(); ++index) {
            operands.push_back(instruction[index]);
            if (auto const added = companion(instruction[index]); added != 0) {
                operands.push_back(added);
            }
        }
        Emit(OpcodeOf(instruction), operands);
    }

    void Copy(Instruction instruction) {
        m_result.insert(m_result.end(), instruction.begin(), instruction.end());
    }

    void Emit(spv::Op opcode, Words const& operands) {
        m_result.push_back(static_cast<std::uint32_t>(operands.size() + 1) << spv::WordCountShift | opcode);
        m_result.insert(m_result.end(), operands.begin(), operands.end());
    }

    /// The sampler that goes with a variable or parameter, 0 when it is no combined sampler.
    std::uint32_t SamplerOf(std::uint32_t id) const {
        auto const found = m_samplerOf.find(id);
        return found == m_samplerOf.end() ? 0 : found->second;
    }

    std::uint32_t NewId() { return m_result[kIdBoundWord]++; }

    Words const& m_module;
    Words m_result;
    std::map<std::uint32_t, std::uint32_t> m_imageOf;
    std::map<std::uint32_t, std::uint32_t> m_imageOfPointer;
    std::map<std::uint32_t, std::uint32_t> m_samplerOf;
    std::uint32_t m_samplerType = 0;
    std::uint32_t m_samplerPointer = 0;
};

} // namespace

std::vector<std::uint32_t> SeparateSamplers(std::vector<std::uint32_t> const& module) {
    return SamplerSeparator(module).Run();
}

} // namespace zarvex::zx3D::ShaderCompiler
