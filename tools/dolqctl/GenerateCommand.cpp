#include "GenerateCommand.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>

#include <CLI/CLI.hpp>

#include "HeaderWriter.h"
#include "Sources.h"

namespace dolqctl {

namespace {

constexpr char kFooter[] =
    R"(For each mapping the header has one constant, such as kPort_4102, with the fault id, the class and
the minor type. The files are read one on top of the other, as the files of one load module are.

Exit codes: 0 fine; 1 a file is not read, or two mappings get one name; 2 wrong usage.

Example:
  dolqctl generate --language c++ --namespace alarm_client -o Alarms.h equipment.xml)";

struct Options {
    Sources sources;
    std::string language;
    std::string nameSpace = "alarms";
    std::string outputFile;
};

void writeFile(const std::string& path, const std::string& content) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << content;
    if (!file.flush()) {
        throw CommandError("cannot write " + printable(path) + ": " + std::strerror(errno));
    }
}

int run(const Options& options, Output& output) {
    if (!isNamespace(options.nameSpace)) {
        throw CommandError("--namespace " + inQuotes(options.nameSpace) +
                           " is no C++ namespace, such as \"alarm_client\" or \"site::alarms\"");
    }
    const SourceFiles files = filesOf(options.sources);
    if (!files.isComplete) {
        throw CommandError("no header is written from a part of the mapping files");
    }
    const Inventory inventory = readMappingFiles(files.paths);
    for (const Unreadable& unreadable : inventory.unreadable) {
        tell(text(unreadable.place) + ": the file is not read: " + unreadable.reason);
    }
    for (const Place& place : inventory.skipped) {
        tell(text(place) + ": the element is skipped, see dolqctl check");
    }
    if (!inventory.unreadable.empty()) {
        return kFindings;
    }
    std::ostringstream header;
    try {
        writeHeader(namedConstants(inventory), options.nameSpace, header);
    } catch (const NameCollision& collision) {
        tell(collision.what());
        return kFindings;
    }
    if (options.outputFile.empty()) {
        output.stream() << header.str();
    } else {
        writeFile(options.outputFile, header.str());
    }
    return kFine;
}

} // namespace

void addGenerateCommand(CLI::App& app, Context& context) {
    CLI::App* const command =
        app.add_subcommand("generate", "Write a header of named constants from mapping files");
    const auto options = std::make_shared<Options>();
    command->add_option("--language", options->language, "Language of the header: c++")
        ->required()
        ->check(CLI::IsMember({"c++"}));
    addSourceOptions(*command, options->sources);
    command->add_option("--namespace", options->nameSpace, "Namespace of the constants")
        ->capture_default_str();
    command->add_option("-o,--output", options->outputFile, "The file to write")->type_name("PATH");
    command->footer(kFooter);
    command->callback([options, &context] { context.exitCode = run(*options, context.output); });
}

} // namespace dolqctl
