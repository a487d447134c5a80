#include "common/TraceGroups.h"

namespace common {

std::optional<std::uint32_t> parseTraceGroups(std::string_view text) {
    constexpr char kFirst = '0';
    constexpr char kLast = '8';
    if (text == "all") {
        return (1u << (kLast - kFirst + 1)) - 1;
    }
    if (text == "none") {
        return 0;
    }
    std::uint32_t groups = 0;
    bool atNumber = true; // else at a comma or the end
    for (const char next : text) {
        if (next == ' ') {
            continue;
        }
        if (atNumber ? next < kFirst || next > kLast : next != ',') {
            return std::nullopt;
        }
        if (atNumber) {
            groups |= 1u << (next - kFirst);
        }
        atNumber = !atNumber;
    }
    return atNumber ? std::nullopt : std::optional(groups);
}

} // namespace common
