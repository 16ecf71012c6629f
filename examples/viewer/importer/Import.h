// A mesh from a file of any format that assimp reads.
#pragma once

#include "../MeshContent.h"

#include <QString>

#include <functional>
#include <stdexcept>

namespace viewer {

/// Says in one sentence why a file cannot be imported.
struct ImportError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Everything in the file that can be drawn, as its scene places it. `onProgress` hears of percents. Throws
/// `ImportError`; and whatever the import throws, for example for want of memory.
MeshContent Import(QString const& path, std::function<void(int)> const& onProgress);

} // namespace viewer
