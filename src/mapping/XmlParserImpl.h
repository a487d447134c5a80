#pragma once

#include "mapping/ConfigurationParserI.h"

namespace dolq {

/// Sets the two built-in mappings; no file is involved. The mapping files of load modules are read
/// by xmlconf::MappingXmlConfigurator.
class XmlParserImpl final : public ConfigurationParserI {
public:
    void parse(ruxa::fm::dolq::v1::ConfigurationI& configuration) override;
};

} // namespace dolq
