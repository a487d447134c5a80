#pragma once

#include <functional>
#include <string>

#include <ruxa/fm/fmi/v1/FaultManagementI.h>

#include "Context.h"

namespace CLI {
class App;
}

namespace dolqctl {

/// What all operations have in common: which alarm, and how it is sent.
struct AlarmOptions {
    std::string object;
    std::uint32_t faultId = 0;
    std::string faultIdName;
    bool v1 = false;
    bool details = false;
    bool json = false;
};

void addAlarmOptions(CLI::App& command, AlarmOptions& options);

/// Calls `operation` on an adapter of the library, then shows the traces that this left and whether
/// a notification was sent. Returns the exit code.
int sendAlarm(const AlarmOptions& options, Output& output,
              const std::function<void(ruxa::fm::fmi::v1::FaultManagementI&)>& operation);

} // namespace dolqctl
