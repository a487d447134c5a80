#include "NameRoom.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>
#include <optional>
#include <sstream>
#include <string>

#include <malloc.h>

// A sanitizer's allocator can tell by itself; without one these are null. The names are its own.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {
[[gnu::weak]] int __sanitizer_get_ownership(const volatile void* block);
[[gnu::weak]] std::size_t __sanitizer_get_allocated_size(const volatile void* block);
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace dolqctl {

namespace {

/// The end of the mapping of private, anonymous, writable memory (as the heap is) that `address` is
/// in; 0 for other memory.
std::uintptr_t endOfHeapAround(std::uintptr_t address) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream fields(line);
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        char dash = 0;
        std::string rights, offset, device, inode, name;
        fields >> std::hex >> begin >> dash >> end >> rights >> offset >> device >> inode >> name;
        if (begin <= address && address < end) {
            return rights == "rw-p" && (name.empty() || name == "[heap]") ? end : 0;
        }
    }
    return 0;
}

/// Asking malloc about an address that is not the beginning of a block is undefined, so first it is
/// seen whether the word before it can be the size that glibc keeps there.
bool looksLikeBlock(const void* pointer) {
    constexpr std::size_t kAlignment = 2 * sizeof(std::size_t);
    constexpr std::size_t kFlags = 7;
    constexpr std::size_t kSmallest = 2 * kAlignment;
    const auto address = reinterpret_cast<std::uintptr_t>(pointer);
    const std::uintptr_t end =
        address % kAlignment == 0 ? endOfHeapAround(address - kAlignment) : 0;
    if (end == 0) {
        return false;
    }
    std::size_t size = 0;
    std::memcpy(&size, static_cast<const char*>(pointer) - sizeof(size), sizeof(size));
    size &= ~kFlags;
    return size >= kSmallest && size % kAlignment == 0 &&
           size <= end - (address - kAlignment) - sizeof(size);
}

std::optional<std::size_t> sizeOfBlock(const void* pointer) {
    if (__sanitizer_get_ownership != nullptr) {
        return __sanitizer_get_ownership(pointer) != 0
                   ? std::optional(__sanitizer_get_allocated_size(pointer))
                   : std::nullopt;
    }
    // malloc_usable_size only reads, but is declared otherwise.
    return looksLikeBlock(pointer) ? std::optional(malloc_usable_size(const_cast<void*>(pointer)))
                                   : std::nullopt;
}

} // namespace

NameRoom roomOf(const SaNameT* notificationObject, const SaNameT* notifyingObject) {
    const auto first = reinterpret_cast<std::uintptr_t>(notificationObject);
    const auto second = reinterpret_cast<std::uintptr_t>(notifyingObject);
    // Whatever the memory is: two names cannot be nearer than one of them is long.
    if ((first > second ? first - second : second - first) < sizeof(SaNameT)) {
        return NameRoom::TooSmall;
    }
    NameRoom room = NameRoom::Enough;
    for (const SaNameT* const name : {notificationObject, notifyingObject}) {
        const std::optional<std::size_t> size = sizeOfBlock(name);
        if (!size) {
            room = NameRoom::Unknown;
        } else if (*size < sizeof(SaNameT)) {
            return NameRoom::TooSmall;
        }
    }
    return room;
}

} // namespace dolqctl
