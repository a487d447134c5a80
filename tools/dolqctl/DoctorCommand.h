#pragma once

#include "Context.h"

namespace CLI {
class App;
}

namespace dolqctl {

/// `doctor`: what an alarm needs, and what of it is missing.
void addDoctorCommand(CLI::App& app, Context& context);

} // namespace dolqctl
