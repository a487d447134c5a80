// Preloaded into a program: the C library's allocator, which can be made to fail.

#include <atomic>
#include <cerrno>
#include <cstddef>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

std::atomic<bool> isActive{false};
std::atomic<long> untilFailure{0};
std::atomic<bool> isLasting{false};
std::atomic<long> live{0};

bool fails() {
    if (!isActive) {
        return false;
    }
    const long left = --untilFailure;
    return isLasting ? left <= 0 : left == 0;
}

void* counted(void* block) {
    live += block != nullptr ? 1 : 0;
    return block;
}

void* refused() {
    errno = ENOMEM;
    return nullptr;
}

} // namespace

#pragma GCC visibility push(default)
extern "C" {

/// From now on the `position`th allocation fails, or all from it on.
void failingMallocStart(long position, bool lasting) {
    untilFailure = position;
    isLasting = lasting;
    isActive = true;
}

/// Ends that. Whether an allocation has failed.
bool failingMallocStop() {
    isActive = false;
    return untilFailure <= 0;
}

/// How many blocks are allocated.
long failingMallocLive() { return live; }

void* malloc(std::size_t size) { return fails() ? refused() : counted(__libc_malloc(size)); }

void* calloc(std::size_t count, std::size_t size) {
    return fails() ? refused() : counted(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) {
    if (fails()) {
        return refused();
    }
    void* const moved = __libc_realloc(block, size);
    live += (moved != nullptr ? 1 : 0) - (block != nullptr && (moved != nullptr || size == 0));
    return moved;
}

void* memalign(std::size_t alignment, std::size_t size) {
    return fails() ? refused() : counted(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    *block = memalign(alignment, size);
    return *block != nullptr ? 0 : ENOMEM;
}

void free(void* block) {
    live -= block != nullptr ? 1 : 0;
    __libc_free(block);
}
}
#pragma GCC visibility pop
