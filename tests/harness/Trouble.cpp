// The listeners behind the troubles.
#include "Trouble.h"

#include <bx/string.h>

#include <QByteArray>
#include <QString>

#include <X11/Xlib.h>

#include <cstdio>
#include <mutex>
#include <string_view>
#include <utility>

namespace zarvex::testing {

namespace {

std::mutex mutex;
std::vector<std::string> troubles;

int OnXError(Display*, XErrorEvent* error) {
    Trouble::Report("X error " + std::to_string(error->error_code) + " in request " +
                    std::to_string(error->request_code) + "." + std::to_string(error->minor_code));
    return 0;
}

void OnQtMessage(QtMsgType type, QMessageLogContext const& context, QString const& text) {
    // Qt says so once a process where the session has no such folder, as in a container.
    bool const aboutTheMachine = text.contains("XDG_RUNTIME_DIR");
    bool const isTrouble = type == QtWarningMsg || type == QtCriticalMsg || type == QtFatalMsg;
    if (isTrouble && !aboutTheMachine)
        Trouble::Report(std::string(context.category) + ": " + text.toStdString());
}

} // namespace

void Trouble::Watch() {
    XSetErrorHandler(OnXError);
    qInstallMessageHandler(OnQtMessage);
}

void Trouble::Report(std::string text) {
    std::lock_guard const lock(mutex);
    std::fprintf(stderr, "trouble: %s\n", text.c_str());
    troubles.push_back(std::move(text));
}

std::vector<std::string> Trouble::Take() {
    std::lock_guard const lock(mutex);
    return std::exchange(troubles, {});
}

void TroubleCallback::fatal(char const* filePath, std::uint16_t line, bgfx::Fatal::Enum, char const* str) {
    Trouble::Report("bgfx fatal at " + std::string(filePath) + ":" + std::to_string(line) + ": " + str);
}

void TroubleCallback::traceVargs(char const*, std::uint16_t, char const* format, std::va_list argList) {
    char buffer[1024];
    bx::vsnprintf(buffer, sizeof buffer, format, argList);
    std::string_view const text = buffer;
    bool const isOfVulkansValidation = text.find(" Validation, ") != text.npos;
    if (text.find("LEAK") != text.npos || text.starts_with("zx3D:") || isOfVulkansValidation)
        Trouble::Report(std::string(text));
}

} // namespace zarvex::testing
