// An alarm whose texts are too long is worth more with its texts cut than not sent. Here is what a
// notification can carry of each: counts and sizes have 16 bits in the standard's interface, and
// names 600 bytes in the headers that the library is built with. The session traces every cut.

#include "ntf/FieldLimits.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>

namespace dolq {

namespace {

constexpr std::size_t kLargestCount = std::numeric_limits<std::uint16_t>::max();
constexpr std::size_t kLongestText = kLargestCount - 1; // the NUL takes one more
static_assert(SA_MAX_NAME_LENGTH == 600, "the NTF headers must be those of 600-byte names");
constexpr std::size_t kLongestName = SA_MAX_NAME_LENGTH - 1;
constexpr std::size_t kLongestUtf8Tail = 3; // bytes that can follow a character's first byte

bool continuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

} // namespace

std::uint16_t sentSize(const std::string& text) {
    std::size_t length = text.size();
    if (length > kLongestText) {
        length = kLongestText;
        while (length > kLongestText - kLongestUtf8Tail && continuesCharacter(text[length])) {
            --length;
        }
        if (continuesCharacter(text[length])) {
            length = kLongestText; // no first byte in reach: not UTF-8, and cut anywhere
        }
    }
    return static_cast<std::uint16_t>(length + 1);
}

std::uint16_t sentCount(const std::vector<std::string>& list) {
    return static_cast<std::uint16_t>(std::min(list.size(), kLargestCount));
}

void copyText(const std::string& text, std::uint16_t size, char* destination) {
    std::memcpy(destination, text.data(), size - 1U);
    destination[size - 1] = '\0';
}

void copyName(const std::string& text, SaNameT& name) {
    name.length = static_cast<SaUint16T>(std::min(text.size(), kLongestName));
    std::memcpy(name.value, text.data(), name.length);
    std::memset(name.value + name.length, 0, sizeof(name.value) - name.length);
}

} // namespace dolq
