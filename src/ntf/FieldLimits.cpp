#include "ntf/FieldLimits.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace dolq {

namespace {

// The interface's counts and sizes have 16 bits. The NUL of a text is part of its size.
constexpr std::size_t kLargestCount = std::numeric_limits<std::uint16_t>::max();
constexpr std::size_t kLongestText = kLargestCount - 1;
static_assert(SA_MAX_NAME_LENGTH == 600, "the NTF headers must be those of 600-byte names");
constexpr std::size_t kLongestName = SA_MAX_NAME_LENGTH - 1;
constexpr std::size_t kLongestUtf8Tail = 3; // bytes that can follow a character's first byte

bool continuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

} // namespace

std::uint16_t sentLength(const std::string& text) {
    if (text.size() <= kLongestText) {
        return static_cast<std::uint16_t>(text.size());
    }
    std::size_t length = kLongestText;
    while (length > kLongestText - kLongestUtf8Tail && continuesCharacter(text[length])) {
        --length;
    }
    // A text without the first byte of a character in reach is not UTF-8, and is cut anywhere.
    return static_cast<std::uint16_t>(continuesCharacter(text[length]) ? kLongestText : length);
}

std::uint16_t sentCount(const std::vector<std::string>& list) {
    return static_cast<std::uint16_t>(std::min(list.size(), kLargestCount));
}

void copyText(const std::string& text, std::uint16_t length, char* destination) {
    std::memcpy(destination, text.data(), length);
    destination[length] = '\0';
}

void copyName(const std::string& text, SaNameT& name) {
    name.length = static_cast<SaUint16T>(std::min(text.size(), kLongestName));
    std::memcpy(name.value, text.data(), name.length);
    std::memset(name.value + name.length, 0, sizeof(name.value) - name.length);
}

} // namespace dolq
