#pragma once

#include "Context.h"

namespace CLI {
class App;
}

namespace dolqctl {

/// `raise`: raises an alarm as an application would.
void addRaiseCommand(CLI::App& app, Context& context);

} // namespace dolqctl
