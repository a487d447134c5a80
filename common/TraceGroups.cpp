#include "common/TraceGroups.h"

#include <algorithm>
#include <charconv>

namespace common {

namespace {

constexpr unsigned kLastGroup = 8;
constexpr std::uint32_t kNoGroup = 0;
constexpr std::uint32_t kAllGroups = (1u << (kLastGroup + 1)) - 1;

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::optional<unsigned> parseGroup(std::string_view text) {
    unsigned group = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, group);
    if (result.ec != std::errc{} || result.ptr != end || group > kLastGroup) {
        return std::nullopt;
    }
    return group;
}

} // namespace

std::optional<std::uint32_t> parseTraceGroups(std::string_view text) {
    if (trimmed(text) == "all") {
        return kAllGroups;
    }
    if (trimmed(text) == "none") {
        return kNoGroup;
    }
    std::uint32_t groups = kNoGroup;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        const auto group = parseGroup(trimmed(text.substr(begin, end - begin)));
        if (!group) {
            return std::nullopt;
        }
        groups |= 1u << *group;
        begin = end + 1;
    }
    return groups;
}

} // namespace common
