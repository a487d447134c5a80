#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>

namespace common {

/// TinyXML parses elements by recursion on the caller's stack and searches an element's attributes
/// one by one for each new one. A file that goes beyond these limits is not given to it.
constexpr std::size_t kMaxElementDepth = 256;
constexpr std::size_t kMaxAttributes = 1000;

/// Whether TinyXML can parse `text` with bounded stack and in linear time, reading nothing behind
/// its end. True says nothing about well-formedness: what TinyXML refuses by itself is safe.
bool isSafeText(std::string_view text);

/// Whether the content of `file`, which is at its beginning and stays there, is safe text.
bool isSafeToParse(std::FILE* file);

} // namespace common
