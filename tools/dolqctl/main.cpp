// Everything that can be typed behind "dolqctl". The man page and the completion are made of the
// help texts here. The only file that includes the argument parser, whose header is slow to
// compile.
#include <clocale>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <iterator>
#include <map>
#include <regex>

#include <CLI/CLI.hpp>

#include "Commands.h"
#include "Output.h"
#include "SharedObject.h"
#include "common/AlarmNames.h"
#include "common/LoadModuleNames.h"

namespace dolqctl {

namespace {

Arguments arguments;
int exitCode = kFine;

/// The version of this program, and which files it loads for alarms.
void printVersion() {
    printLine("dolqctl " DOLQCTL_VERSION);
    for (const auto& [name, soname] : kParts) {
        const SharedObject part(soname);
        printLine(std::string(name) + ": " + (part.isLoaded() ? part.file() : part.error()));
    }
    throw CLI::Success();
}

/// Says what is wrong with a number that the parser would take: a leading 0 would be octal to some
/// and decimal to others.
std::string refusalOf(const std::string& number) {
    return std::regex_match(number, std::regex("0|0[xX].*|[1-9].*"))
               ? ""
               : inQuotes(number) + " is refused: give a number without sign and leading 0, or "
                                    "hexadecimal with 0x";
}

template <typename Names> CLI::IsMember oneOf(const Names& names) {
    return CLI::IsMember(std::vector<std::string>(std::begin(names), std::end(names)));
}

/// `type` stands for the value in the help. A vector takes a value each time the option is given.
template <typename Value>
CLI::Option* addValue(CLI::App& command, const char* option, const char* type, Value& value,
                      const char* help) {
    return command.add_option(option, value, help)->type_name(type)->allow_extra_args(false);
}

CLI::App& addCommand(CLI::App& program, const char* name, const char* help,
                     int (*run)(const Arguments&), const char* footer) {
    CLI::App& command = *program.add_subcommand(name, help);
    command.footer(footer);
    command.callback([run] { exitCode = run(arguments); });
    return command;
}

void addVariable(CLI::App& command, const char* option, const char* type, const char* variable,
                 const char* help) {
    const auto set = [variable](const std::string& value) { setenv(variable, value.c_str(), 1); };
    command.add_option_function<std::string>(option, set, help)->type_name(type);
}

void addLoadModule(CLI::App& command) {
    addVariable(command, "--product", "NUMBER", common::kProductNumberVariable,
                "Product number of the load module, in place of ZBN_NO");
    addVariable(command, "--revision", "NAME", common::kRevisionVariable,
                "Revision of the load module, in place of ZBN_REV");
}

void addFault(CLI::App& command) {
    addValue(command, "--fault", "ID", arguments.faultId, "Fault id")->check(refusalOf)->required();
    addValue(command, "--object", "DN", arguments.object,
             "Notification object, e.g. managedElement=1,Board=3")
        ->required();
    addLoadModule(command);
}

void addJson(CLI::App& command) { command.add_flag("--json", arguments.json, "Print JSON"); }

void addReport(CLI::App& command) {
    const auto take = [](const std::string& pid) {
        arguments.pid = pid;
        arguments.source = takeOnVariables(pid);
    };
    command
        .add_option_function<std::string>("--pid", take, "Use the variables of a running program")
        ->type_name("PID")
        ->trigger_on_parse(); // before other options set variables
    command.add_flag("--all", arguments.all, "Show each check that is in order on its own line");
    addJson(command);
}

// The commands, in the order of the help.

void addMappings(CLI::App& program) {
    CLI::App& command = addCommand(
        program, "mappings", "List the mappings of a load module and their files", runMappings,
        R"(Exit code 1: not all load modules, files or mappings could be read.

Example:
  dolqctl mappings --product CXC1370001 --revision R1A)");
    addLoadModule(command);
    addJson(command);
}

void addCheck(CLI::App& program) {
    CLI::App& command =
        addCommand(program, "check", "Find mistakes in mapping files and manifests", runCheck,
                   R"(Each finding is FILE:LINE:COLUMN: SEVERITY: MESSAGE [RULE]. An error
means that a mapping is lost or is not what is written; a warning, that it is
probably unintended.

Example, in the source or in the folder of the installed documents:
  dolqctl check --allow override examples/loadmodules/alarm-client/*.xml)");
    CLI::Option* const files =
        command
            .add_option("FILE", arguments.files, "Mapping files and manifests; - is standard input")
            ->type_name("");
    command.add_flag("--discovered", arguments.discovered, "The mapping files of the load module")
        ->excludes(files);
    addLoadModule(command);
    addValue(command, "--faults", "FILE.tsv", arguments.faults,
             "Faults that must be mapped: an id and a class per line");
    addValue(command, "--allow", "RULE", arguments.allowed, "Do not report this rule; repeatable");
    command.add_flag("--strict", arguments.strict, "Exit with 1 for warnings too");
    addJson(command);
}

void addExplain(CLI::App& program) {
    CLI::App& command = addCommand(
        program, "explain", "Say whether a fault raises an alarm, or why not", runExplain,
        R"(Sends nothing. Exit code 0: a raise would be sent, without a "but".

Example:
  dolqctl explain --product CXC1370001 --revision R1A \
      --fault 4102 --object Shelf=1,Port=3)");
    addFault(command);
    addReport(command);
}

void addRaise(CLI::App& program) {
    CLI::App& command = addCommand(program, "raise", "Raise an alarm through the library", runRaise,
                                   R"(Example:
  dolqctl raise --object managedElement=1,Board=3 --fault 4101 \
      --severity major --text 'Temperature too high' --event-id 4711)");
    addFault(command);
    addValue(command, "--severity", "NAME", arguments.severity, "Perceived severity")
        ->check(oneOf(common::kClientSeverityNames))
        ->required();
    addValue(command, "--text", "TEXT", arguments.text, "Additional text");
    addValue(command, "--info", "TEXT", arguments.info,
             "An entry of additional information; repeatable");
    addValue(command, "--program-group", "NAME", arguments.programGroup, "Program group")
        ->check(oneOf(common::kProgramGroupNames));
    CLI::Option* const eventIds =
        addValue(command, "--event-id", "ID", arguments.eventIds,
                 "The event that caused it; repeatable")
            ->check(refusalOf)
            ->check([](const std::string& id) { return id == "0" ? "0 is no event" : ""; });
    addValue(command, "--uuid", "UUID", arguments.eventUuids,
             "Correlation UUID of such an event; repeatable")
        ->excludes(eventIds);
    CLI::Option* const system = addValue(command, "--system-uuid", "UUID", arguments.systemUuid,
                                         "The reporting system, in place of SYSTEM_UUID");
    system->needs(addValue(command, "--compute-name", "NAME", arguments.computeName,
                           "The reporting computer, in place of COMPUTE_NAME")
                      ->needs(system));
}

void addCease(CLI::App& program) {
    CLI::App& command = addCommand(program, "cease", "Cease an alarm through the library", runCease,
                                   R"(Sends the cease whether or not such an alarm is active.

Example:
  dolqctl cease --object managedElement=1,Board=3 --fault 4101)");
    addFault(command);
}

void addAlarms(CLI::App& program) {
    CLI::App& command = addCommand(program, "alarms", "List the active alarms", runAlarms,
                                   R"(Examples:
  dolqctl alarms --severity major --object managedElement=1 --since 2h
  watch -n 1 dolqctl alarms)");
    command.add_flag("--history", arguments.history, "Show ceased alarms too, the latest first");
    addValue(command, "--severity", "NAME", arguments.severity, "Show only this severity and worse")
        ->check(oneOf(common::kSeverityNames));
    addValue(command, "--object", "DN", arguments.object,
             "Show only this notification object and those below");
    addValue(command, "--vendor", "ID", arguments.vendor,
             "Show only notification classes of this vendor")
        ->check(refusalOf);
    const std::map<std::string, std::uint32_t> units = {
        {"s", 1}, {"m", 60}, {"h", 60 * 60}, {"d", 24 * 60 * 60}};
    addValue(command, "--since", "AGO", arguments.since,
             "Show only those changed since, e.g. 90s, 10m, 6h or 2d")
        ->transform(
            CLI::AsNumberWithUnit(units, CLI::AsNumberWithUnit::UNIT_REQUIRED).description(""))
        ->transform(CLI::Validator(refusalOf, "")); // is made first
    command.add_flag("--long", arguments.isLong, "Show all fields");
    addJson(command);
}

void addDoctor(CLI::App& program) {
    CLI::App& command =
        addCommand(program, "doctor", "Check what a program needs for its alarms", runDoctor,
                   R"(Sends nothing. Exit code 1: a check failed; 2: the service did not answer.

Example:
  ZBN_NO=CXC1370001 ZBN_REV=R1A dolqctl doctor)");
    addReport(command);
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

'dolqctl COMMAND --help' shows a command's options and an example.
See also dolqctl(1).)");
    addMappings(program);
    addCheck(program);
    addExplain(program);
    addRaise(program);
    addCease(program);
    addAlarms(program);
    addDoctor(program);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) {
            const std::vector<std::string> unknown = program.remaining(true);
            throw CommandError(
                (unknown.empty() ? error.what() : "unknown " + inQuotes(unknown.front())) +
                "; see --help");
        }
        program.exit(error); // prints the help, if that was asked for
    }
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
