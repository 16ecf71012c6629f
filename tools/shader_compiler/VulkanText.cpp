// Separates textures from samplers.
#include "VulkanText.h"

#include "LayoutQualifier.h"
#include "TextEdits.h"
#include "Tokenizer.h"

#include <map>
#include <optional>

namespace zarvex::zx3D::ShaderCompiler {

namespace {

constexpr std::string_view kShadow = "Shadow";

struct SamplerType {
    std::string combined;
    std::string texture;
    std::string sampler;
};

/// `isampler2DArray` is split into `itexture2DArray` and `sampler`; the shape is what stands between.
std::optional<SamplerType> SplitSamplerType(std::string_view word) {
    static constexpr std::string_view kShapes[] = {"2D", "2DArray", "3D", "Cube"};
    auto const prefix = word.starts_with("sampler") ? "" : word.starts_with("isampler") ? "i" : "u";
    auto const keyword = word.find("sampler");
    if (keyword > 1 || !word.starts_with(prefix)) {
        return std::nullopt;
    }
    auto shape = word.substr(keyword + std::string_view("sampler").size());
    bool const isShadow = shape.ends_with(kShadow);
    if (isShadow) {
        shape.remove_suffix(kShadow.size());
    }
    for (auto const known : kShapes) {
        if (shape == known) {
            return SamplerType{std::string(word), prefix + ("texture" + std::string(shape)),
                               isShadow ? "samplerShadow" : "sampler"};
        }
    }
    return std::nullopt;
}

class SamplerSeparator {
public:
    explicit SamplerSeparator(std::string_view text)
        : m_text(text),
          m_tokens(Tokenize(text)),
          m_edits(text) {}

    std::string Run() {
        for (m_index = 0; m_index < m_tokens.size(); ++m_index) {
            if (!SplitDeclaration()) {
                JoinUse();
            }
        }
        return m_edits.Finish();
    }

private:
    /// `uniform sampler2D name ;`, with any qualifiers before it.
    bool SplitDeclaration() {
        if (m_tokens[m_index].text != "uniform" || m_index + 3 >= m_tokens.size() ||
            m_tokens[m_index + 3].text != ";") {
            return false;
        }
        auto const type = SplitSamplerType(m_tokens[m_index + 1].text);
        if (!type) {
            return false;
        }
        auto const name = std::string(m_tokens[m_index + 2].text);
        m_samplers.emplace(name, type->combined);
        m_edits.Replace(m_tokens[m_index + 1].offset, m_tokens[m_index + 3].End(),
                        type->texture + " " + name + "; " + LayoutBefore(m_index) + " uniform " +
                            type->sampler + " " + SeparateSamplerName(name) + ";");
        m_index += 3;
        return true;
    }

    std::string LayoutBefore(std::size_t uniform) const {
        for (auto const& qualifier : FindLayoutQualifiers(m_tokens)) {
            if (qualifier.last + 1 == uniform) {
                auto const begin = m_tokens[qualifier.first].offset;
                return std::string(m_text.substr(begin, m_tokens[qualifier.last].End() - begin));
            }
        }
        return {};
    }

    void JoinUse() {
        auto const& token = m_tokens[m_index];
        auto const found = m_samplers.find(token.text);
        if (found != m_samplers.end()) {
            auto const& [name, combined] = *found;
            m_edits.Replace(token.offset, token.End(),
                            combined + "(" + name + ", " + SeparateSamplerName(name) + ")");
        }
    }

    std::string_view m_text;
    std::vector<Token> m_tokens;
    TextEdits m_edits;
    std::size_t m_index = 0;
    std::map<std::string, std::string, std::less<>> m_samplers;
};

} // namespace

SourceText MakeVulkanText(SourceText const& source) {
    return {SamplerSeparator(source.text).Run(), source.lines};
}

std::string SeparateSamplerName(std::string_view name) {
    return std::string(name) + "_separateSampler";
}

} // namespace zarvex::zx3D::ShaderCompiler
