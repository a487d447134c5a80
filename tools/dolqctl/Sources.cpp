#include "Sources.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include <CLI/CLI.hpp>

#include "Context.h"

namespace dolqctl {

namespace {

SourceFiles discovered(const Identity& identity) {
    const Discovery discovery = discover(identity);
    for (const Discovery::FailedCategory& failure : discovery.failedCategories) {
        tell(text(failure));
    }
    if (discovery.mappingFiles.empty()) {
        throw CommandError("no mapping file belongs to the load module " + text(identity) +
                           ": check --product and --revision, or ZBN_NO and ZBN_REV");
    }
    return {discovery.mappingFiles, discovery.failedCategories.empty()};
}

/// By another spelling or a link, too.
bool isSameFile(const std::string& path, const std::string& other) {
    std::error_code ignored; // of a file that is not there
    return path == other || std::filesystem::equivalent(path, other, ignored);
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

SourceFiles filesOf(const Sources& sources) {
    if (sources.files.empty() && !sources.discovered) {
        throw CommandError("name a mapping FILE or give --discovered");
    }
    SourceFiles files =
        sources.discovered ? discovered(sources.identity) : SourceFiles{sources.files};
    std::vector<std::string> distinct;
    for (const std::string& path : files.paths) {
        const auto isPath = [&](const std::string& other) { return isSameFile(path, other); };
        if (std::none_of(distinct.begin(), distinct.end(), isPath)) {
            distinct.push_back(path);
        }
    }
    files.paths = std::move(distinct);
    return files;
}

} // namespace dolqctl
