#include "xmlconf/dolqXmlConfigurator.h"

#include <iterator>
#include <new>

#include <Velk.h>
#include <unistd.h>

#include "common/Environment.h"
#include "common/RegularFile.h"
#include "common/XmlDocument.h"
#include "trace/Probe.h"
#include "trace/Trace.h"
#include "xmlconf/MappingFileFormat.h"

namespace dolq::xmlconf {

namespace {

constexpr char kTraceUnit[] = "dolqXmlConfigurator";

constexpr const char* kCategories[] = {"central", "local", "dynamic"};
constexpr char kMappingFileTag[] = "alarm_mapping";

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

/// Memory that one file is too big for is not the others' loss: such a file does not load.
bool load(common::XmlDocument& document, const std::string& fileName) {
    std::string text;
    try {
        if (common::readRegularFile(fileName, text.max_size(), text) != 0) {
            return false;
        }
    } catch (const std::bad_alloc&) {
        return false;
    }
    return document.load(std::move(text));
}

// Where the reader stores what it finds: the one thing in which the generations differ.

class StoreIntoConfiguration final : public MappingFileObserverI {
public:
    explicit StoreIntoConfiguration(ruxa::fm::dolq::v1::ConfigurationI& configuration)
        : m_configuration(configuration) {}
    bool wantsPlaces() const override { return false; }
    void onMappingWithoutClass(const TiXmlElement&, std::uint32_t faultId,
                               std::uint32_t minorType) override {
        m_configuration.setMapping(faultId, minorType);
    }
    void onMapping(const TiXmlElement&, std::uint32_t faultId, std::uint32_t minorType,
                   const std::string& moClass) override {
        m_configuration.setMapping(faultId, minorType, moClass);
    }

private:
    ruxa::fm::dolq::v1::ConfigurationI& m_configuration;
};

class StoreIntoTable final : public MappingFileObserverI {
public:
    explicit StoreIntoTable(MappingTable& mapping) : m_mapping(mapping) {}
    bool wantsPlaces() const override { return false; }
    void onMappingWithoutClass(const TiXmlElement&, std::uint32_t faultId,
                               std::uint32_t minorType) override {
        m_mapping.set(faultId, minorType, {});
    }
    void onMapping(const TiXmlElement&, std::uint32_t faultId, std::uint32_t minorType,
                   const std::string& moClass) override {
        m_mapping.set(faultId, minorType, moClass);
    }

private:
    MappingTable& m_mapping;
};

/// Calls `onClass` for each class of a comma-separated list, blanks removed: "A, ,B" holds "A", ""
/// and "B"; nothing follows a final comma; a list of blanks alone holds none.
template <typename OnClass> void forEachClass(const char* classes, OnClass onClass) {
    std::string moClass;
    for (; *classes != '\0'; ++classes) {
        if (*classes == ',') {
            onClass(moClass);
            moClass.clear();
        } else if (*classes != ' ') {
            moClass += *classes;
        }
    }
    if (!moClass.empty()) {
        onClass(moClass);
    }
}

} // namespace

void MappingXmlConfigurator::configure(MappingTable& mapping) {
    configureFrom([&](const std::string& path) { readMappingFile(path, mapping); });
}

void MappingXmlConfigurator::configureFrom(
    const std::function<void(const std::string&)>& readFile) {
    LoadModuleObserverI nobody;
    const std::vector<std::string> paths =
        findAllMappingFiles(getProductNumber(), getRevision(), nobody);
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
    return common::environment("ZBN_NO");
}

std::string MappingXmlConfigurator::getRevision() const { return common::environment("ZBN_REV"); }

std::vector<std::string> MappingXmlConfigurator::findAllMappingFiles(
    const std::string& productNumber, const std::string& revision, LoadModuleObserverI& observer) {
    std::vector<std::string> all;
    for (const char* const category : kCategories) {
        std::vector<std::string> paths =
            findMappingFiles(category, productNumber, revision, observer);
        all.insert(all.end(), std::make_move_iterator(paths.begin()),
                   std::make_move_iterator(paths.end()));
    }
    return all;
}

std::vector<std::string> MappingXmlConfigurator::findMappingFiles(const std::string& category,
                                                                  const std::string& productNumber,
                                                                  const std::string& revision,
                                                                  LoadModuleObserverI& observer) {
    std::vector<std::string> paths;
    // Meant: the handler takes a text of up to 127 characters that it may write to.
    char writableCategory[128] = {};
    category.copy(writableCategory, sizeof(writableCategory) - 1);
    Velk_lm_list list{};
    const int result = Velk_get_lms(nullptr, writableCategory, &list);
    if (result != 0) {
        DOLQ_TRACE(m_traceObject, kFailure, "Got error code %d from VELK, continuing anyway",
                   result);
        observer.onFailedCategory(category, result);
        return paths;
    }
    for (const Velk_lm& loadModule : LoadModules(list)) {
        const bool matches = productNumber == textOf(loadModule.productNumber) &&
                             revision == textOf(loadModule.revision);
        observer.onLoadModule(category, loadModule, matches);
        if (!matches) {
            continue;
        }
        for (std::size_t i = 0; i < loadModule.fileCount; ++i) {
            const Velk_lm_file& file = loadModule.files[i];
            if (textOf(file.tag) != kMappingFileTag) {
                continue;
            }
            std::string path = textOf(file.path);
            DOLQ_TRACE(
                m_traceObject, kDetail,
                "Found fault id to minor type mapping file '%s' in Load Module: %s, Rev:%s, ThreadId: %d",
                path.c_str(), productNumber.c_str(), revision.c_str(), getpid());
            observer.onMappingFile(path);
            paths.push_back(std::move(path));
        }
    }
    return paths;
}

bool MappingXmlConfigurator::readMappingFile(const std::string& fileName,
                                             ruxa::fm::dolq::v1::ConfigurationI* configuration) {
    StoreIntoConfiguration store(*configuration);
    return readMappingFile(fileName, store);
}

bool MappingXmlConfigurator::readMappingFile(const std::string& fileName, MappingTable& mapping) {
    StoreIntoTable store(mapping);
    return readMappingFile(fileName, store);
}

bool MappingXmlConfigurator::readMappingFile(const std::string& fileName,
                                             MappingFileObserverI& observer) {
    DOLQ_PROBE(mapping_file, fileName.c_str());
    common::XmlDocument document(fileName);
    document.SetTabSize(observer.wantsPlaces() ? 1 : 0);
    if (!load(document, fileName)) {
        DOLQ_TRACE(m_traceObject, kFlow, "Could not load XML file '%s'", fileName.c_str());
        observer.onNotLoaded(document);
        return false;
    }
    const TiXmlElement* const root = document.FirstChildElement();
    if (root == nullptr) {
        DOLQ_TRACE(m_traceObject, kFlow, "XML data corrupt, no root element in file '%s'",
                   fileName.c_str());
        observer.onNoRoot();
        return false;
    }
    observer.onRoot(*root);
    for (const TiXmlElement* element = root->FirstChildElement(kMapping); element != nullptr;
         element = element->NextSiblingElement(kMapping)) {
        readMapping(fileName, *element, observer);
    }
    return true;
}

void MappingXmlConfigurator::readMapping(const std::string& fileName, const TiXmlElement& element,
                                         MappingFileObserverI& observer) {
    int faultId = 0;
    int minorType = 0;
    if (element.QueryIntAttribute(kFaultId, &faultId) != TIXML_SUCCESS ||
        element.QueryIntAttribute(kMinorType, &minorType) != TIXML_SUCCESS) {
        DOLQ_TRACE(
            m_traceObject, kFlow,
            "When parsing XML file '%s', a '%s' element that did not have all '%s' ,'%s' and '%s' integer attributes was encountered",
            fileName.c_str(), kMapping, kFaultId, kMinorType, kMoClass);
        observer.onSkipped(element);
        return;
    }
    const auto storedFaultId = static_cast<std::uint32_t>(faultId);
    const auto storedMinorType = static_cast<std::uint32_t>(minorType);
    const char* const moClasses = element.Attribute(kMoClass);
    if (moClasses == nullptr) {
        DOLQ_TRACE(m_traceObject, kFailure,
                   "Alarm mapping entry is missing managed object class for fault '%d'.", faultId);
        DOLQ_TRACE(m_traceObject, kDetail, "Call DOLQ with %s=%d and %s=%d", kFaultId, faultId,
                   kMinorType, minorType);
        observer.onMappingWithoutClass(element, storedFaultId, storedMinorType);
        return;
    }
    DOLQ_TRACE(m_traceObject, kDetail, "Call DOLQ with %s=%d,  %s=%d and %s=%s ", kFaultId, faultId,
               kMinorType, minorType, kMoClass, moClasses);
    forEachClass(moClasses, [&](const std::string& moClass) {
        observer.onMapping(element, storedFaultId, storedMinorType, moClass);
    });
}

void runMappingConfiguratorV2(MappingTable& mapping) {
    MappingXmlConfigurator().configure(mapping);
}

} // namespace dolq::xmlconf
