// Who interprets the configuration file that a v1 client names. The library itself has one parser,
// which does not look at the file, so any name gets it; no name means no configuration.

#include "mapping/ConfigurationParserFactory.h"

#include <utility>

#include "mapping/XmlParserImpl.h"

namespace dolq {

std::shared_ptr<ConfigurationParserI>
ConfigurationParserFactory::createParser(const std::string& fileName) const {
    if (m_parser != nullptr) {
        return m_parser;
    }
    return fileName.empty() ? nullptr : std::make_shared<XmlParserImpl>();
}

void ConfigurationParserFactory::setParser(std::shared_ptr<ConfigurationParserI> parser) {
    m_parser = std::move(parser);
}

void ConfigurationParserFactory::clearParser() { m_parser.reset(); }

} // namespace dolq
