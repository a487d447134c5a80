#include "mappings/Discovery.h"

#include <cstdlib>
#include <filesystem>
#include <set>
#include <system_error>

#include <Velk.h>

#include "Output.h"
#include "SharedObject.h"
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
        m_discovery.problems.push_back("the load-module handler answers error " +
                                       std::to_string(errorCode) + " for the category '" +
                                       category + "'");
    }
    void onLoadModule(const std::string& /*category*/, const Velk_lm& loadModule,
                      bool matches) override {
        m_discovery.isFound = m_discovery.isFound || matches;
        m_discovery.loadModules.push_back(
            {orEmpty(loadModule.productNumber), orEmpty(loadModule.revision)});
    }

private:
    Discovery& m_discovery;
};

/// Of the folder that the embedded handler reads, in which a missing file is an empty category.
void checkManifests(Discovery& discovery) {
    const std::string chosen = common::trustedEnvironment("VELK_MANIFEST_DIR");
    const fs::path folder = chosen.empty() ? "/etc/ruxa/loadmodules" : chosen;
    const std::string where = "manifests are central.xml, local.xml and dynamic.xml in " +
                              inQuotes(folder.string()) +
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
                if (finding.rule != std::string("missing-file")) { // told when it is read
                    (finding.severity == Severity::Error ? problems : discovery.doubts)
                        .push_back(positionText(finding.position) + ": " + finding.message);
                }
            }
        }
    }
    if (isEmpty && problems.empty()) {
        problems.push_back(where +
                           (error ? ": " + error.message() : ", where there is none of them"));
    }
    if (!problems.empty()) { // they say more than error codes
        discovery.problems = std::move(problems);
    }
}

} // namespace

std::string quoted(const Identity& identity) {
    return inQuotes(identity.productNumber) + ' ' + inQuotes(identity.revision);
}

void silenceTraces() { setenv("RUXA_TRACE_GROUPS", "none", 0); }

Discovery discover(const Identity& identity) {
    silenceTraces();
    Discovery discovery;
    discovery.identity = identity;
    Recorder recorder(discovery);
    discovery.mappingFiles = dolq::xmlconf::MappingXmlConfigurator().findAllMappingFiles(
        identity.productNumber, identity.revision, recorder);
    if (SharedObject(kLoadModuleLibrary)
            .contains("VELK_MANIFEST_DIR")) { // no other handler knows it
        checkManifests(discovery);
    }
    return discovery;
}

std::string Discovery::whyNoMappingFile() const {
    if (!mappingFiles.empty()) {
        return {};
    }
    const std::string reason = problems.empty() ? "" : ": " + problems.front();
    if (isFound) {
        return "the load module " + quoted(identity) + " has no file tagged alarm_mapping" + reason;
    }
    std::set<std::string> others; // of the product, perhaps written otherwise
    for (const Identity& each : loadModules) {
        if (folded(each.productNumber) == folded(identity.productNumber)) {
            others.insert(quoted(each));
        }
    }
    const bool isNamed = !identity.productNumber.empty() && !identity.revision.empty();
    return (isNamed ? "there is no load module " : "ZBN_NO and ZBN_REV name no load module: ") +
           quoted(identity) +
           (!others.empty() ? ", but " + joined(others)
            : isNamed       ? " among " + std::to_string(loadModules.size())
                            : "") +
           reason;
}

} // namespace dolqctl
