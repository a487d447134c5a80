#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include <ruxa/fm/fmi/v1/FaultManagementI.h>

namespace dolqctl {

class Options;
class Output;

/// What raising and ceasing have in common: which alarm, and what is shown of it.
struct AlarmArguments {
    std::string object;
    std::uint32_t faultId = 0;
    bool verbose = false;
};

void addAlarmOptions(Options& options, AlarmArguments& arguments);

/// Calls `operation` on an adapter of the library, then shows the traces that this left and whether
/// a notification was sent. Returns the exit code.
int sendAlarm(const AlarmArguments& arguments, Output& output,
              const std::function<void(ruxa::fm::fmi::v1::FaultManagementI&)>& operation);

} // namespace dolqctl
