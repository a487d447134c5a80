#include "support/FailingMalloc.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool> isActive{false};
std::atomic<long> untilFailure{0};
std::atomic<long> live{0};
bool isLasting = false;
bool (*isExempted)() = nullptr;

bool fails() {
    if (!isActive || (isExempted != nullptr && isExempted())) {
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

void startFailingMalloc(long position, bool lasting, bool (*isExempt)()) {
    untilFailure = position;
    isLasting = lasting;
    isExempted = isExempt;
    isActive = true;
}

bool stopFailingMalloc() {
    isActive = false;
    return untilFailure <= 0;
}

long liveBlocks() { return live; }

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

/// It loses what it was building when memory runs out.
extern "C" const char* __lsan_default_suppressions() { return "leak:libtinyxml"; }

void* operator new(std::size_t size) {
    void* const block = fails() ? nullptr : counted(std::malloc(size));
    return block != nullptr ? block : throw std::bad_alloc();
}

void operator delete(void* block) noexcept {
    live -= block != nullptr ? 1 : 0;
    std::free(block);
}

// A sanitizer's own would not end in those above.
void* operator new[](std::size_t size) { return operator new(size); }
void operator delete[](void* block) noexcept { operator delete(block); }
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
void operator delete[](void* block, std::size_t) noexcept { operator delete(block); }

#else

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
