#pragma once

#include <memory>
#include <string>

#include "mapping/ConfigurationParserI.h"

namespace dolq {

/// Chooses the parser for the configuration file that a v1 client names. Each thread has one, made
/// on first use and kept for good. A test can install a parser of its own.
class ConfigurationParserFactory {
public:
    ConfigurationParserFactory() = default;
    virtual ~ConfigurationParserFactory() = default;

    ConfigurationParserFactory(const ConfigurationParserFactory&) = delete;
    ConfigurationParserFactory& operator=(const ConfigurationParserFactory&) = delete;

    /// The installed parser if there is one, else an XML parser; null for an empty name.
    std::shared_ptr<ConfigurationParserI> createParser(const std::string& fileName) const;

    /// Installs a parser to be handed out for every name, in place of the one before.
    void setParser(std::shared_ptr<ConfigurationParserI> parser);
    void clearParser();

private:
    std::shared_ptr<ConfigurationParserI> m_parser;
};

} // namespace dolq
