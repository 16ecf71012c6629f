// Replacements in a text that are collected first and applied in one go.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace zarvex::zx3D::ShaderCompiler {

/// Collects replacements in ascending, non-overlapping order and builds the edited text.
class TextEdits {
public:
    explicit TextEdits(std::string_view text) : m_text(text) {}

    void Replace(std::size_t begin, std::size_t end, std::string_view replacement) {
        m_result += m_text.substr(m_position, begin - m_position);
        m_result += replacement;
        m_position = end;
    }

    /// Removes a range but keeps its line breaks, so that line numbers stay what they are, and a space, so
    /// that the words around it stay apart.
    void Erase(std::size_t begin, std::size_t end) {
        std::string lineBreaks = " ";
        for (char const character : m_text.substr(begin, end - begin)) {
            if (character == '\n') {
                lineBreaks += character;
            }
        }
        Replace(begin, end, lineBreaks);
    }

    std::string Finish() {
        m_result += m_text.substr(m_position);
        m_position = m_text.size();
        return std::move(m_result);
    }

private:
    std::string_view m_text;
    std::size_t m_position = 0;
    std::string m_result;
};

} // namespace zarvex::zx3D::ShaderCompiler
