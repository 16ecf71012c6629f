// Finds the `layout(...)` qualifiers of a shader's global declarations.
#pragma once

#include "Tokenizer.h"

#include <span>
#include <string_view>
#include <vector>

namespace zarvex::zx3D::ShaderCompiler {

/// One entry between the parentheses, such as `location = 0`.
struct LayoutItem {
    std::string_view name;
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// `layout(...)` at tokens [first, last], and the storage word (`in`, `out`, `uniform`, `buffer`) of the
/// declaration that it qualifies, empty when there is none.
struct LayoutQualifier {
    std::size_t first = 0;
    std::size_t last = 0;
    std::vector<LayoutItem> items;
    std::string_view storage;
};

std::vector<LayoutQualifier> FindLayoutQualifiers(std::span<Token const> tokens);

} // namespace zarvex::zx3D::ShaderCompiler
