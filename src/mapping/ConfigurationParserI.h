#pragma once

#include "ruxa/fm/dolq/v1/ConfigurationI.h"

namespace dolq {

/// Applies one configuration to a mapping table, through the interface that clients have, too.
class ConfigurationParserI {
public:
    virtual ~ConfigurationParserI() = default;

    virtual void parse(ruxa::fm::dolq::v1::ConfigurationI& configuration) = 0;
};

} // namespace dolq
