#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>

/// The names of an alarm's codes in logs, in traces and on the command line.
namespace common {

/// Indexed by SaNtfSeverityT.
constexpr const char* kSeverityNames[] = {"cleared", "indeterminate", "warning",
                                          "minor",   "major",         "critical"};

/// Indexed by the severity code of a client of the library.
constexpr const char* kClientSeverityNames[] = {
    kSeverityNames[2], kSeverityNames[3], kSeverityNames[4], kSeverityNames[5], kSeverityNames[1]};

/// Indexed by SaNtfEventTypeT, counted from the first event type of alarms.
constexpr const char* kEventTypeNames[] = {"alarm",           "communications", "qualityOfService",
                                           "processingError", "equipment",      "environmental"};

/// Stands for the name of a program group when an alarm has none.
constexpr char kNoProgramGroup[] = "nonePgGrp";

/// Indexed by the program group code of a client of the library. Any other code means the last one.
constexpr const char* kProgramGroupNames[] = {"gratPgGrp", "wratPgGrp", "lratPgGrp", "nrPgGrp",
                                              kNoProgramGroup};

/// The name of a code in one of these tables, or "unknown".
template <typename Names> constexpr const char* nameOf(std::uint32_t code, const Names& names) {
    return code < std::size(names) ? names[code] : "unknown";
}

/// The code of a name in one of these tables, or one that has no name.
template <typename Names> std::uint32_t codeOf(std::string_view name, const Names& names) {
    return static_cast<std::uint32_t>(std::find(std::begin(names), std::end(names), name) -
                                      std::begin(names));
}

} // namespace common
