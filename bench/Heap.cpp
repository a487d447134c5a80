#include "Heap.h"

#include <algorithm>
#include <cstdlib>

#include <malloc.h>

// The C library's own functions, which the ones below stand in front of.
extern "C" {
void* __libc_malloc(std::size_t size);                    // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(std::size_t count, std::size_t size); // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void* block, std::size_t size);      // NOLINT(bugprone-reserved-identifier)
void __libc_free(void* block);                            // NOLINT(bugprone-reserved-identifier)
}

namespace bench {

namespace {

thread_local Heap own;

std::ptrdiff_t sizeOf(void* block) {
    return static_cast<std::ptrdiff_t>(malloc_usable_size(block));
}

void* taken(void* block) {
    if (own.counting) {
        ++own.allocations;
        own.bytes += sizeOf(block);
        own.peakBytes = std::max(own.peakBytes, own.bytes);
    }
    return block;
}

void givenBack(void* block) {
    if (own.counting) {
        own.bytes -= sizeOf(block);
    }
}

} // namespace

Heap& heap() { return own; }

} // namespace bench

// The standard library's `new` and `delete` end here as well.
extern "C" {

[[gnu::visibility("default")]] void* malloc(std::size_t size) {
    return bench::taken(__libc_malloc(size));
}

[[gnu::visibility("default")]] void* calloc(std::size_t count, std::size_t size) {
    return bench::taken(__libc_calloc(count, size));
}

[[gnu::visibility("default")]] void* realloc(void* block, std::size_t size) {
    bench::givenBack(block);
    return bench::taken(__libc_realloc(block, size));
}

[[gnu::visibility("default")]] void free(void* block) {
    bench::givenBack(block);
    __libc_free(block);
}
}
