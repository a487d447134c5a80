#include "Invisible.h"

namespace dolqctl {

namespace {

bool isAscii(char byte) { return static_cast<unsigned char>(byte) < 0x80; }

} // namespace

std::size_t findInvisible(const std::string& text, const Invisible& character, std::size_t from) {
    const bool isByte = character.bytes[1] == '\0';
    std::size_t at = text.find(character.bytes, from);
    while (isByte && at != text.npos && at > 0 && !isAscii(text[at - 1])) {
        at = text.find(character.bytes, at + 1);
    }
    return at;
}

} // namespace dolqctl
