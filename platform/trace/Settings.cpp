#include "Settings.h"

#include "Escape.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>

namespace ruxa::trace::v2 {
namespace {

constexpr char kGroupsVariable[] = "RUXA_TRACE_GROUPS";
constexpr char kPrefixVariable[] = "RUXA_TRACE_PREFIX";
constexpr unsigned kLastGroup = 8;
constexpr std::uint32_t kNoGroup = 0;
constexpr std::uint32_t kAllGroups = (1u << (kLastGroup + 1)) - 1;
constexpr std::uint32_t kDefaultGroups = 1u << 0;

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

std::optional<std::uint32_t> parseGroups(std::string_view text) {
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

std::uint32_t enabledGroups() {
    const char* const value = std::getenv(kGroupsVariable);
    if (value == nullptr) {
        return kDefaultGroups;
    }
    const auto groups = parseGroups(value);
    if (!groups) {
        reportUnusedSetting(kGroupsVariable, value,
                            "it must be all, none, or numbers from 0 to 8 joined by commas",
                            "group 0");
    }
    return groups.value_or(kDefaultGroups);
}

std::string traceObjectPrefix() {
    const char* const value = std::getenv(kPrefixVariable);
    return value != nullptr ? value : std::string(program_invocation_short_name) + ".";
}

void reportUnusedSetting(const char* variable, const std::string& value, const std::string& reason,
                         const char* used) {
    std::fprintf(stderr, "ruxa-trace: %s=\"%s\" is not used: %s. Tracing uses %s instead.\n",
                 variable, escapedText(value).c_str(), escapedText(reason).c_str(), used);
}

} // namespace ruxa::trace::v2
