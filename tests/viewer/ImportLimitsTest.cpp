// What an import may use up, and what it may ask of the kernel. Each in a process of its own.
#include <importer/Limits.h>
#include <importer/SystemCalls.h>

#include <gtest/gtest.h>

#include <QImage>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <thread>

#include <fcntl.h>
#include <seccomp.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace viewer {

namespace {

/// Ends the process with 0 where the system calls of `operation` are let through.
template<typename Operation>
[[noreturn]] void RunClosed(Operation operation) {
    if (!CloseSystemCalls())
        _exit(2);
    operation();
    _exit(0);
}

constexpr char const* kRefused = "what reading a mesh has no need of, call [0-9]+";

} // namespace

TEST(ImportLimitsTest, SystemCallsThatAMeshHasNoNeedOfEndTheImport) {
    EXPECT_EXIT(RunClosed([] { socket(AF_UNIX, SOCK_STREAM, 0); }), testing::ExitedWithCode(1), kRefused);
    // Not fork() itself: with glibc 2.41 the kernel ends the process there, and no message is heard.
    EXPECT_EXIT(RunClosed([] { syscall(SYS_clone, SIGCHLD, nullptr, nullptr, nullptr, nullptr); }),
                testing::ExitedWithCode(1), kRefused);
    EXPECT_EXIT(RunClosed([] { execl("/bin/true", "true", nullptr); }), testing::ExitedWithCode(1), kRefused);
    EXPECT_EXIT(RunClosed([] { open("/tmp", O_RDWR | O_TMPFILE, 0600); }), testing::ExitedWithCode(1),
                kRefused);
    EXPECT_EXIT(RunClosed([] { unlink("/no/such/file"); }), testing::ExitedWithCode(1), kRefused);
    EXPECT_EXIT(RunClosed([] { kill(getppid(), 0); }), testing::ExitedWithCode(1), kRefused);
    EXPECT_EXIT(RunClosed([] {
                    rlimit const limits{RLIM_INFINITY, RLIM_INFINITY};
                    setrlimit(RLIMIT_CPU, &limits);
                }),
                testing::ExitedWithCode(1), kRefused);
}

TEST(ImportLimitsTest, ReadingComputingAndThreadsGoOn) {
    EXPECT_EXIT(RunClosed([] {
                    if (open("/etc/passwd", O_RDONLY) < 0)
                        _exit(3);
                    std::thread([] { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }).join();
                    // Large enough for Qt to convert it in several threads.
                    QImage image(3000, 3000, QImage::Format_RGB32);
                    image.fill(Qt::red);
                    QImage const smaller =
                        image.scaled(500, 500, Qt::KeepAspectRatio, Qt::SmoothTransformation);
                    if (image.convertToFormat(QImage::Format_RGBA64).isNull() || smaller.isNull())
                        _exit(4);
                }),
                testing::ExitedWithCode(0), "");
}

TEST(ImportLimitsTest, WhereTheKernelOffersNoFilterItSaysSo) {
    auto const closeWithoutFilters = [] {
        scmp_filter_ctx const filter = seccomp_init(SCMP_ACT_ALLOW);
        seccomp_rule_add(filter, SCMP_ACT_ERRNO(EINVAL), SCMP_SYS(seccomp), 0);
        seccomp_rule_add(filter, SCMP_ACT_ERRNO(EINVAL), SCMP_SYS(prctl), 0);
        if (seccomp_load(filter) != 0)
            _exit(3);
        _exit(CloseSystemCalls() ? 2 : 0);
    };
    EXPECT_EXIT(closeWithoutFilters(), testing::ExitedWithCode(0), "");
}

TEST(ImportLimitsTest, WhenTheTimeIsOverTheImportEnds) {
    auto const computeForEver = [] {
        LimitTime(1);
        while (clock() >= 0) {
        }
    };
    EXPECT_EXIT(computeForEver(), testing::ExitedWithCode(1), "It takes more than 1 s to read");
}

TEST(ImportLimitsTest, WritingWithoutEndFails) {
    auto const writeFar = [] {
        LimitMemory(1000);
        int const file = open("/tmp", O_RDWR | O_TMPFILE, 0600);
        bool const isNear = pwrite(file, "x", 1, 1000) == 1;
        bool const isFar = pwrite(file, "x", 1, off_t{1} << 50) == 1;
        _exit(isNear && !isFar ? 0 : 3);
    };
    EXPECT_EXIT(writeFar(), testing::ExitedWithCode(0), "");
}

} // namespace viewer
