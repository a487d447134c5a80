// Finding a load module's alarm mapping files, and storing what they hold.
//
// The order of reading is what lets a node override mappings: the last entry for a fault and a
// class wins. So the categories come from the general to the particular, and one that fails, a file
// that is missing or an element that is wrong costs nothing but itself.

#include "xmlconf/dolqXmlConfigurator.h"

#include <cstddef>
#include <iterator>
#include <utility>

#include <Velk.h>
#include <ruxa/fm/dolq/v1/FmiFactory.h>
#include <unistd.h>

#include "common/Environment.h"
#include "common/LoadModuleNames.h"
#include "trace/Probe.h"
#include "trace/Trace.h"
#include "xmlconf/MappingFileFormat.h"
#include "xmlconf/MappingFileReader.h"

namespace dolq::xmlconf {

namespace {

constexpr char kTraceUnit[] = "dolqXmlConfigurator";

/// A text of the handler's, which may be missing.
std::string textOf(const char* text) { return text != nullptr ? text : ""; }

/// What one successful query of the load-module handler allocated.
class LoadModules {
public:
    explicit LoadModules(Velk_lm_list& list) : m_list(list) {}
    ~LoadModules() { Velk_free_buffers(&m_list); }
    LoadModules(const LoadModules&) = delete;
    LoadModules& operator=(const LoadModules&) = delete;

    const Velk_lm* begin() const { return m_list.lms; }
    const Velk_lm* end() const { return m_list.lms + m_list.count; }

private:
    Velk_lm_list& m_list;
};

/// Traces what a mapping file holds and stores its mappings. Where they are stored is the one thing
/// in which the generations differ.
class Loader : public MappingFileObserverI {
public:
    Loader(const std::string& fileName, const TraceObject& traceObject)
        : m_fileName(fileName), m_traceObject(traceObject) {}

    bool wantsPlaces() const override { return false; }

    void onNotLoaded(const TiXmlDocument&) override {
        DOLQ_TRACE(m_traceObject, kFlow, "Could not load XML file '%s'", m_fileName.c_str());
    }
    void onNoRoot() override {
        DOLQ_TRACE(m_traceObject, kFlow, "XML data corrupt, no root element in file '%s'",
                   m_fileName.c_str());
    }
    void onSkipped(const TiXmlElement&) override {
        DOLQ_TRACE(
            m_traceObject, kFlow,
            "When parsing XML file '%s', a '%s' element that did not have all '%s' ,'%s' and '%s' integer attributes was encountered",
            m_fileName.c_str(), kMapping, kFaultId, kMinorType, kMoClass);
    }
    void onMappingWithoutClass(const TiXmlElement&, std::uint32_t faultId,
                               std::uint32_t minorType) override {
        DOLQ_TRACE(m_traceObject, kFailure,
                   "Alarm mapping entry is missing managed object class for fault '%d'.", faultId);
        DOLQ_TRACE(m_traceObject, kDetail, "Call DOLQ with %s=%d and %s=%d", kFaultId, faultId,
                   kMinorType, minorType);
        store(faultId, minorType);
    }
    void onClassList(const TiXmlElement&, std::uint32_t faultId, std::uint32_t minorType,
                     const char* classes) override {
        DOLQ_TRACE(m_traceObject, kDetail, "Call DOLQ with %s=%d,  %s=%d and %s=%s ", kFaultId,
                   faultId, kMinorType, minorType, kMoClass, classes);
    }

protected:
    virtual void store(std::uint32_t faultId, std::uint32_t minorType) = 0;

private:
    const std::string& m_fileName;
    const TraceObject& m_traceObject;
};

/// Stores through the interface that v1 clients have, too. So a mapping without a class leaves the
/// traces of the deprecated operation as well.
class LoaderV1 final : public Loader {
public:
    LoaderV1(const std::string& fileName, const TraceObject& traceObject,
             ruxa::fm::dolq::v1::ConfigurationI& configuration)
        : Loader(fileName, traceObject), m_configuration(configuration) {}
    void onMapping(const TiXmlElement&, std::uint32_t faultId, std::uint32_t minorType,
                   const std::string& moClass) override {
        m_configuration.setMapping(faultId, minorType, moClass);
    }

private:
    void store(std::uint32_t faultId, std::uint32_t minorType) override {
        m_configuration.setMapping(faultId, minorType);
    }

