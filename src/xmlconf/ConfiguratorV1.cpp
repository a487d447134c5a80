// Apart from the rest of the configurator, which has users of its own that are without a factory.
#include <ruxa/fm/dolq/v1/FmiFactory.h>

#include "xmlconf/dolqXmlConfigurator.h"

namespace dolq::xmlconf {

void MappingXmlConfigurator::configure() {
    configureFrom([this](const std::string& path) {
        readMappingFile(path, ruxa::fm::dolq::v1::getFmiFactory()->getConfiguration());
    });
}

void runMappingConfiguratorV1() { MappingXmlConfigurator().configure(); }

} // namespace dolq::xmlconf
