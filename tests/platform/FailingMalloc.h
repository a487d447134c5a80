#pragma once

#include <cerrno>
#include <cstddef>

// One malloc of this program, in whichever library, can be made to fail. A sanitizer has a malloc
// of its own: there, none fails.

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kMallocCanFail = false;
#else
constexpr bool kMallocCanFail = true;
extern "C" void* __libc_malloc(std::size_t size); // NOLINT(bugprone-reserved-identifier): glibc's
#endif

inline int g_mallocsUntilFailure = 0; // 0: none fails

/// Lets the `position`th malloc from now on (1 is the next) fail while `work` runs. False when
/// there are not so many.
template <typename Work> bool withFailingMalloc(int position, Work work) {
    g_mallocsUntilFailure = position;
    work();
    const bool failed = g_mallocsUntilFailure == 0;
    g_mallocsUntilFailure = 0;
    return failed;
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
extern "C" [[gnu::visibility("default"), gnu::used]] inline void*
malloc(std::size_t size) noexcept {
    if (g_mallocsUntilFailure > 0 && --g_mallocsUntilFailure == 0) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_malloc(size);
}
#endif
