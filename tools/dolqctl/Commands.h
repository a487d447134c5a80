#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

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

/// For `--pid`: takes on the variables of the running program `pid` that the library and its
/// platform read, as they were when it was started, and nothing else. Returns a sentence that says
/// so. Throws CommandError, for a program without the library, too.
std::string takeOnVariables(const std::string& pid);

/// The options of all commands; one that is not given is empty. `--product` and `--revision` are
/// not here: they become the environment variables in whose place they are given.
struct Arguments {
    bool json = false;

    // check
    std::vector<std::string> files;
    bool discovered = false; ///< instead of `files`, those of the load module
    std::string faults;      ///< a file that declares them
    std::vector<std::string> allowed;
    bool strict = false;

    // doctor and explain
    std::string pid;    ///< of the running program to look at, if any
    std::string source; ///< what `takeOnVariables` said
    bool all = false;   ///< a line also for each thing that is in order

    // explain, raise, cease, and alarms
    std::uint32_t faultId = 0;
    std::string object;
    std::string severity; ///< a name

    // raise
    std::string text;
    std::vector<std::string> info;
    std::string programGroup; ///< a name
    std::vector<std::uint32_t> eventIds;
    std::vector<std::string> eventUuids; ///< instead of `eventIds`
    std::string systemUuid;
    std::string computeName;

    // alarms
    std::optional<std::uint32_t> vendor;
    std::optional<std::uint32_t> since; ///< so many seconds ago
    bool history = false;
    bool isLong = false;
};

// The commands: each prints its answer and returns the exit code.
int runMappings(const Arguments& arguments);
int runCheck(const Arguments& arguments);
int runExplain(const Arguments& arguments);
int runRaise(const Arguments& arguments);
int runCease(const Arguments& arguments);
int runAlarms(const Arguments& arguments);
int runDoctor(const Arguments& arguments);

} // namespace dolqctl
