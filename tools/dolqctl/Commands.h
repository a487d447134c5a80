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

/// For `--pid`: returns in a process that has the surroundings which the running program `pid` was
/// started with, so that everything in it is found, loaded and permitted as it is there: this
/// program executes itself anew, with its arguments `argv` and with the environment, the loader
/// path in it, the current folder and the user of that one. Only the terminal stays this shell's.
/// What a program has changed in its own environment since cannot be seen. Call it before anything
/// is printed. Throws CommandError.
void takeOnProgram(const std::string& pid, char** argv);

// What the commands are given, and the commands: each prints its answer and returns the exit code.
// An option that is not given is empty.

/// Which load module a program belongs to.
struct Identity {
    std::string productNumber;
    std::string revision;
};

struct MappingsArguments {
    Identity identity;
    std::string alarm; ///< as written, e.g. 2/17
};
int runMappings(const MappingsArguments& arguments);

struct CheckArguments {
    std::vector<std::string> files;
    bool discovered = false; ///< instead of `files`, those of the load module
    Identity identity;
    std::string faults;               ///< a file that declares them
    std::vector<std::string> allowed; ///< rules
    bool strict = false;
    bool json = false;
};
int runCheck(const CheckArguments& arguments);

struct ExplainArguments {
    std::uint32_t faultId = 0;
    std::string object;
    Identity identity;
    bool identityGiven = false; ///< each alarm names the program's system and compute node
};
int runExplain(const ExplainArguments& arguments);

struct CeaseArguments {
    std::uint32_t faultId = 0;
    std::string object;
    Identity identity;
};
int runCease(const CeaseArguments& arguments);

struct RaiseArguments : CeaseArguments {
    std::uint32_t severity = 0; ///< a client's code
    std::string text;
    std::vector<std::string> info;
    std::optional<std::uint32_t> programGroup; ///< a client's code
    std::vector<std::uint32_t> eventIds;
    std::vector<std::string> eventUuids; ///< instead of `eventIds`
    std::string systemUuid;
    std::string computeName;
};
int runRaise(const RaiseArguments& arguments);

struct AlarmsArguments {
    std::optional<std::uint32_t> vendor;
    std::optional<std::uint32_t> severity; ///< the least, a SaNtfSeverityT
    std::string object;
    std::optional<std::int64_t> since; ///< so many seconds ago
    std::optional<std::uint32_t> limit;
    bool history = false;
    bool isLong = false;
    bool json = false;
};
int runAlarms(const AlarmsArguments& arguments);

struct DoctorArguments {
    bool json = false;
};
int runDoctor(const DoctorArguments& arguments);

} // namespace dolqctl
