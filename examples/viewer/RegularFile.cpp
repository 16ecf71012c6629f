// Open first, then ask what it is.
#include "RegularFile.h"

#include <QString>

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

namespace viewer {

namespace {

/// Why a file of this mode holds no bytes; null where it does.
char const* FindObstacle(mode_t mode) {
    if (S_ISDIR(mode))
        return "It is a folder";
    return S_ISREG(mode) ? nullptr : "It is not a regular file";
}

} // namespace

std::unique_ptr<QFile> OpenRegularFile(std::filesystem::path const& path) {
    // Not blocking, a FIFO opens at once.
    int const descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0)
        throw FileError(errno == ENOENT ? "There is no such file" : std::generic_category().message(errno));
    // By its name image readers tell formats that have no signature.
    auto file = std::make_unique<QFile>(QFile::decodeName(path.c_str()));
    bool const isOpen = file->open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    struct stat status{};
    if (!isOpen || fstat(descriptor, &status) != 0)
        throw FileError("It cannot be read");
    if (char const* const obstacle = FindObstacle(status.st_mode))
        throw FileError(obstacle);
    return file;
}

} // namespace viewer
