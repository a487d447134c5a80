#include "FencedArrays.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include <sys/mman.h>

namespace {

constexpr std::size_t kPage = 4096;
thread_local bool isFenced = false;
// One at a time is all that is ever needed.
thread_local char* fencedArray = nullptr;
thread_local char* fencedPages = nullptr;
thread_local std::size_t fencedSize = 0;

void* makeFenced(std::size_t size) {
    const std::size_t readable = (size + kPage - 1) / kPage * kPage;
    fencedSize = readable + kPage;
    fencedPages = static_cast<char*>(
        mmap(nullptr, fencedSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(fencedPages + readable, kPage, PROT_NONE);
    fencedArray = fencedPages + readable - size;
    return fencedArray;
}

} // namespace

namespace fenced_arrays {

Fence::Fence() { isFenced = true; }
Fence::~Fence() { isFenced = false; }

} // namespace fenced_arrays

void* operator new[](std::size_t size) {
    if (isFenced && fencedArray == nullptr) {
        return makeFenced(size);
    }
    void* const array = std::malloc(size);
    if (array == nullptr) {
        throw std::bad_alloc();
    }
    return array;
}

void operator delete[](void* array) noexcept {
    if (array != nullptr && array == fencedArray) {
        fencedArray = nullptr;
        munmap(fencedPages, fencedSize);
        return;
    }
    std::free(array);
}

void operator delete[](void* array, std::size_t) noexcept { operator delete[](array); }
