// The kernel's limits.
#include "Limits.h"

#include <algorithm>
#include <csignal>
#include <string>

#include <sys/resource.h>
#include <unistd.h>

namespace viewer {

namespace {

/// The process may hold itself to less than it is held to, but not to more.
void Limit(__rlimit_resource resource, rlim_t soft, rlim_t hard) {
    rlimit limits{};
    getrlimit(resource, &limits);
    limits.rlim_max = std::min(limits.rlim_max, hard);
    limits.rlim_cur = std::min(limits.rlim_max, soft);
    setrlimit(resource, &limits);
}

std::string timeIsOver;

void EndForTime(int) {
    [[maybe_unused]] auto const written = write(STDERR_FILENO, timeIsOver.data(), timeIsOver.size());
    _exit(1);
}

} // namespace

void LimitMemory(qint64 fileSize) {
    constexpr qint64 base = qint64{4} << 30; // for small files that name large ones, and for their textures
    constexpr qint64 bytesPerByte = 250;     // of text, at the import's peak
    qint64 const most = qint64{sysconf(_SC_PHYS_PAGES)} * sysconf(_SC_PAGESIZE) / 4 * 3;
    auto const limit = static_cast<rlim_t>(
        fileSize < most / bytesPerByte ? std::min(most, base + bytesPerByte * fileSize) : most);
#ifndef __SANITIZE_ADDRESS__ // which takes address space by the terabyte
    Limit(RLIMIT_AS, limit, limit);
#endif
    Limit(RLIMIT_FSIZE, limit, limit);
    std::signal(SIGXFSZ, SIG_IGN); // writing fails instead
}

void LimitTime(unsigned seconds) {
    timeIsOver = "It takes more than " + std::to_string(seconds) + " s to read\n";
    std::signal(SIGXCPU, EndForTime);
    constexpr unsigned grace = 5; // then the kernel ends what does not end itself
    Limit(RLIMIT_CPU, seconds, seconds + grace);
}

} // namespace viewer
