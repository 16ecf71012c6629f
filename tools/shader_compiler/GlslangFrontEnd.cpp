// Runs glslang's parser and linker and reads its log.
#include "GlslangFrontEnd.h"

#include <glslang/Public/ResourceLimits.h>

#include <regex>
#include <sstream>

namespace zarvex::zx3D::ShaderCompiler {

namespace {

void AddMessage(std::string const& line, SourceText const& source, Diagnostics& diagnostics) {
    // "ERROR: 0:12: 'x' : undeclared identifier", or without a place when the message is about the whole
    // shader, and with an empty name when it is about no name.
    static std::regex const message(R"(^(ERROR|WARNING): (?:\d+:(\d+): )?(?:'' : *)?(.*?) *$)");
    static std::regex const summary(R"(\d+ compilation errors?\..*|compilation terminated)");

    std::smatch match;
    if (!std::regex_match(line, match, message) ||
        std::regex_match(match[3].first, match[3].second, summary)) {
        return;
    }
    auto location = source.LocationOfLine(match[2].matched ? std::stoi(match[2]) : 1);
    if (match[1] == "ERROR") {
        diagnostics.Error(std::move(location), match[3]);
    } else {
        diagnostics.Warning(std::move(location), match[3]);
    }
}

void AddLog(char const* log, SourceText const& source, Diagnostics& diagnostics) {
    std::istringstream stream(log);
    for (std::string line; std::getline(stream, line);) {
        AddMessage(line, source, diagnostics);
    }
}

/// A failure must never pass silently, even when the log holds nothing that was understood.
bool Conclude(bool succeeded, char const* log, SourceText const& source, Diagnostics& diagnostics) {
    AddLog(log, source, diagnostics);
    if (!succeeded && !diagnostics.HasErrors()) {
        diagnostics.Error(source.LocationOfLine(1), log);
    }
    return succeeded && !diagnostics.HasErrors();
}

} // namespace

EShLanguage ToGlslangStage(ShaderStage stage) {
    switch (stage) {
    case ShaderStage::Vertex:
        return EShLangVertex;
    case ShaderStage::Fragment:
        return EShLangFragment;
    case ShaderStage::Compute:
        return EShLangCompute;
    }
    return EShLangVertex;
}

bool ParseAndLink(glslang::TShader& shader, glslang::TProgram& program, SourceText const& source, int version,
                  EShMessages messages, Diagnostics& diagnostics) {
    auto const* const text = source.text.c_str();
    shader.setStrings(&text, 1);
    bool const parsed = shader.parse(GetDefaultResources(), version, ECoreProfile, false, true, messages);
    if (!Conclude(parsed, shader.getInfoLog(), source, diagnostics)) {
        return false;
    }
    program.addShader(&shader);
    bool const linked = program.link(messages);
    return Conclude(linked, program.getInfoLog(), source, diagnostics);
}

} // namespace zarvex::zx3D::ShaderCompiler
