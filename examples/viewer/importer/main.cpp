// viewer_importer: reads a mesh for the viewer, in a process of its own. A file that takes the import down,
// fills the memory or never ends leaves the viewer as it was; and cancelling is ending a process.
//
// Usage: viewer_importer FILE RESULT
// Writes percents to the standard output, a line each, and the mesh to RESULT. When it fails it says why on
// the standard error, in one line, and ends with 1.
#include "../MeshFile.h"
#include "Import.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <new>

#include <sys/prctl.h>
#include <sys/resource.h>
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

/// Files may claim to hold more than there is memory, and more than their size can hold.
void LimitMemory([[maybe_unused]] qint64 fileSize) {
#ifndef __SANITIZE_ADDRESS__                 // which takes address space by the terabyte
    constexpr qint64 base = qint64{4} << 30; // for small files that name large ones, and for their textures
    constexpr qint64 bytesPerByte = 250;     // of text, at the import's peak
    qint64 const most = qint64{sysconf(_SC_PHYS_PAGES)} * sysconf(_SC_PAGESIZE) / 4 * 3;
    auto const limit = static_cast<rlim_t>(std::min(most, base + bytesPerByte * fileSize));
    rlimit const limits{limit, limit};
    setrlimit(RLIMIT_AS, &limits);
#endif
}

int Fail(char const* reason) {
    std::fprintf(stderr, "%s\n", reason);
    std::fflush(stderr);
    return 1;
}

int Run(char const* path, char const* resultPath) {
    ProgressPipe progress;
    try {
        viewer::MeshContent const mesh =
            viewer::Import(QFile::decodeName(path), [&progress](int percent) { progress.Write(percent); });
        QFile result(QFile::decodeName(resultPath));
        if (!result.open(QIODevice::WriteOnly) || !viewer::WriteMesh(result, mesh))
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
    if (argc != 3)
        return Fail("usage: viewer_importer FILE RESULT");
    prctl(PR_SET_PDEATHSIG, SIGKILL); // without the viewer nobody wants the mesh
    LimitMemory(QFileInfo(QFile::decodeName(argv[1])).size());
    // Without unwinding: the end of the process frees all, and faster.
    std::_Exit(Run(argv[1], argv[2]));
}
