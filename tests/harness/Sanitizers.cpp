// What the sanitizers need to tell our faults from those of drivers.
#include "Sanitizers.h"

namespace zarvex::testing {

namespace {

bool endsUntidily = false;

} // namespace

void ExpectUntidyEnd() {
    endsUntidily = true;
}

} // namespace zarvex::testing

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

/// Stands in for the system's: no library is unloaded. What a driver's globals point to would otherwise be
/// reported as leaked, by an unknown module, once bgfx has unloaded the driver.
extern "C" [[gnu::visibility("default")]] int dlclose(void*) {
    return 0;
}

#endif

#if defined(__SANITIZE_ADDRESS__)

/// Leaves it to the heap to know the thread-local memory of libraries that were loaded later: glibc has taken
/// it from there since 2.25. Up to GCC 13 and Clang 16 the sanitizer takes such memory for that of an older
/// glibc where a page begins 16 bytes before it, and the leak check then reads through what is no pointer:
/// "Tracer caught signal 11", in one run out of many.
///
/// More memory at once than a picture may need is refused as the system refuses it.
extern "C" [[gnu::visibility("default")]] char const* __asan_default_options() {
    return "intercept_tls_get_addr=0:allocator_may_return_null=1:max_allocation_size_mb=8192";
}

extern "C" [[gnu::visibility("default")]] int __lsan_is_turned_off() {
    return zarvex::testing::endsUntidily ? 1 : 0;
}

/// Leaks of libraries, each with its reason.
extern "C" [[gnu::visibility("default")]] char const* __lsan_default_suppressions() {
    return
        // Loses a few hundred bytes, once, while it reads its configuration.
        "leak:libfontconfig\n";
}

#endif

#if defined(__SANITIZE_THREAD__)

/// Qt, the drivers and other libraries are built without the sanitizer, which therefore does not see how they
/// synchronise their threads: what they do is left out. bgfx is built with it. Memory as above.
extern "C" [[gnu::visibility("default")]] char const* __tsan_default_options() {
    return "ignore_noninstrumented_modules=1:allocator_may_return_null=1:max_allocation_size_mb=8192";
}

/// Races of bgfx, each with its reason.
extern "C" [[gnu::visibility("default")]] char const* __tsan_default_suppressions() {
    return
        // Publishes the context by a plain pointer, which the render thread looks at until it is there, and
        // what is in it along with that. From the first frame on they share semaphores, whose own counts
        // were set before, too.
        "race:bgfx::init\n"
        "race_top:bx::Semaphore::wait\n";
}

#endif
