// Everything that can be typed behind "dolqctl". The man page and the completion are made of the
// help texts here. The only file that includes the argument parser, whose header is slow to
// compile.
#include <algorithm>
#include <clocale>
#include <exception>
#include <iostream>
#include <iterator>
#include <map>
#include <regex>
#include <utility>

#include <CLI/CLI.hpp>

#include "Commands.h"
#include "Output.h"
#include "SharedObject.h"
#include "common/AlarmNames.h"

namespace dolqctl {

namespace {

/// The version of this program, and which files it loads for alarms.
void printVersion() {
    printLine("dolqctl " DOLQCTL_VERSION);
    for (const auto& [name, soname] : kParts) {
        const SharedObject part(soname);
        printLine(std::string(name) + ": " + (part.isLoaded() ? part.file() : part.error()));
    }
    throw CLI::Success();
}

/// Empty for a number that an option takes. One with a leading 0 is refused: it would be octal to
/// some and decimal to others.
std::string problemOfNumber(const std::string& text) {
    static const std::regex kForm("0|[1-9]\\d{0,9}|0[xX][[:xdigit:]]{1,8}");
    return std::regex_match(text, kForm) && std::stoull(text, nullptr, 0) <= 0xFFFFFFFF
               ? std::string()
               : inQuotes(text) + " is refused: give a number up to 4294967295, decimal without a "
                                  "leading 0 or hexadecimal with 0x";
}

/// `type` stands for the value in the help. A vector takes a value each time the option is given.
template <typename Value>
CLI::Option* addValue(CLI::App& command, const char* option, const std::string& type, Value& value,
                      const char* help) {
    return command.add_option(option, value, help)->type_name(type)->allow_extra_args(false);
}

/// An option whose value is one of `names`: `place` becomes its place there.
template <typename Names, typename Place>
CLI::Option* addChoice(CLI::App& command, const char* option, const Names& names, Place& place,
                       const char* help) {
    const auto toPlace = [&names](std::string& text) {
        const auto found = std::find(std::begin(names), std::end(names), text);
        if (found == std::end(names)) {
            return inQuotes(text) + " is none of " + joined(names);
        }
        text = std::to_string(found - std::begin(names));
        return std::string();
    };
    return addValue(command, option, joined(names, "|"), place, help)
        ->transform(CLI::Validator(toPlace, ""));
}

void addFaultAndObject(CLI::App& command, std::uint32_t& faultId, std::string& object) {
    addValue(command, "--fault", "ID", faultId, "Fault id")->check(problemOfNumber)->required();
    addValue(command, "--object", "DN", object,
             "Notification object, e.g. managedElement=1,Board=3")
        ->required();
}

void addIdentity(CLI::App& command, Identity& identity) {
    addValue(command, "--product", "NUMBER", identity.productNumber,
             "Product number of the load module")
        ->envname("ZBN_NO");
    addValue(command, "--revision", "NAME", identity.revision, "Revision of the load module")
        ->envname("ZBN_REV");
}

void addJson(CLI::App& command, bool& json) { command.add_flag("--json", json, "Print JSON"); }

void addReport(CLI::App& command, ReportArguments& arguments) {
    command
        .add_option_function<std::string>(
            "--pid",
            [&](const std::string& pid) {
                arguments.pid = pid;
                arguments.source = takeOnVariables(pid);
            },
            "Use the variables of a running program")
        ->type_name("PID")
        ->trigger_on_parse(); // before other options take their values from variables
    command.add_flag("--all", arguments.all, "Show each check that is in order on its own line");
    addJson(command, arguments.json);
}

// The commands, in the order of the help. Their arguments last as long as the program.
int exitCode = kFine;

void addMappings(CLI::App& program) {
    static MappingsArguments arguments;
    CLI::App& command =
        *program.add_subcommand("mappings", "List the mappings of a load module and their files");
    addIdentity(command, arguments.identity);
    addValue(command, "--alarm", "MAJOR/MINOR", arguments.alarm,
             "Show only mappings to this alarm, e.g. 2/17");
    addJson(command, arguments.json);
    command.footer(
        R"(Exit code 1: not all load modules, files or mappings could be read.

Example:
  dolqctl mappings --product CXC1370001 --revision R1A --alarm 2/17)");
    command.callback([&] { exitCode = runMappings(arguments); });
}

void addCheck(CLI::App& program) {
    static CheckArguments arguments;
    CLI::App& command =
        *program.add_subcommand("check", "Find mistakes in mapping files and manifests");
    CLI::Option* const files =
        command
            .add_option("FILE", arguments.files, "Mapping files and manifests; - is standard input")
            ->type_name("");
    command.add_flag("--discovered", arguments.discovered, "The mapping files of the load module")
        ->excludes(files);
    addIdentity(command, arguments.identity);
    addValue(command, "--faults", "FILE.tsv", arguments.faults,
             "Faults that must be mapped: an id and a class per line");
    addValue(command, "--allow", "RULE", arguments.allowed, "Do not report this rule; repeatable");
    command.add_flag("--strict", arguments.strict, "Exit with 1 for warnings too");
    addJson(command, arguments.json);
    command.footer(
        R"(Each finding is FILE:LINE:COLUMN: SEVERITY: MESSAGE [RULE]. An error
means that a mapping is lost or is not what is written; a warning, that it is
probably unintended. At most ten findings per rule and file are shown. Later
files override earlier ones, as within a load module. The mapping files that a
manifest names are checked too, those of each load module apart.

Example, in the source or in the folder of the installed documents:
  dolqctl check --allow override examples/loadmodules/alarm-client/*.xml)");
    command.callback([&] { exitCode = runCheck(arguments); });
}

void addExplain(CLI::App& program) {
    static ExplainArguments arguments;
    CLI::App& command =
        *program.add_subcommand("explain", "Say whether a fault raises an alarm, or why not");
    addFaultAndObject(command, arguments.faultId, arguments.object);
    addIdentity(command, arguments.identity);
    command.add_flag("--identity-given", arguments.identityGiven,
                     "Each alarm names its system and compute node");
    addReport(command, arguments);
    command.footer(
        R"(The last line says whether a raise would be sent. A cease has the same needs,
except for a system, a computer and an event. Opens a session with the
notification service, as 'doctor' does, and sends nothing. Exit code 0: a raise
would be sent, without a "but".

Example:
  dolqctl explain --product CXC1370001 --revision R1A \
      --fault 4102 --object Shelf=1,Port=3)");
    command.callback([&] { exitCode = runExplain(arguments); });
}

void addRaise(CLI::App& program) {
    static RaiseArguments arguments;
    CLI::App& command = *program.add_subcommand("raise", "Raise an alarm through the library");
    addFaultAndObject(command, arguments.faultId, arguments.object);
    addIdentity(command, arguments.identity);
    addChoice(command, "--severity", common::kClientSeverityNames, arguments.severity,
              "Perceived severity")
        ->required();
    addValue(command, "--text", "TEXT", arguments.text, "Additional text");
    addValue(command, "--info", "TEXT", arguments.info,
             "An entry of additional information; repeatable");
    addChoice(command, "--program-group", common::kProgramGroupNames, arguments.programGroup,
              "Program group");
    CLI::Option* const eventIds = addValue(command, "--event-id", "ID", arguments.eventIds,
                                           "The event that caused it; repeatable")
                                      ->check(problemOfNumber);
    addValue(command, "--uuid", "UUID", arguments.eventUuids,
             "Correlation UUID of such an event; repeatable")
        ->excludes(eventIds);
    addValue(command, "--system-uuid", "UUID", arguments.systemUuid,
             "The reporting system, in place of SYSTEM_UUID");
    addValue(command, "--compute-name", "NAME", arguments.computeName,
             "The reporting computer, in place of COMPUTE_NAME");
    command.footer(
        R"(With one event or none the alarm is a primary one, with several a secondary one.
Shows the traces of groups 0 (failures) and 4 (calls) unless RUXA_TRACE_GROUPS
chooses others.

Example:
  dolqctl raise --object managedElement=1,Board=3 --fault 4101 \
      --severity major --text 'Temperature too high' --event-id 4711)");
    command.callback([&] { exitCode = runRaise(arguments); });
}

void addCease(CLI::App& program) {
    static CeaseArguments arguments;
    CLI::App& command = *program.add_subcommand("cease", "Cease an alarm through the library");
    addFaultAndObject(command, arguments.faultId, arguments.object);
    addIdentity(command, arguments.identity);
    command.footer(R"(Sends the cease whether or not such an alarm is active.

Example:
  dolqctl cease --object managedElement=1,Board=3 --fault 4101)");
    command.callback([&] { exitCode = runCease(arguments); });
}

/// "10m" becomes its seconds. Returns what is wrong with it.
std::string toSeconds(std::string& text) {
    if (!std::regex_match(text, std::regex("[0-9]{1,12}[smhd]"))) {
        return inQuotes(text) + " is no time: say how long ago, as in 90s, 10m, 6h or 2d";
    }
    return CLI::AsNumberWithUnit(std::map<std::string, std::int64_t>{
        {"s", 1}, {"m", 60}, {"h", 60 * 60}, {"d", 24 * 60 * 60}})(text);
}

void addAlarms(CLI::App& program) {
    static AlarmsArguments arguments;
    CLI::App& command = *program.add_subcommand("alarms", "List the active alarms");
    command.add_flag("--history", arguments.history, "Show ceased alarms too, the latest first");
    addChoice(command, "--severity", common::kSeverityNames, arguments.severity,
              "Show only this severity and worse");
    addValue(command, "--object", "DN", arguments.object,
             "Show only this notification object and those below");
    addValue(command, "--vendor", "ID", arguments.vendor,
             "Show only notification classes of this vendor")
        ->check(problemOfNumber);
    addValue(command, "--since", "AGO", arguments.since,
             "Show only those changed since, e.g. 90s or 2d ago")
        ->transform(CLI::Validator(toSeconds, ""));
    addValue(command, "--limit", "N", arguments.limit, "Show at most N alarms")
        ->check(problemOfNumber);
    command.add_flag("--long", arguments.isLong, "Show all fields");
    addJson(command, arguments.json);
    command.footer(
        R"(All notifications with the same object and notification class are one alarm. The
latest raise gives its severity and texts; a cease ends it. AGE is the time for
which it has been or was active. Times are local; one before 2000 or in the
future is shown as "-", and --since keeps it. --since takes 90s, 10m, 6h or 2d.
ALARM includes the vendor id where it is not the library's: 18568:3/1. The
embedded service reads the log RUXA_NTF_LOG, else ruxa/notifications.jsonl in
XDG_STATE_HOME or ~/.local/state.

Examples:
  dolqctl alarms --severity major --object managedElement=1 --since 2h
  watch -n 1 dolqctl alarms)");
    command.callback([&] { exitCode = runAlarms(arguments); });
}

void addDoctor(CLI::App& program) {
    static ReportArguments arguments;
    CLI::App& command =
        *program.add_subcommand("doctor", "Check what a program needs for its alarms");
    addReport(command, arguments);
    command.footer(
        R"(Opens a session with the notification service and allocates a notification, but
sends none. What is not in order comes last; a note says what cannot be known
from here. Exit code 1: a check failed; 2: the service did not answer.

Example:
  ZBN_NO=CXC1370001 ZBN_REV=R1A dolqctl doctor)");
    command.callback([&] { exitCode = runDoctor(arguments); });
}

/// Fills the arguments of the command that is named, and runs it.
void parse(CLI::App& program, int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    if (!arguments.empty() && arguments.front() == "help") {
        std::replace(arguments.begin(), arguments.end(), std::string("help"),
                     std::string("--help"));
    }
    std::reverse(arguments.begin(), arguments.end()); // the order that the parser takes
    try {
        program.parse(arguments);
    } catch (const CLI::ParseError& error) {
        const auto chosen = program.get_subcommands();
        const std::vector<std::string> unknown = program.remaining(true);
        if (!unknown.empty() || error.get_exit_code() != 0) {
            throw CommandError(
                (unknown.empty() ? error.what() : "unknown " + inQuotes(unknown.front())) +
                std::string("; try 'dolqctl ") +
                (chosen.empty() ? "" : chosen.front()->get_name() + ' ') + "--help'");
        }
        if (error.get_name() == "CallForHelp") {
            std::cout << program.help();
        }
    }
}

int run(int argc, char** argv) {
    // Characters are those of UTF-8 whatever the user's locale; white space stays that of ASCII.
    std::setlocale(LC_CTYPE, "C.UTF-8");
    CLI::App program("Inspects, checks, raises and ceases alarms.", "dolqctl");
    program.get_formatter()->column_width(26); // so that help texts fit beside it
    program.option_defaults()->disable_flag_override();
    program.add_flag_callback("-V,--version", printVersion,
                              "Print the version, and which files are loaded");
    program.require_subcommand(1);
    program.footer(R"(Exit codes:
  0  done, and nothing wrong was found
  1  done, and something is wrong: a mistake in a file, an alarm not sent, ...
  2  not done: wrong usage, or something that the command needs is missing

'dolqctl help COMMAND' shows a command's options and an example.
See also dolqctl(1).)");
    addMappings(program);
    addCheck(program);
    addExplain(program);
    addRaise(program);
    addCease(program);
    addAlarms(program);
    addDoctor(program);
    parse(program, argc, argv);
    if (!std::cout.flush()) {
        throw CommandError("standard output cannot be written");
    }
    return exitCode;
}

} // namespace

} // namespace dolqctl

int main(int argc, char** argv) {
    try {
        return dolqctl::run(argc, argv);
    } catch (const std::exception& error) {
        dolqctl::tell(error.what());
        return dolqctl::kError;
    }
}
