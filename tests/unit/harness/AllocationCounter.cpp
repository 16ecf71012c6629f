// Counts in place of the C library's functions or, where a sanitizer has replaced these, in its hooks.
#include "AllocationCounter.h"

#include <bgfx/bgfx.h>

#include <atomic>
#include <cerrno>
#include <cstddef>

#include <malloc.h>

namespace {

thread_local long allocations = 0;
std::atomic<long> heldBytes = 0; // of all threads

} // namespace

long zarvex::testing::CountAllocations() {
    return allocations;
}

long zarvex::testing::CountHeldBytes() {
    return heldBytes;
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

long zarvex::testing::CountAllocationsOfBindings() {
    long before = 0;
    for (int i = 0; i < 3; ++i) { // bgfx has two frames; the first of each makes room for the list
        bgfx::frame();
        before = allocations;
        bgfx::discard(); // leaves nothing bound
    }
    return allocations - before;
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ZX3D_HAS_SANITIZED_HEAP
#elif defined(__has_feature) // Clang's way to tell
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ZX3D_HAS_SANITIZED_HEAP
#endif
#endif

#ifdef ZX3D_HAS_SANITIZED_HEAP

// GCC has the functions, but not the header that declares them.
extern "C" {
int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(void const volatile*, std::size_t),
                                              void (*onFree)(void const volatile*));
std::size_t __sanitizer_get_allocated_size(void const volatile* block);
}

namespace {

void CountMalloc(void const volatile*, std::size_t size) {
    ++allocations;
    heldBytes += static_cast<long>(size);
}

void CountFree(void const volatile* block) {
    if (block != nullptr)
        heldBytes -= static_cast<long>(__sanitizer_get_allocated_size(block));
}

[[maybe_unused]] int const hooks = __sanitizer_install_malloc_and_free_hooks(CountMalloc, CountFree);

} // namespace

#else

extern "C" {

// What the C library calls its own.
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

void* CountTaken(void* block) {
    ++allocations;
    heldBytes += static_cast<long>(malloc_usable_size(block));
    return block;
}

void CountGivenBack(void* block) {
    heldBytes -= static_cast<long>(malloc_usable_size(block));
}

} // namespace

extern "C" {

void* malloc(std::size_t size) {
    return CountTaken(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) {
    return CountTaken(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) {
    CountGivenBack(block);
    return CountTaken(__libc_realloc(block, size));
}

void* memalign(std::size_t alignment, std::size_t size) {
    return CountTaken(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return CountTaken(__libc_memalign(alignment, size));
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    *block = CountTaken(__libc_memalign(alignment, size));
    return *block != nullptr ? 0 : ENOMEM;
}

void free(void* block) {
    CountGivenBack(block);
    __libc_free(block);
}
}

#endif
