// viewer_importer: reads a mesh for the viewer, in a process of its own. A file that takes the import down,
// fills the memory or never ends leaves the viewer as it was; and cancelling is ending a process.
//
// Usage: viewer_importer FILE RESULT SECONDS
// FILE is absolute, SECONDS of CPU time may it take. Writes percents to the standard output, a line each, and
// the mesh to RESULT. When it fails it says why on the standard error, in one line, and ends with 1.
#include "../MeshFile.h"
#include "Import.h"
#include "Limits.h"
#include "SystemCalls.h"

#include <QFile>
#include <QFileInfo>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <new>

#include <sys/prctl.h>
#include <unistd.h>

namespace {

/// What is written to the pipe goes out at once, and nothing else does: some formats' libraries print there.
class ProgressPipe {
public:
    ProgressPipe() : m_pipe(fdopen(dup(STDOUT_FILENO), "w")) {
        dup2(STDERR_FILENO, STDOUT_FILENO);
        setlinebuf(m_pipe);
    }

    void Write(int percent) { std::fprintf(m_pipe, "%d\n", percent); }

private:
    FILE* m_pipe;
};

int Fail(char const* reason) {
    std::fprintf(stderr, "%s\n", reason);
    std::fflush(stderr);
    return 1;
}

int Run(char const* path, char const* resultPath) {
    ProgressPipe progress;
    QFile result(QFile::decodeName(resultPath));
    if (!result.open(QIODevice::WriteOnly))
        return Fail("There is no room for the mesh on the disk");
    bool const isClosed = viewer::CloseSystemCalls(); // from here on nothing is opened but to read it
    try {
        viewer::MeshContent mesh =
            viewer::Import(QFile::decodeName(path), [&progress](int percent) { progress.Write(percent); });
        if (!isClosed)
            mesh.notes.prepend("The system calls of the import could not be restricted: there is no seccomp");
        if (!viewer::WriteMesh(result, mesh))
            return Fail("There is no room for the mesh on the disk");
        return 0;
    } catch (std::bad_alloc const&) {
        return Fail("It needs more memory than there is");
    } catch (std::exception const& error) {
        return Fail(error.what());
    }
}

} // namespace

int main(int argc, char* argv[]) {
    int const seconds = argc == 4 ? std::atoi(argv[3]) : 0;
    if (seconds < 1)
        return Fail("usage: viewer_importer FILE RESULT SECONDS");
    prctl(PR_SET_PDEATHSIG, SIGKILL); // without the viewer nobody wants the mesh
    viewer::LimitTime(static_cast<unsigned>(seconds));
    viewer::LimitMemory(QFileInfo(QFile::decodeName(argv[1])).size());
    // Without unwinding: the end of the process frees all, and faster.
    std::_Exit(Run(argv[1], argv[2]));
}
