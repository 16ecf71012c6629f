// Opening files that nobody vouches for.
#pragma once

#include <QFile>

#include <filesystem>
#include <memory>
#include <stdexcept>

namespace viewer {

/// Says in one sentence why a file cannot be read.
struct FileError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Opens a file for reading, and only what holds bytes: a FIFO would wait for its other end for ever, and
/// devices have no end. What is checked is what was opened, not what had the name before. Throws `FileError`.
std::unique_ptr<QFile> OpenRegularFile(std::filesystem::path const& path);

} // namespace viewer
