#pragma once

#include <string>

namespace dolqctl {

/// A character that looks like a blank or like nothing, and stays in a class of a mapping file.
struct Invisible {
    const char* bytes;
    const char* name;
};

/// In UTF-8; the last one as the parser leaves it in a file without encoding.
constexpr Invisible kInvisible[] = {
    {"\u00A0", "U+00A0"}, {"\u2007", "U+2007"}, {"\u200B", "U+200B"},      {"\u202F", "U+202F"},
    {"\u3000", "U+3000"}, {"\uFEFF", "U+FEFF"}, {"\xA0", "the byte 0xA0"},
};

/// Where `character` is at or behind `from`, or `npos`. A byte behind one that is not ASCII is
/// taken for a part of that character.
std::size_t findInvisible(const std::string& text, const Invisible& character,
                          std::size_t from = 0);

} // namespace dolqctl
