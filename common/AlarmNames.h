#pragma once

#include <cstdint>
#include <iterator>

/// What the codes of alarms are called, in logs, in traces and on the command line.
namespace common {

/// Indexed by SaNtfSeverityT.
constexpr const char* kSeverityNames[] = {"cleared", "indeterminate", "warning",
                                          "minor",   "major",         "critical"};

/// Indexed by a client's severity code.
constexpr const char* kClientSeverityNames[] = {
    kSeverityNames[2], kSeverityNames[3], kSeverityNames[4], kSeverityNames[5], kSeverityNames[1]};

/// Indexed by SaNtfEventTypeT, counted from the alarms' first one.
constexpr const char* kEventTypeNames[] = {"alarm",           "communications", "qualityOfService",
                                           "processingError", "equipment",      "environmental"};

/// What travels in place of a program group's name when an alarm has none.
constexpr char kNoProgramGroup[] = "nonePgGrp";

/// Indexed by a client's program group code; all codes beyond mean none as well.
constexpr const char* kProgramGroupNames[] = {"gratPgGrp", "wratPgGrp", "lratPgGrp", "nrPgGrp",
                                              kNoProgramGroup};

/// The name that the table has for a code, "unknown" for one beyond it.
template <typename Names> constexpr const char* nameOf(std::uint32_t code, const Names& names) {
    return code < std::size(names) ? names[code] : "unknown";
}

} // namespace common
