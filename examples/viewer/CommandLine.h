// What the viewer is told when it is started.
#pragma once

#include "Camera.h"

#include <bgfx/bgfx.h>

#include <QSize>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <variant>

namespace viewer {

/// How the process ends.
enum ExitCode { kSuccess = 0, kFailure = 1, kUsageError = 2 };

struct Options {
    QString file;              ///< empty: the built-in scene
    QString screenshot;        ///< picture to save instead of showing a window
    std::optional<QSize> size; ///< of the picture or the window, pixels
    StandardView view = StandardView::Isometric;
    bool parallel = false;    ///< projection
    std::optional<UpAxis> up; ///< instead of the file's
    std::optional<bgfx::RendererType::Enum> renderer;
    std::optional<std::uint32_t> samples; ///< for each pixel
    bool showCapabilities = false;        ///< print them and end
    int timeout = 300;                    ///< seconds that a mesh may take where nobody can cancel it
    int frames = 0;                       ///< draw as many, print how long they took, and end
};

/// What to print instead of going on.
struct Message {
    QString text;
    ExitCode exitCode = kSuccess;
};

/// Reads the arguments, the program's name first.
std::variant<Options, Message> ParseCommandLine(QStringList const& arguments);

} // namespace viewer
