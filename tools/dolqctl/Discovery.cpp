#include "Discovery.h"

#include <CLI/CLI.hpp>

#include "Output.h"
#include "QuietTraces.h"
#include "xmlconf/dolqXmlConfigurator.h"

namespace dolqctl {

namespace {

std::string textOf(const char* text) { return text != nullptr ? text : ""; }

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
             {textOf(loadModule.productNumber), textOf(loadModule.revision)},
             matches,
             {}});
    }
    void onMappingFile(const std::string& path) override {
        m_discovery.loadModules.back().mappingFiles.push_back(path);
    }

private:
    Discovery& m_discovery;
};

} // namespace

void addIdentityOptions(CLI::App& command, Identity& identity) {
    command.add_option("--product", identity.productNumber, "Product number of the load module")
        ->envname("ZBN_NO");
    command.add_option("--revision", identity.revision, "Revision of the load module")
        ->envname("ZBN_REV");
}

std::string text(const Identity& identity) {
    if (identity.productNumber.empty() && identity.revision.empty()) {
        return "without product number and revision";
    }
    return printable(identity.productNumber) + ' ' + printable(identity.revision);
}

Discovery discover(const Identity& identity) {
    quietTraces();
    Discovery discovery;
    Recorder recorder(discovery);
    dolq::xmlconf::MappingXmlConfigurator configurator;
    discovery.mappingFiles =
        configurator.findAllMappingFiles(identity.productNumber, identity.revision, recorder);
    return discovery;
}

std::string text(const Discovery::FailedCategory& failure) {
    return "the load-module handler answered error " + std::to_string(failure.errorCode) +
           " for the category '" + failure.category + "': its load modules are not read";
}

} // namespace dolqctl
