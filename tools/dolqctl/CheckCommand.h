#pragma once

#include "Context.h"

namespace CLI {
class App;
}

namespace dolqctl {

/// `check`: what is wrong with mapping files, by the rules of the reader.
void addCheckCommand(CLI::App& app, Context& context);

} // namespace dolqctl
