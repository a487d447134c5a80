#include "support/FailingMalloc.h"

#include <atomic>
#include <cerrno>
#include <cstddef>

namespace {

std::atomic<bool> isActive{false};
std::atomic<long> untilFailure{0};
std::atomic<bool> isLasting{false};
std::atomic<long> live{0};

} // namespace

void startFailingMalloc(long position, bool lasting) {
    untilFailure = position;
    isLasting = lasting;
    isActive = true;
}

bool stopFailingMalloc() {
    isActive = false;
    return kMallocCanFail && untilFailure <= 0;
}

long liveBlocks() { return live; }

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

namespace {

bool fails() {
    if (!isActive) {
        return false;
    }
    const long left = --untilFailure;
    const bool failing = isLasting ? left <= 0 : left == 0;
    errno = failing ? ENOMEM : errno;
    return failing;
}

void* counted(void* block) {
    live += block != nullptr ? 1 : 0;
    return block;
}

} // namespace

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) { return fails() ? nullptr : counted(__libc_malloc(size)); }

void* calloc(std::size_t count, std::size_t size) {
    return fails() ? nullptr : counted(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) {
    if (fails()) {
        return nullptr;
    }
    void* const moved = __libc_realloc(block, size);
    live += (moved != nullptr ? 1 : 0) - (block != nullptr && (moved != nullptr || size == 0));
    return moved;
}

void free(void* block) {
    live -= block != nullptr ? 1 : 0;
    __libc_free(block);
}
}

#endif
