#pragma once

#include <stdexcept>
#include <string>

#include "Output.h"

namespace dolqctl {

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

/// "dolqctl: <text>" on standard error, for what does not end the command.
void tell(const std::string& text);

/// What a command is given to work with, and where it leaves its result.
struct Context {
    Output output;
    int exitCode = kFine;
};

} // namespace dolqctl
