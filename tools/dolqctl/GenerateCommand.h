#pragma once

#include "Context.h"

namespace CLI {
class App;
}

namespace dolqctl {

/// `generate`: named constants for programs, from mapping files.
void addGenerateCommand(CLI::App& app, Context& context);

} // namespace dolqctl
