// Messages about a shader, each tied to the file and line of the author's source.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace zarvex::zx3D::ShaderCompiler {

/// A place in an authored file; lines count from 1, and 0 stands for the file as a whole.
struct SourceLocation {
    std::string file;
    int line = 0;
};

enum class Severity { Warning, Error };

struct Diagnostic {
    Severity severity = Severity::Error;
    SourceLocation location;
    std::string message;
};

/// What one compilation has to say, in the order in which it was found.
class Diagnostics {
public:
    void Error(SourceLocation location, std::string message);
    void Warning(SourceLocation location, std::string message);

    bool HasErrors() const { return m_hasErrors; }
    std::vector<Diagnostic> const& All() const { return m_all; }

    /// One line each, in the form "file:line: error: message" that editors jump to.
    void Print(std::ostream& stream) const;

private:
    std::vector<Diagnostic> m_all;
    bool m_hasErrors = false;
};

} // namespace zarvex::zx3D::ShaderCompiler
