#pragma once

#include "Context.h"

namespace CLI {
class App;
}

namespace dolqctl {

/// `alarms`: the active alarms, out of the notification log.
void addAlarmsCommand(CLI::App& app, Context& context);

} // namespace dolqctl
