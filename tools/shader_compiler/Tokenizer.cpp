// A scanner that knows comments and directives and nothing else of GLSL.
#include "Tokenizer.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace zarvex::zx3D::ShaderCompiler {

namespace {

bool IsWordCharacter(char character) {
    return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_';
}

bool IsSpace(char character) {
    return std::isspace(static_cast<unsigned char>(character)) != 0;
}

class Scanner {
public:
    explicit Scanner(std::string_view text) : m_text(text) {}

    std::vector<Token> Run() {
        while (m_position < m_text.size()) {
            Step();
        }
        return std::move(m_tokens);
    }

private:
    void Step() {
        auto const rest = m_text.substr(m_position);
        if (rest.front() == '\n') {
            m_atLineStart = true;
            ++m_position;
        } else if (IsSpace(rest.front())) {
            ++m_position;
        } else if (rest.starts_with("//")) {
            SkipTo("\n", 0);
        } else if (rest.starts_with("/*")) {
            SkipTo("*/", 2);
        } else if (rest.front() == '#' && m_atLineStart) {
            SkipDirective();
        } else {
            TakeToken(rest);
        }
    }

    void SkipTo(std::string_view end, std::size_t length) {
        auto const found = m_text.find(end, m_position + length);
        m_position = found == std::string_view::npos ? m_text.size() : found + length;
    }

    void SkipDirective() {
        do {
            SkipTo("\n", 0);
        } while (m_position < m_text.size() && m_text[m_position - 1] == '\\' &&
                 ++m_position < m_text.size());
    }

    void TakeToken(std::string_view rest) {
        auto const end = std::ranges::find_if_not(rest, IsWordCharacter);
        auto const length = std::max<std::size_t>(1, static_cast<std::size_t>(end - rest.begin()));
        m_tokens.push_back({rest.substr(0, length), m_position});
        m_position += length;
        m_atLineStart = false;
    }

    std::string_view m_text;
    std::size_t m_position = 0;
    bool m_atLineStart = true;
    std::vector<Token> m_tokens;
};

} // namespace

std::vector<Token> Tokenize(std::string_view text) {
    return Scanner(text).Run();
}

} // namespace zarvex::zx3D::ShaderCompiler
