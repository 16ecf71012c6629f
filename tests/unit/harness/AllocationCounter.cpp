// Counts in place of the C library's functions or, where a sanitizer has replaced these, in its hooks.
#include "AllocationCounter.h"

#include <bgfx/bgfx.h>

#include <cstddef>

namespace {

thread_local long allocations = 0;

} // namespace

long zarvex::testing::CountAllocations() {
    return allocations;
}

long zarvex::testing::CountAllocationsOfAUniform() {
    bgfx::UniformHandle const uniform = bgfx::createUniform("u_counted", bgfx::UniformType::Vec4);
    float const value[4] = {};
    long before = 0;
    for (int i = 0; i < 2; ++i) { // the first makes room for the list
        before = allocations;
        bgfx::setUniform(uniform, value);
        bgfx::discard();
    }
    long const count = allocations - before;
    bgfx::destroy(uniform);
    return count;
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

// GCC has the function, but not the header that declares it.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(void const volatile*, std::size_t),
                                                         void (*onFree)(void const volatile*));

namespace {

void CountOne(void const volatile*, std::size_t) {
    ++allocations;
}

void CountNothing(void const volatile*) {}

[[maybe_unused]] int const hooks = __sanitizer_install_malloc_and_free_hooks(CountOne, CountNothing);

} // namespace

#else

extern "C" {

// What the C library calls its own.
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);

void* malloc(std::size_t size) {
    ++allocations;
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    ++allocations;
    return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) {
    ++allocations;
    return __libc_realloc(block, size);
}
}

#endif
