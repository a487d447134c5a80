#pragma once

#include "Context.h"

namespace CLI {
class App;
}

namespace dolqctl {

/// `cease`: ceases an alarm as an application would.
void addCeaseCommand(CLI::App& app, Context& context);

} // namespace dolqctl
