#pragma once

#include <cerrno>
#include <cstddef>

inline int g_mallocsUntilFailure = 0; // 0: none fails

/// Lets the `position`th malloc from now on (1 is the next), in whichever library of this program,
/// fail while `work` runs. False when there are not so many.
template <typename Work> bool withFailingMalloc(int position, Work work) {
    g_mallocsUntilFailure = position;
    work();
    const bool failed = g_mallocsUntilFailure == 0;
    g_mallocsUntilFailure = 0;
    return failed;
}

#if defined(__SANITIZE_ADDRESS__) ||                                                               \
    defined(__SANITIZE_THREAD__) // which have a malloc of their own
constexpr bool kMallocCanFail = false;
#else
constexpr bool kMallocCanFail = true;

extern "C" void* __libc_malloc(std::size_t size); // NOLINT(bugprone-reserved-identifier): glibc's

extern "C" [[gnu::visibility("default"), gnu::used]] inline void*
malloc(std::size_t size) noexcept {
    if (g_mallocsUntilFailure > 0 && --g_mallocsUntilFailure == 0) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_malloc(size);
}
#endif
