// A seccomp filter: the calls of the C library, of C++'s and of Qt's while they read files and compute.
#include "SystemCalls.h"

#if VIEWER_HAS_SECCOMP

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <initializer_list>
#include <memory>

#include <fcntl.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace viewer {

namespace {

constexpr int kAllowed[] = {
    // Memory.
    SCMP_SYS(brk), SCMP_SYS(mmap), SCMP_SYS(munmap), SCMP_SYS(mremap), SCMP_SYS(mprotect), SCMP_SYS(madvise),
    // Reading, and what is asked about files.
    SCMP_SYS(read), SCMP_SYS(readv), SCMP_SYS(pread64), SCMP_SYS(lseek), SCMP_SYS(fstat),
    SCMP_SYS(newfstatat), SCMP_SYS(stat), SCMP_SYS(lstat), SCMP_SYS(statx), SCMP_SYS(fstatfs),
    SCMP_SYS(readlink), SCMP_SYS(readlinkat), SCMP_SYS(access), SCMP_SYS(faccessat), SCMP_SYS(faccessat2),
    SCMP_SYS(getcwd), SCMP_SYS(getdents64), SCMP_SYS(fcntl), SCMP_SYS(close),
    // Writing to what is open.
    SCMP_SYS(write), SCMP_SYS(writev),
    // Threads, in which Qt converts images.
    SCMP_SYS(futex), SCMP_SYS(set_robust_list), SCMP_SYS(rseq), SCMP_SYS(gettid), SCMP_SYS(sched_yield),
    SCMP_SYS(sched_getaffinity), SCMP_SYS(eventfd2), SCMP_SYS(poll), SCMP_SYS(ppoll),
    // Time, chance and signals.
    SCMP_SYS(clock_gettime), SCMP_SYS(clock_getres), SCMP_SYS(clock_nanosleep), SCMP_SYS(gettimeofday),
    SCMP_SYS(getrandom), SCMP_SYS(rt_sigaction), SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigreturn),
    SCMP_SYS(sigaltstack), SCMP_SYS(restart_syscall),
    // Who and where it is, and its end.
    SCMP_SYS(getpid), SCMP_SYS(getuid), SCMP_SYS(geteuid), SCMP_SYS(getgid), SCMP_SYS(getegid),
    SCMP_SYS(uname), SCMP_SYS(sysinfo), SCMP_SYS(exit), SCMP_SYS(exit_group)};

bool AddRules(scmp_filter_ctx filter) {
    constexpr scmp_datum_t writing = O_ACCMODE | O_CREAT | O_TRUNC;
    auto const add = [filter](std::uint32_t action, int call,
                              std::initializer_list<scmp_arg_cmp> conditions) {
        return seccomp_rule_add_array(filter, action, call, static_cast<unsigned>(conditions.size()),
                                      conditions.begin()) == 0;
    };
    bool isComplete = true;
    for (int const call : kAllowed)
        isComplete = isComplete && add(SCMP_ACT_ALLOW, call, {});
    return isComplete && //
           add(SCMP_ACT_ALLOW, SCMP_SYS(open), {SCMP_A1(SCMP_CMP_MASKED_EQ, writing, O_RDONLY)}) &&
           add(SCMP_ACT_ALLOW, SCMP_SYS(openat), {SCMP_A2(SCMP_CMP_MASKED_EQ, writing, O_RDONLY)}) &&
           add(SCMP_ACT_ALLOW, SCMP_SYS(clone), {SCMP_A0(SCMP_CMP_MASKED_EQ, CLONE_THREAD, CLONE_THREAD)}) &&
           // Its flags cannot be seen; without it the C library takes clone.
           add(SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), {}) &&
           // Nothing here is a terminal.
           add(SCMP_ACT_ERRNO(ENOTTY), SCMP_SYS(ioctl), {}) &&
           add(SCMP_ACT_ALLOW, SCMP_SYS(prctl), {SCMP_A0(SCMP_CMP_EQ, PR_SET_NAME)}) &&
           // To look at limits, not to set them; and to end itself, not others.
           add(SCMP_ACT_ALLOW, SCMP_SYS(prlimit64), {SCMP_A2(SCMP_CMP_EQ, 0)}) &&
           add(SCMP_ACT_ALLOW, SCMP_SYS(tgkill), {SCMP_A0(SCMP_CMP_EQ, static_cast<scmp_datum_t>(getpid()))});
}

void Write(char const* text, std::size_t length) {
    [[maybe_unused]] auto const written = write(STDERR_FILENO, text, length);
}

void EndForCall(int, siginfo_t* info, void*) {
    constexpr char reason[] = "It asked the system for what reading a mesh has no need of, call ";
    char number[16];
    char* const end = std::to_chars(number, number + sizeof number - 1, info->si_syscall).ptr;
    *end = '\n';
    Write(reason, std::strlen(reason));
    Write(number, static_cast<std::size_t>(end + 1 - number));
    _exit(1);
}

} // namespace

bool CloseSystemCalls() {
    struct sigaction action{};
    action.sa_sigaction = EndForCall;
    action.sa_flags = SA_SIGINFO;
    std::unique_ptr<void, void (*)(scmp_filter_ctx)> const filter(seccomp_init(SCMP_ACT_TRAP),
                                                                  seccomp_release);
    return filter != nullptr && AddRules(filter.get()) && sigaction(SIGSYS, &action, nullptr) == 0 &&
           seccomp_load(filter.get()) == 0;
}

} // namespace viewer

#else

bool viewer::CloseSystemCalls() {
    return false;
}

#endif
