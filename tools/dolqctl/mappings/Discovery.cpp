#include "mappings/Discovery.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <system_error>

#include <Velk.h>
#include <nlohmann/json.hpp>

#include "Library.h"
#include "Output.h"
#include "common/Environment.h"
#include "mappings/XmlChecks.h"
#include "xmlconf/dolqXmlConfigurator.h"

namespace dolqctl {

namespace {

namespace fs = std::filesystem;

std::string orEmpty(const char* text) { return text != nullptr ? text : ""; }

class Recorder final : public dolq::xmlconf::LoadModuleObserverI {
public:
    explicit Recorder(Discovery& discovery) : m_discovery(discovery) {}

    void onFailedCategory(const std::string& category, int errorCode) override {
        m_discovery.failedCategories.push_back({category, errorCode});
    }
    void onLoadModule(const std::string& category, const Velk_lm& loadModule,
                      bool matches) override {
        const Identity identity{orEmpty(loadModule.productNumber), orEmpty(loadModule.revision)};
        m_discovery.loadModules.push_back({category, identity, matches, {}});
    }
    void onMappingFile(const std::string& path) override {
        m_discovery.loadModules.back().mappingFiles.push_back(path);
    }

private:
    Discovery& m_discovery;
};

/// In quotes, for white space counts.
std::string quoted(const Identity& identity) {
    return inQuotes(identity.productNumber) + ' ' + inQuotes(identity.revision);
}

/// The load modules of the product, perhaps written otherwise.
std::set<std::string> nearest(const Discovery& discovery) {
    std::set<std::string> near;
    for (const Discovery::LoadModule& each : discovery.loadModules) {
        if (folded(each.identity.productNumber) == folded(discovery.identity.productNumber)) {
            near.insert(quoted(each.identity));
        }
    }
    return near;
}

/// Of the folder that the embedded handler reads, in which a missing file is an empty category.
std::vector<std::string> manifestProblems() {
    constexpr char kRule[] = "manifests are central.xml, local.xml and dynamic.xml in ";
    const std::string chosen = common::trustedEnvironment("VELK_MANIFEST_DIR");
    const fs::path folder = chosen.empty() ? "/etc/ruxa/loadmodules" : chosen;
    const std::string where = kRule + inQuotes(folder.string()) +
                              (chosen.empty() ? " (VELK_MANIFEST_DIR is not set)" : "");
    std::vector<std::string> problems;
    std::error_code error;
    bool isEmpty = true;
    const fs::directory_iterator entries(folder, error);
    for (const fs::path& path : std::set<fs::path>(begin(entries), end(entries))) {
        const std::string name = path.filename().string();
        for (const char* const known : {"central.xml", "local.xml", "dynamic.xml"}) {
            if (name != known) {
                if (isMisspelt(name, known)) {
                    problems.push_back(inQuotes(name) + " is not read: " + where);
                }
                continue;
            }
            isEmpty = false;
            for (const Finding& finding : findManifestMistakes(path.string())) {
                if (finding.severity == Severity::Error) {
                    problems.push_back(positionText(finding.position) + ": " + finding.message);
                }
            }
        }
    }
    if (error) {
        return {where + ": " + error.message()};
    }
    if (isEmpty && problems.empty()) {
        return {where + ", where there is none of them"};
    }
    return problems;
}

std::vector<std::string> problemsOf(const Discovery& discovery) {
    std::vector<std::string> mistakes =
        Library(kLoadModuleLibrary).contains("VELK_MANIFEST_DIR") // no other handler knows it
            ? manifestProblems()
            : std::vector<std::string>();
    if (!mistakes.empty()) {
        return mistakes;
    }
    std::vector<std::string> problems;
    for (const Discovery::FailedCategory& failure : discovery.failedCategories) {
        problems.push_back("the load-module handler answers error " +
                           std::to_string(failure.errorCode) + " for the category '" +
                           failure.category + "'");
    }
    return problems;
}

} // namespace

void to_json(nlohmann::ordered_json& json, const Discovery::LoadModule& loadModule) {
    json = {{"category", loadModule.category},
            {"productNumber", loadModule.identity.productNumber},
            {"revision", loadModule.identity.revision},
            {"mappingFiles", loadModule.mappingFiles}};
}

void to_json(nlohmann::ordered_json& json, const Discovery::FailedCategory& failure) {
    json = {{"category", failure.category}, {"errorCode", failure.errorCode}};
}

void silenceTraces() { setenv("RUXA_TRACE_GROUPS", "none", 0); }

Discovery discover(const Identity& identity) {
    silenceTraces();
    Discovery discovery;
    discovery.identity = identity;
    Recorder recorder(discovery);
    discovery.mappingFiles = dolq::xmlconf::MappingXmlConfigurator().findAllMappingFiles(
        identity.productNumber, identity.revision, recorder);
    discovery.problems = problemsOf(discovery);
    return discovery;
}

std::string Discovery::whyNoMappingFile() const {
    if (!mappingFiles.empty()) {
        return {};
    }
    if (std::any_of(loadModules.begin(), loadModules.end(),
                    [](const LoadModule& module) { return module.matches; })) {
        const std::string what =
            "the load module " + quoted(identity) + " has no file tagged alarm_mapping";
        const auto misspelt =
            std::find_if(problems.begin(), problems.end(), [](const std::string& problem) {
                return problem.find("alarm_mapping") != problem.npos;
            });
        return misspelt == problems.end() ? what : what + ": " + *misspelt;
    }
    std::vector<std::string> missing;
    if (identity.productNumber.empty()) {
        missing.push_back("no product number (ZBN_NO)");
    }
    if (identity.revision.empty()) {
        missing.push_back("no revision (ZBN_REV)");
    }
    const std::string what = missing.empty() ? "there is no load module " + quoted(identity)
                                             : "the program has " + joined(missing, " and ");
    if (const std::set<std::string> near = nearest(*this); !near.empty()) {
        return what + ", but " + joined(near);
    }
    return what + (!problems.empty()  ? ": " + problems.front()
                   : !missing.empty() ? std::string()
                                      : ", nor another one of that product among " +
                                            counted(loadModules.size(), "load module"));
}

std::string Discovery::commonFolder() const {
    std::string common = mappingFiles.empty() ? "" : mappingFiles.front();
    for (const std::string& path : mappingFiles) {
        const auto end = std::mismatch(common.begin(), common.end(), path.begin(), path.end());
        common.erase(end.first, common.end());
    }
    return common.substr(0, common.rfind('/') + 1);
}

std::string Discovery::heading() const {
    const std::string folder = commonFolder();
    return "Load module " + quoted(identity) +
           (folder.empty() ? "" : "\nMapping files in " + printable(folder));
}

} // namespace dolqctl
