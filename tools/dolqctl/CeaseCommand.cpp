#include "CeaseCommand.h"

#include <memory>

#include <CLI/CLI.hpp>

#include "AlarmSending.h"

namespace dolqctl {

namespace {

constexpr char kFooter[] =
    R"(The traces of the call go to standard error, and also to where RUXA_TRACE_SINK says. Exit code 1:
nothing was sent. It takes no alarm to be active.

Example:
  dolqctl cease --object managedElement=1,Board=3 --fault 4101)";

} // namespace

void addCeaseCommand(CLI::App& app, Context& context) {
    CLI::App* const command = app.add_subcommand("cease", "Cease an alarm through the library");
    const auto options = std::make_shared<AlarmOptions>();
    addAlarmOptions(*command, *options);
    command->footer(kFooter);
    command->callback([options, &context] {
        context.exitCode = sendAlarm(*options, context.output, [&](auto& alarms) {
            alarms.ceaseAlarm(options->object, options->faultId, options->faultIdName);
        });
    });
}

} // namespace dolqctl
