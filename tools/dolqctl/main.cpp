#include <exception>

#include "Commands.h"
#include "Library.h"
#include "Options.h"

namespace {

constexpr char kFooter[] = R"(Exit codes:
  0  fine
  1  findings: mistakes in a mapping file, an alarm that would not be raised, ...
  2  wrong usage, or something the command needs is missing

'dolqctl COMMAND --help' shows a command's options and an example. See also dolqctl(1).)";

} // namespace

int main(int argc, char** argv) {
    try {
        dolqctl::CommandLine commandLine(
            "Sees, checks and drives the alarms of the fault-management library.", kFooter,
            dolqctl::versionText);
        dolqctl::addMappingsCommand(commandLine);
        dolqctl::addCheckCommand(commandLine);
        dolqctl::addExplainCommand(commandLine);
        dolqctl::addRaiseCommand(commandLine);
        dolqctl::addCeaseCommand(commandLine);
        dolqctl::addAlarmsCommand(commandLine);
        dolqctl::addDoctorCommand(commandLine);
        return commandLine.run(argc, argv);
    } catch (const std::exception& error) {
        dolqctl::tell(error.what());
        return dolqctl::kError;
    }
}
