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
    bool json = false;
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

/// How a diagnosis is made and printed.
struct ReportArguments {
    std::string pid;    ///< of the running program to look at, if any
    std::string source; ///< what `takeOnVariables` said
    bool all = false;   ///< a line also for each thing that is in order
    bool json = false;
};

struct ExplainArguments : ReportArguments {
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

int runDoctor(const ReportArguments& arguments);

} // namespace dolqctl
