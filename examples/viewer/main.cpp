// A viewer for meshes. viewer --help tells how to start it.
#include "Run.h"
#include "WindowStyle.h"

#include <QApplication>
#include <QLoggingCategory>

#include <cstdio>

namespace {

int Print(viewer::Message const& message) {
    FILE* const stream = message.exitCode == viewer::kSuccess ? stdout : stderr;
    std::fputs(message.text.toLocal8Bit().constData(), stream);
    return message.exitCode;
}

/// Without a display, too: there may be nothing to do but to print the help.
std::variant<viewer::Options, viewer::Message> ParseArguments(int argc, char* argv[]) {
    QCoreApplication const application(argc, argv);
    return viewer::ParseCommandLine(QCoreApplication::arguments());
}

} // namespace

int main(int argc, char* argv[]) {
    QLoggingCategory::setFilterRules("zarvex.*.debug=false\nzarvex.*.info=false");
    auto const parsed = ParseArguments(argc, argv);
    if (auto const* const message = std::get_if<viewer::Message>(&parsed))
        return Print(*message);
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        return Print({"viewer: there is no display to draw on (DISPLAY is not set)\n", viewer::kFailure});
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "xcb"); // bgfx draws through X11
    QApplication application(argc, argv);
    viewer::UseWindowStyle(application);
    return viewer::Run(std::get<viewer::Options>(parsed));
}
