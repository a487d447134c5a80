#include <exception>

#include <CLI/CLI.hpp>

#include "AlarmsCommand.h"
#include "CeaseCommand.h"
#include "CheckCommand.h"
#include "Context.h"
#include "DoctorCommand.h"
#include "ExplainCommand.h"
#include "MappingsCommand.h"
#include "RaiseCommand.h"

namespace {

constexpr char kFooter[] = R"(Exit codes:
  0  fine
  1  findings: mistakes in a mapping file, an alarm that would not be raised, ...
  2  wrong usage, or something the command needs is missing

'dolqctl COMMAND --help' shows a command's options and an example. See also dolqctl(1).)";

int fail(const std::string& text) {
    dolqctl::tell(text);
    return dolqctl::kError;
}

/// What is wrong with the command line, and where help is.
std::string usageError(const CLI::App& app, const CLI::ParseError& error) {
    const auto chosen = app.get_subcommands();
    const auto rest = app.remaining();
    if (chosen.empty() && !rest.empty()) {
        const std::string kind = rest.front()[0] == '-' ? "option" : "command";
        return "unknown " + kind + ' ' + dolqctl::inQuotes(rest.front()) +
               "\nTry 'dolqctl --help'.";
    }
    if (chosen.empty()) {
        return "name a command\nTry 'dolqctl --help'.";
    }
    return std::string(error.what()) + "\nTry 'dolqctl " + chosen.front()->get_name() + " --help'.";
}

/// Parses the command line and runs its command: CLI11 calls it when all options are read.
int run(int argc, char** argv) {
    dolqctl::Context context;
    CLI::App app("Sees, checks and drives the alarms of the fault-management library.", "dolqctl");
    app.footer(kFooter);
    app.set_version_flag("--version", "dolqctl " DOLQCTL_VERSION);
    app.require_subcommand(1);
    dolqctl::addMappingsCommand(app, context);
    dolqctl::addCheckCommand(app, context);
    dolqctl::addExplainCommand(app, context);
    dolqctl::addRaiseCommand(app, context);
    dolqctl::addCeaseCommand(app, context);
    dolqctl::addAlarmsCommand(app, context);
    dolqctl::addDoctorCommand(app, context);

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& request) { // --help or --version
        app.exit(request);
    } catch (const CLI::ParseError& error) {
        return fail(usageError(app, error));
    }
    return context.output.flush() ? context.exitCode : fail("standard output cannot be written");
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        return fail(error.what());
    }
}
