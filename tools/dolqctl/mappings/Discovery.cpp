#include "mappings/Discovery.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <system_error>

#include "Commands.h"
#include "Options.h"
#include "Output.h"
#include "common/Environment.h"
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

/// Capitals and white space do not make a difference here.
std::string blurred(const std::string& value) {
    std::string letters;
    for (const char c : value) {
        if (std::isspace(static_cast<unsigned char>(c)) == 0) {
            letters += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
    }
    return letters;
}

/// For texts in which white space has to be seen.
std::string quoted(const Identity& identity) {
    return "'" + identity.productNumber + "' '" + identity.revision + "'";
}

/// What is there in place of the load module: its product in other revisions, or everything.
std::string nearestMisses(const Discovery& discovery) {
    std::set<std::string> near;
    std::set<std::string> all;
    for (const Discovery::LoadModule& each : discovery.loadModules) {
        const Identity& other = each.identity;
        all.insert(quoted(other));
        if (blurred(other.productNumber) == blurred(discovery.identity.productNumber)) {
            near.insert(quoted(other));
        }
    }
    return joined(near.empty() ? all : near);
}

/// That no load module is known at all, and where the embedded load-module handler looks for them.
std::string noLoadModulesText() {
    const std::string start = "there is none at all: VELK_MANIFEST_DIR, the embedded "
                              "handler's folder of manifests, is ";
    const char* const folder = common::environment("VELK_MANIFEST_DIR", nullptr);
    if (folder == nullptr || *folder == '\0') {
        return start + (folder != nullptr ? "set to nothing" : "not set");
    }
    std::error_code error;
    const bool isFolder = std::filesystem::is_directory(folder, error);
    return start + "'" + folder + "'" + (isFolder ? "" : ", which is no folder");
}

} // namespace

void addIdentityOptions(Options& options, Identity& identity) {
    options
        .value("--product", "NUMBER", identity.productNumber, "Product number of the load module")
        .orFrom("ZBN_NO");
    options.value("--revision", "NAME", identity.revision, "Revision of the load module")
        .orFrom("ZBN_REV");
}

std::string identityText(const Identity& identity) {
    return identity.productNumber.empty() && identity.revision.empty()
               ? "without product number and revision"
               : identity.productNumber + ' ' + identity.revision;
}

void silenceTraces() { setenv("RUXA_TRACE_GROUPS", "none", 0); }

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

std::string whyNoMappingFile(const Discovery& discovery) {
    if (!discovery.mappingFiles.empty()) {
        return {};
    }
    const Identity& identity = discovery.identity;
    const auto matches = [](const Discovery::LoadModule& module) { return module.matches; };
    if (std::any_of(discovery.loadModules.begin(), discovery.loadModules.end(), matches)) {
        return "the load module " + identityText(identity) + " has no file tagged alarm_mapping";
    }
    std::vector<std::string> missing;
    if (identity.productNumber.empty()) {
        missing.push_back("no product number (ZBN_NO)");
    }
    if (identity.revision.empty()) {
        missing.push_back("no revision (ZBN_REV)");
    }
    return (missing.empty() ? "there is no load module " + quoted(identity)
                            : "the program has " + joined(missing, " and ")) +
           "; " +
           (discovery.loadModules.empty() ? noLoadModulesText()
                                          : "there are: " + nearestMisses(discovery));
}

} // namespace dolqctl
