#include <exception>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "Commands.h"
#include "Library.h"
#include "Options.h"

namespace {

constexpr char kFooter[] = R"(Exit codes:
  0  done, and nothing wrong was found
  1  done, and something is wrong: a mistake in a file, an alarm not sent, ...
  2  not done: wrong usage, or something that the command needs is missing

'dolqctl help COMMAND' shows a command's options and an example.
See also dolqctl(1).)";

/// The version of this program, and which files it loads for alarms, a line each.
std::string versionText() {
    using namespace dolqctl;
    constexpr std::pair<const char*, const char*> kParts[] = {
        {"library", kDolqLibrary},
        {"trace backend", kTraceLibrary},
        {"correlation service", kCorrelationLibrary},
        {"load-module handler", kLoadModuleLibrary},
        {"NTF library", kNtfLibrary}};
    std::string text = "dolqctl " DOLQCTL_VERSION;
    for (const auto& [part, soname] : kParts) {
        const Library library(soname);
        std::error_code error;
        const auto file = std::filesystem::canonical(library.file(), error);
        const std::string id = library.buildId();
        text += std::string("\n") + part + ": " +
                (!library.isLoaded() ? library.error()
                                     : (error ? library.file() : file.string()) + ", " +
                                           (id.empty() ? "without a build id" : "build id " + id));
    }
    return text;
}

} // namespace

int main(int argc, char** argv) {
    try {
        dolqctl::CommandLine commandLine(
            "Sees, checks and drives the alarms of the fault-management library.", kFooter,
            versionText);
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
