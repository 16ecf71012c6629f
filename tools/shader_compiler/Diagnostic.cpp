// Collects and prints messages.
#include "Diagnostic.h"

#include <ostream>
#include <utility>

namespace zarvex::zx3D::ShaderCompiler {

void Diagnostics::Error(SourceLocation location, std::string message) {
    m_hasErrors = true;
    m_all.push_back({Severity::Error, std::move(location), std::move(message)});
}

void Diagnostics::Warning(SourceLocation location, std::string message) {
    m_all.push_back({Severity::Warning, std::move(location), std::move(message)});
}

void Diagnostics::Print(std::ostream& stream) const {
    for (auto const& diagnostic : m_all) {
        stream << diagnostic.location.file << ':';
        if (diagnostic.location.line > 0) {
            stream << diagnostic.location.line << ':';
        }
        stream << (diagnostic.severity == Severity::Error ? " error: " : " warning: ") << diagnostic.message
               << '\n';
    }
}

} // namespace zarvex::zx3D::ShaderCompiler
