#include "Sources.h"

#include <algorithm>

#include <CLI/CLI.hpp>

#include "Context.h"

namespace dolqctl {

namespace {

std::vector<std::string> discoveredPaths(const Identity& identity) {
    const Discovery discovery = discover(identity);
    if (!discovery.failedCategories.empty()) {
        throw CommandError(text(discovery.failedCategories.front()));
    }
    if (discovery.mappingFiles.empty()) {
        throw CommandError("no mapping file belongs to the load module " + text(identity) +
                           ": check --product and --revision, or ZBN_NO and ZBN_REV");
    }
    return discovery.mappingFiles;
}

} // namespace

void addSourceOptions(CLI::App& command, Sources& sources) {
    CLI::Option* const files =
        command.add_option("FILE", sources.files, "Mapping files, in reading order")->type_name("");
    command
        .add_flag("--discovered", sources.discovered,
                  "The mapping files of the load module, as the library finds them")
        ->excludes(files);
    addIdentityOptions(command, sources.identity);
}

std::vector<std::string> pathsOf(const Sources& sources) {
    if (sources.files.empty() && !sources.discovered) {
        throw CommandError("name a mapping FILE or give --discovered");
    }
    std::vector<std::string> distinct;
    for (const std::string& path :
         sources.discovered ? discoveredPaths(sources.identity) : sources.files) {
        if (std::find(distinct.begin(), distinct.end(), path) == distinct.end()) {
            distinct.push_back(path);
        }
    }
    return distinct;
}

} // namespace dolqctl
