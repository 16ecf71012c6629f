// An X display for one test process.
#pragma once

#include <string>
#include <vector>

namespace zarvex::testing {

/// Starts Xvfb with the window manager openbox and points the process to it; ends both.
class VirtualDisplay {
public:
    /// Throws `std::runtime_error` when either does not start.
    VirtualDisplay();
    ~VirtualDisplay();

    VirtualDisplay(VirtualDisplay const&) = delete;
    VirtualDisplay& operator=(VirtualDisplay const&) = delete;

private:
    void Start(std::vector<std::string> command, int keepOpen);
    void StartServer();
    void StartWindowManager();

    std::vector<int> m_processes;
};

} // namespace zarvex::testing
