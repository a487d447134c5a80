#pragma once

#include "Context.h"

namespace CLI {
class App;
}

namespace dolqctl {

/// `explain`: whether a fault on an object would raise an alarm, which one, and why not.
void addExplainCommand(CLI::App& app, Context& context);

} // namespace dolqctl
