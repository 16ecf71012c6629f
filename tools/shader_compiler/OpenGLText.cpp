// Rewrites layout qualifiers for GLSL 3.30.
#include "OpenGLText.h"

#include "LayoutQualifier.h"
#include "TextEdits.h"
#include "Tokenizer.h"

#include <algorithm>

namespace zarvex::zx3D::ShaderCompiler {

namespace {

bool IsKnownToVersion330(LayoutItem const& item, std::string_view storage, ShaderStage stage) {
    if (item.name == "binding") {
        return false;
    }
    bool const betweenStages =
        storage == "uniform" || (stage == ShaderStage::Vertex ? storage == "out" : storage == "in");
    return item.name != "location" || !betweenStages;
}

std::string JoinKeptItems(std::string_view text, LayoutQualifier const& qualifier, ShaderStage stage) {
    std::string kept;
    for (auto const& item : qualifier.items) {
        if (IsKnownToVersion330(item, qualifier.storage, stage)) {
            kept += kept.empty() ? "" : ", ";
            kept += text.substr(item.begin, item.end - item.begin);
        }
    }
    return kept;
}

std::string StripLayouts(std::string_view text, ShaderStage stage) {
    auto const tokens = Tokenize(text);
    TextEdits edits(text);
    for (auto const& qualifier : FindLayoutQualifiers(tokens)) {
        auto const kept = JoinKeptItems(text, qualifier, stage);
        if (kept.empty()) {
            edits.Erase(tokens[qualifier.first].offset, tokens[qualifier.last].End());
        } else {
            edits.Replace(tokens[qualifier.first].offset, tokens[qualifier.last].End(),
                          "layout(" + kept + ")");
        }
    }
    return edits.Finish();
}

std::string StripComments(std::string_view text) {
    TextEdits edits(text);
    for (std::size_t position = text.find('/'); position != std::string_view::npos;
         position = text.find('/', position + 1)) {
        auto const rest = text.substr(position);
        bool const isBlock = rest.starts_with("/*");
        if (!isBlock && !rest.starts_with("//")) {
            continue;
        }
        auto const found = isBlock ? text.find("*/", position + 2) : text.find('\n', position);
        auto const end =
            std::min(text.size(), found == std::string_view::npos ? found : found + (isBlock ? 2 : 0));
        edits.Erase(position, end);
        position = end - 1;
    }
    return edits.Finish();
}

} // namespace

int OpenGLVersion(ShaderStage stage) {
    return stage == ShaderStage::Compute ? 430 : 330;
}

SourceText MakeOpenGLText(SourceText const& source, ShaderStage stage) {
    SourceText result;
    // bgfx replaces the first 13 bytes of compute text by a version line of its own, so this line must be
    // exactly that long.
    result.text = "#version " + std::to_string(OpenGLVersion(stage)) + "\n";
    auto const body = StripComments(source.text);
    result.text += stage == ShaderStage::Compute ? body : StripLayouts(body, stage);

    result.lines.push_back(source.LocationOfLine(1));
    result.lines.insert(result.lines.end(), source.lines.begin(), source.lines.end());
    return result;
}

} // namespace zarvex::zx3D::ShaderCompiler
