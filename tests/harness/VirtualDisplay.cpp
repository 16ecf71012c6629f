// Child processes that a test's windows appear on.
#include "VirtualDisplay.h"

#include <xcb/xcb.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ranges>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zarvex::testing {

namespace {

constexpr int kStartSeconds = 60; // a loaded machine takes its time

/// True once a window manager has announced itself on the root window.
bool HasWindowManager(xcb_connection_t* connection) {
    char const name[] = "_NET_SUPPORTING_WM_CHECK";
    auto const atomRequest = xcb_intern_atom(connection, false, std::strlen(name), name);
    auto* const atom = xcb_intern_atom_reply(connection, atomRequest, nullptr);
    if (atom == nullptr)
        return false;
    xcb_window_t const root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    auto const request = xcb_get_property(connection, false, root, atom->atom, XCB_ATOM_WINDOW, 0, 1);
    auto* const property = xcb_get_property_reply(connection, request, nullptr);
    bool const announced = property != nullptr && xcb_get_property_value_length(property) != 0;
    std::free(property);
    std::free(atom);
    return announced;
}

xcb_window_t CreateWindow(xcb_connection_t* connection) {
    xcb_screen_t const& screen = *xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    xcb_window_t const window = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen.root, 0, 0, 10, 10, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen.root_visual, 0, nullptr);
    return window;
}

/// Asks for a window to be shown; true once it is.
bool Appears(xcb_connection_t* connection, xcb_window_t window) {
    xcb_map_window(connection, window);
    auto const request = xcb_get_window_attributes(connection, window);
    auto* const attributes = xcb_get_window_attributes_reply(connection, request, nullptr);
    bool const viewable = attributes != nullptr && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
    std::free(attributes);
    return viewable;
}

/// Tries until it succeeds; false after the time that a start may take.
template<typename Condition>
bool WaitUntil(Condition condition) {
    for (int i = 0; i < kStartSeconds * 50; ++i) {
        if (condition())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}

/// The line that Xvfb writes once it accepts connections: the number of the display that it chose. Empty when
/// none comes. Xvfb writes the line end separately, and would not survive that its reader is gone by then.
std::string ReadLine(int end) {
    std::string line;
    pollfd ready = {end, POLLIN, 0};
    char character;
    while (poll(&ready, 1, kStartSeconds * 1000) == 1 && read(end, &character, 1) == 1) {
        if (character == '\n')
            return line;
        line += character;
    }
    return {};
}

} // namespace

VirtualDisplay::VirtualDisplay() {
    StartServer();
    StartWindowManager();
}

VirtualDisplay::~VirtualDisplay() {
    for (int const process : m_processes | std::views::reverse) {
        kill(process, SIGTERM);
        waitpid(process, nullptr, 0);
    }
}

void VirtualDisplay::Start(std::vector<std::string> command, int keepOpen) {
    std::vector<char*> arguments;
    for (std::string& argument : command)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    int const process = fork();
    if (process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM); // also when the test crashes
        int const nowhere = open("/dev/null", O_RDWR);
        for (int const standardStream : {0, 1, 2})
            dup2(nowhere, standardStream);
        if (keepOpen >= 0)
            fcntl(keepOpen, F_SETFD, 0);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    if (process < 0)
        throw std::runtime_error("cannot start " + command[0]);
    m_processes.push_back(process);
}

void VirtualDisplay::StartServer() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error("cannot make a pipe");
    Start({"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0", "1600x1200x24", "-nolisten", "tcp"},
          ends[1]);
    close(ends[1]);
    std::string const number = ReadLine(ends[0]);
    close(ends[0]);
    if (number.empty())
        throw std::runtime_error("Xvfb does not start; is it installed?");
    setenv("DISPLAY", (":" + number).c_str(), true);
    unsetenv("WAYLAND_DISPLAY");
    setenv("QT_QPA_PLATFORM", "xcb", true);
}

void VirtualDisplay::StartWindowManager() {
    Start({"openbox", "--sm-disable"}, -1);
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    bool works = WaitUntil([=] { return HasWindowManager(connection); });
    if (works) {
        // openbox announces itself early, and loses the windows that ask to be shown until it is done
        // starting.
        xcb_window_t const window = CreateWindow(connection);
        works = WaitUntil([=] { return Appears(connection, window); });
        xcb_destroy_window(connection, window);
    }
    xcb_disconnect(connection);
    if (!works)
        throw std::runtime_error("openbox does not start; is it installed?");
}

} // namespace zarvex::testing
