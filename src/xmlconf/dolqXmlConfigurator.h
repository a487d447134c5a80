#pragma once

#include <functional>
#include <string>
#include <vector>

#include "mapping/MappingTable.h"
#include "ruxa/fm/dolq/v1/ConfigurationI.h"
#include "trace/TraceObject.h"

namespace dolq::xmlconf {

/// Fills a fault-to-alarm table from the alarm mapping files of the load module that the program
/// belongs to. Made for one run. Nothing is reported back: what is missing or wrong is traced, and
/// the run continues without it. Throws when memory is exhausted or the trace backend throws. The
/// caller holds a cancellation of the thread back until the run is over, for neither the
/// load-module handler nor TinyXML survives a thread that ends within it.
class MappingXmlConfigurator {
public:
    MappingXmlConfigurator() = default;
    virtual ~MappingXmlConfigurator() = default;

    MappingXmlConfigurator(const MappingXmlConfigurator&) = delete;
    MappingXmlConfigurator& operator=(const MappingXmlConfigurator&) = delete;

    /// The whole run, into the calling thread's stored v1 factory.
    void configure();
    /// The whole run, into `mapping`; touches no factory.
    void configure(MappingTable& mapping);

    /// Reads one alarm mapping file. False when it does not load or has no root element; an element
    /// without both ids is skipped alone. A later entry for one fault id and class wins.
    bool readMappingFile(const std::string& fileName,
                         ruxa::fm::dolq::v1::ConfigurationI* configuration);
    bool readMappingFile(const std::string& fileName, MappingTable& mapping);

    /// The environment's `ZBN_NO` and `ZBN_REV`; empty when unset.
    std::string getProductNumber() const;
    std::string getRevision() const;

    /// The paths of a load module's mapping files, in reading order: of one category, and of all.
    std::vector<std::string> findMappingFiles(const std::string& category,
                                              const std::string& productNumber,
                                              const std::string& revision);
    std::vector<std::string> findAllMappingFiles(const std::string& productNumber,
                                                 const std::string& revision);

private:
    void configureFrom(const std::function<void(const std::string&)>& readFile);

    TraceObject m_traceObject{"ruxaDolqXmlLU"};
};

/// One run into the calling thread's stored v1 factory.
void runMappingConfiguratorV1();

/// One run into `mapping`.
void runMappingConfiguratorV2(MappingTable& mapping);

} // namespace dolq::xmlconf
