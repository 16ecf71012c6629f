// Splits GLSL into the tokens that the rewriting steps look at.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace zarvex::zx3D::ShaderCompiler {

/// A token and its place in the text that it was cut from; it refers to that text.
struct Token {
    std::string_view text;
    std::size_t offset = 0;

    std::size_t End() const { return offset + text.size(); }
};

/// Words and numbers as whole tokens, every other character as a token of its own. White space, comments and
/// preprocessor lines are left out. The result refers to `text`.
std::vector<Token> Tokenize(std::string_view text);

} // namespace zarvex::zx3D::ShaderCompiler