    ruxa::fm::dolq::v1::ConfigurationI& m_configuration;
};

/// Stores in the table from which the map of the v2 factory will be made.
class LoaderV2 final : public Loader {
public:
    LoaderV2(const std::string& fileName, const TraceObject& traceObject, MappingTable& mapping)
        : Loader(fileName, traceObject), m_mapping(mapping) {}
    void onMapping(const TiXmlElement&, std::uint32_t faultId, std::uint32_t minorType,
                   const std::string& moClass) override {
        m_mapping.set(faultId, minorType, moClass);
    }

private:
    void store(std::uint32_t faultId, std::uint32_t minorType) override {
        m_mapping.set(faultId, minorType, {});
    }

    MappingTable& m_mapping;
};

} // namespace

void MappingXmlConfigurator::configure() {
    configureFrom([this](const std::string& path) {
        readMappingFile(path, ruxa::fm::dolq::v1::getFmiFactory()->getConfiguration());
    });
}

void MappingXmlConfigurator::configure(MappingTable& mapping) {
    configureFrom([&](const std::string& path) { readMappingFile(path, mapping); });
}

void MappingXmlConfigurator::configureFrom(
    const std::function<void(const std::string&)>& readFile) {
    const std::vector<std::string> paths = findAllMappingFiles(getProductNumber(), getRevision());
    if (paths.empty()) {
        DOLQ_TRACE(m_traceObject, kDetail,
                   "No alarm mapping file found in Load Module: %s, Rev: %s, ThreadId = %d",
                   getProductNumber().c_str(), getRevision().c_str(), getpid());
    }
    for (const std::string& path : paths) {
        readFile(path);
    }
}

std::string MappingXmlConfigurator::getProductNumber() const {
    return common::environment(common::kProductNumberVariable);
}

std::string MappingXmlConfigurator::getRevision() const {
    return common::environment(common::kRevisionVariable);
}

std::vector<std::string>
MappingXmlConfigurator::findAllMappingFiles(const std::string& productNumber,
                                            const std::string& revision) {
    std::vector<std::string> all;
    for (const char* const category : common::kLoadModuleCategories) {
        std::vector<std::string> paths = findMappingFiles(category, productNumber, revision);
        all.insert(all.end(), std::make_move_iterator(paths.begin()),
                   std::make_move_iterator(paths.end()));
    }
    return all;
}

std::vector<std::string> MappingXmlConfigurator::findMappingFiles(const std::string& category,
                                                                  const std::string& productNumber,
                                                                  const std::string& revision) {
    std::vector<std::string> paths;
    // The handler takes a text of up to 127 characters, to which it may write.
    char writableCategory[128] = {};
    category.copy(writableCategory, sizeof(writableCategory) - 1);
    Velk_lm_list list{};
    const int result = Velk_get_lms(nullptr, writableCategory, &list);
    if (result != 0) {
        DOLQ_TRACE(m_traceObject, kFailure, "Got error code %d from VELK, continuing anyway",
                   result);
        return paths;
    }
    for (const Velk_lm& loadModule : LoadModules(list)) {
        // Another revision may map the same faults to other alarms.
        if (productNumber != textOf(loadModule.productNumber) ||
            revision != textOf(loadModule.revision)) {
            continue;
        }
        for (std::size_t i = 0; i < loadModule.fileCount; ++i) {
            const Velk_lm_file& file = loadModule.files[i];
            if (textOf(file.tag) != common::kMappingFileTag) {
                continue;
            }
            // A copy, for files are read when the handler's buffers are freed.
            std::string path = textOf(file.path);
            DOLQ_TRACE(
                m_traceObject, kDetail,
                "Found fault id to minor type mapping file '%s' in Load Module: %s, Rev:%s, ThreadId: %d",
                path.c_str(), productNumber.c_str(), revision.c_str(), getpid());
            paths.push_back(std::move(path));
        }
    }
    return paths;
}

bool MappingXmlConfigurator::readMappingFile(const std::string& fileName,
                                             ruxa::fm::dolq::v1::ConfigurationI* configuration) {
    DOLQ_PROBE(mapping_file, fileName.c_str());
    LoaderV1 loader(fileName, m_traceObject, *configuration);
    return xmlconf::readMappingFile(fileName, loader);
}

bool MappingXmlConfigurator::readMappingFile(const std::string& fileName, MappingTable& mapping) {
    DOLQ_PROBE(mapping_file, fileName.c_str());
    LoaderV2 loader(fileName, m_traceObject, mapping);
    return xmlconf::readMappingFile(fileName, loader);
}

void runMappingConfiguratorV1() { MappingXmlConfigurator().configure(); }

void runMappingConfiguratorV2(MappingTable& mapping) {
    MappingXmlConfigurator().configure(mapping);
}

} // namespace dolq::xmlconf
