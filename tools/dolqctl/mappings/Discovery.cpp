#include "mappings/Discovery.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "Commands.h"
#include "Options.h"
#include "Output.h"
#include "common/Environment.h"
#include "mappings/Inventory.h"
#include "xmlconf/dolqXmlConfigurator.h"

namespace dolqctl {

namespace {

std::string orEmpty(const char* text) { return text != nullptr ? text : ""; }

class Recorder final : public dolq::xmlconf::LoadModuleObserverI {
public:
    explicit Recorder(Discovery& discovery) : m_discovery(discovery) {}

    void onFailedCategory(const std::string& category, int errorCode) override {
        m_discovery.failedCategories.push_back({category, errorCode});
    }
    void onLoadModule(const std::string& category, const Velk_lm& loadModule,
                      bool matches) override {
        m_discovery.loadModules.push_back(
            {category,
             {orEmpty(loadModule.productNumber), orEmpty(loadModule.revision)},
             matches,
             {}});
    }
    void onMappingFile(const std::string& path) override {
        m_discovery.loadModules.back().mappingFiles.push_back(path);
    }

private:
    Discovery& m_discovery;
};

/// Before the first trace, for the backend reads its environment once.
void silenceTraces() { setenv("RUXA_TRACE_GROUPS", "none", 0); }

/// By another spelling or a link, too.
bool isSameFile(const std::string& path, const std::string& other) {
    std::error_code ignored; // of a file that is not there
    return path == other || std::filesystem::equivalent(path, other, ignored);
}

constexpr char kCheckIdentity[] = ": check --product and --revision, or ZBN_NO and ZBN_REV";

} // namespace

void addIdentityOptions(Options& options, Identity& identity) {
    options
        .value("--product", "NUMBER", identity.productNumber, "Product number of the load module")
        .orFrom("ZBN_NO");
    options.value("--revision", "NAME", identity.revision, "Revision of the load module")
        .orFrom("ZBN_REV");
}

std::string identityText(const Identity& identity) {
    if (identity.productNumber.empty() && identity.revision.empty()) {
        return "without product number and revision";
    }
    return printable(identity.productNumber) + ' ' + printable(identity.revision);
}

bool Discovery::isFound() const {
    return std::any_of(loadModules.begin(), loadModules.end(),
                       [](const LoadModule& module) { return module.matches; });
}

Discovery discover(const Identity& identity) {
    silenceTraces();
    Discovery discovery;
    discovery.identity = identity;
    Recorder recorder(discovery);
    discovery.mappingFiles = dolq::xmlconf::MappingXmlConfigurator().findAllMappingFiles(
        identity.productNumber, identity.revision, recorder);
    return discovery;
}

std::string failureText(const Discovery::FailedCategory& failure) {
    return "the load-module handler answered error " + std::to_string(failure.errorCode) +
           " for the category '" + failure.category + "': its load modules are not read";
}

std::string noLoadModulesText() {
    const std::string start = "there are no load modules at all: VELK_MANIFEST_DIR, the embedded "
                              "handler's folder of manifests, is ";
    const char* const folder = common::environment("VELK_MANIFEST_DIR", nullptr);
    if (folder == nullptr || *folder == '\0') {
        return start + (folder != nullptr ? "set to nothing" : "not set");
    }
    std::error_code error;
    const bool isFolder = std::filesystem::is_directory(folder, error);
    return start + "'" + printable(folder) + "'" + (isFolder ? "" : ", which is no folder");
}

std::vector<std::string> readingProblems(const Discovery& discovery, const Inventory& inventory) {
    std::vector<std::string> problems;
    for (const Discovery::FailedCategory& failure : discovery.failedCategories) {
        problems.push_back(failureText(failure));
    }
    const std::string identity = identityText(discovery.identity);
    if (discovery.loadModules.empty()) {
        problems.push_back(noLoadModulesText());
    } else if (!discovery.isFound()) {
        problems.push_back("the node has no load module " + identity + kCheckIdentity);
    } else if (discovery.mappingFiles.empty()) {
        problems.push_back("the load module " + identity + " has no file tagged alarm_mapping");
    }
    for (const UnreadableFile& file : inventory.unreadable) {
        problems.push_back(positionText(file.position) + ": the file is not read: " + file.reason);
    }
    return problems;
}

void addMappingFileOptions(Options& options, MappingFileOptions& values) {
    const auto files = options.files(values.files, "Mapping files, in reading order");
    options
        .flag("--discovered", values.discovered,
              "The mapping files of the load module, as the library finds them")
        .excludes(files);
    addIdentityOptions(options, values.identity);
}

MappingFiles mappingFilesOf(const MappingFileOptions& options) {
    silenceTraces();
    MappingFiles files;
    std::vector<std::string> found = options.files;
    if (options.discovered) {
        const Discovery discovery = discover(options.identity);
        for (const Discovery::FailedCategory& failure : discovery.failedCategories) {
            tell(failureText(failure));
        }
        if (discovery.mappingFiles.empty()) {
            throw CommandError("no mapping file belongs to the load module " +
                               identityText(options.identity) + kCheckIdentity);
        }
        found = discovery.mappingFiles;
        files.isComplete = discovery.failedCategories.empty();
    } else if (found.empty()) {
        throw CommandError("name a mapping FILE or give --discovered");
    }
    for (const std::string& path : found) {
        const auto isPath = [&](const std::string& other) { return isSameFile(path, other); };
        if (std::none_of(files.paths.begin(), files.paths.end(), isPath)) {
            files.paths.push_back(path);
        }
    }
    return files;
}

} // namespace dolqctl
