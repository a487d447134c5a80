#include "FailingHeap.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include <dlfcn.h>
#include <execinfo.h>

#include "FakePlatform.h"

namespace {

/// Precedes each block. Blocks that are watched form a list.
struct alignas(std::max_align_t) Header {
    Header* next;
    Header* previous; // null: not watched
};

Header g_watched{&g_watched, &g_watched};
std::size_t g_untilFailure = 0;
bool g_active = false;
bool g_failedInTinyXml = false;

bool isCalledByTinyXml() {
    void* frames[64];
    const int count = backtrace(frames, 64);
    for (int i = 0; i < count; ++i) {
        Dl_info info;
        if (dladdr(frames[i], &info) != 0 && std::strstr(info.dli_fname, "libtinyxml") != nullptr) {
            return true;
        }
    }
    return false;
}

void* allocate(std::size_t size) {
    const bool watched = g_active && !PlatformCode::isRunning();
    if (watched && g_untilFailure != 0 && --g_untilFailure == 0) {
        g_failedInTinyXml = isCalledByTinyXml();
        throw std::bad_alloc();
    }
    auto* const header = static_cast<Header*>(std::malloc(sizeof(Header) + size));
    if (header == nullptr) {
        throw std::bad_alloc();
    }
    *header = {};
    if (watched) {
        *header = {&g_watched, g_watched.previous};
        header->previous->next = header;
        g_watched.previous = header;
    }
    return header + 1;
}

void release(void* block) noexcept {
    if (block == nullptr) {
        return;
    }
    Header* const header = static_cast<Header*>(block) - 1;
    if (header->previous != nullptr) {
        header->previous->next = header->next;
        header->next->previous = header->previous;
    }
    std::free(header);
}

} // namespace

namespace failing_heap {

void failAt(std::size_t position) {
    g_untilFailure = position;
    g_failedInTinyXml = false;
    g_active = true;
}

bool stop() {
    g_active = false;
    return g_untilFailure == 0;
}

std::size_t leakedBlocks() {
    std::size_t count = 0;
    for (const Header* block = g_watched.next; block != &g_watched; block = block->next) {
        ++count;
    }
    return count;
}

bool failedInTinyXml() { return g_failedInTinyXml; }

void releaseLeakedBlocks() {
    while (g_watched.next != &g_watched) {
        release(g_watched.next + 1);
    }
}

} // namespace failing_heap

// Array forms included: a sanitizer's own would not end in the plain ones.
void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* block) noexcept { release(block); }
void operator delete[](void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t) noexcept { release(block); }
void operator delete[](void* block, std::size_t) noexcept { release(block); }
