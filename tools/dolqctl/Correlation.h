#pragma once

#include <optional>
#include <string>
#include <vector>

namespace dolqctl {

/// What a "CI=" entry says: who reported the alarm, and the events it is correlated with.
struct Correlation {
    std::string systemUuid;
    std::string computeName;
    bool isPrimary = false;         ///< caused by the one event in `uuids`, "" for none
    std::vector<std::string> uuids; ///< correlation UUIDs
};

/// Nothing when `entry` is not of the form that the library writes. Values are not escaped in it,
/// so a quote in one of them spoils it.
std::optional<Correlation> decodeCorrelation(const std::string& entry);

} // namespace dolqctl
