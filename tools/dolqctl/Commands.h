#pragma once

#include <stdexcept>
#include <string>

namespace dolqctl {

class CommandLine;

/// What the shell is told.
enum ExitCode {
    kFine = 0,
    kFindings = 1, ///< the command did its work, and the answer is a bad one
    kError = 2     ///< wrong usage, or the surroundings do not let the command do its work
};

/// Ends a command with `kError`. The text becomes "dolqctl: <text>" on standard error: it names the
/// input and says what to do.
class CommandError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The commands, in the order of the help.
void addMappingsCommand(CommandLine& commandLine);
void addCheckCommand(CommandLine& commandLine);
void addExplainCommand(CommandLine& commandLine);
void addRaiseCommand(CommandLine& commandLine);
void addCeaseCommand(CommandLine& commandLine);
void addAlarmsCommand(CommandLine& commandLine);
void addDoctorCommand(CommandLine& commandLine);

} // namespace dolqctl
