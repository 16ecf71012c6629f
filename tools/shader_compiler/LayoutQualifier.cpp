// Reads layout qualifiers from a token sequence.
#include "LayoutQualifier.h"

#include <algorithm>
#include <array>
#include <optional>

namespace zarvex::zx3D::ShaderCompiler {

namespace {

/// The index of the token that closes the bracket opened at `open`.
std::optional<std::size_t> FindClosingBracket(std::span<Token const> tokens, std::size_t open) {
    int depth = 0;
    for (auto index = open; index < tokens.size(); ++index) {
        depth += tokens[index].text == "(" ? 1 : tokens[index].text == ")" ? -1 : 0;
        if (depth == 0) {
            return index;
        }
    }
    return std::nullopt;
}

std::string_view FindStorage(std::span<Token const> tokens, std::size_t begin) {
    static constexpr std::array<std::string_view, 4> kStorageWords = {"in", "out", "uniform", "buffer"};
    for (auto index = begin; index < tokens.size(); ++index) {
        auto const word = tokens[index].text;
        if (std::ranges::find(kStorageWords, word) != kStorageWords.end()) {
            return word;
        }
        if (word == ";" || word == "{" || word == "=") {
            break;
        }
    }
    return {};
}

std::vector<LayoutItem> ReadItems(std::span<Token const> tokens) {
    std::vector<LayoutItem> items;
    int depth = 0;
    bool startsItem = true;
    for (auto const& token : tokens) {
        if (token.text == "," && depth == 0) {
            startsItem = true;
            continue;
        }
        depth += token.text == "(" ? 1 : token.text == ")" ? -1 : 0;
        if (startsItem) {
            items.push_back({token.text, token.offset, token.End()});
            startsItem = false;
        }
        items.back().end = token.End();
    }
    return items;
}

} // namespace

std::vector<LayoutQualifier> FindLayoutQualifiers(std::span<Token const> tokens) {
    std::vector<LayoutQualifier> qualifiers;
    for (std::size_t index = 0; index + 1 < tokens.size(); ++index) {
        if (tokens[index].text != "layout" || tokens[index + 1].text != "(") {
            continue;
        }
        auto const close = FindClosingBracket(tokens, index + 1);
        if (!close) {
            break;
        }
        auto const inside = tokens.subspan(index + 2, *close - index - 2);
        qualifiers.push_back({index, *close, ReadItems(inside), FindStorage(tokens, *close + 1)});
        index = *close;
    }
    return qualifiers;
}

} // namespace zarvex::zx3D::ShaderCompiler
