#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace common {

/// The texts of a list with `separator` between them, in one block of memory.
template <typename Texts>
std::string joined(const Texts& texts, std::string_view separator = ", ") {
    std::size_t length = 0;
    for (const std::string_view text : texts) {
        length += text.size() + separator.size();
    }
    std::string all;
    all.reserve(length);
    std::string_view before; // the first has nothing before it
    for (const std::string_view text : texts) {
        all.append(before).append(text);
        before = separator;
    }
    return all;
}

} // namespace common
