#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <tinyxml.h>

#include "MappingFiles.h"
#include "xmlconf/MappingFileObserverI.h"

namespace dolqctl {

/// Product number and revision; nothing for files that no manifest names.
using LoadModule = std::vector<std::string>;
using LoadModuleFile = std::pair<LoadModule, std::string>; ///< one of its mapping files

/// What a parser finds that keeps to the rules of XML, up to where TinyXML may stop. TinyXML, which
/// reads files for programs, does not; without a problem it may take something else than is
/// written.
std::vector<Finding> findXmlProblems(const std::string& file, const std::string& text);

/// Looks at the mapping files of a load module while the library's reader reads them, and finds
/// what the reader skips, or takes for something else than what is written.
class MappingFileChecker final : public dolq::xmlconf::MappingFileObserverI {
public:
    /// Reads the file `name`, or with "-" the standard input, and returns what is wrong in it, by
    /// position. With `manifestFiles`, a file is a manifest if its root says so: an error is one
    /// that the embedded load-module handler refuses, or a mapping file that the library does not
    /// find in it; those that are there are added to `manifestFiles`, and not read.
    std::vector<Finding> read(const std::string& name,
                              std::vector<LoadModuleFile>* manifestFiles = nullptr);

    /// What has been read.
    const Mappings& mappings() const { return m_mappings; }
    /// Classes in it that are probably misspelt.
    std::vector<Finding> findSimilarClasses() const;

    void onNotLoaded(const TiXmlDocument& document) override;
    void onNoRoot() override { onNotLoaded({}); }
    void onRoot(const TiXmlElement& root) override;
    void onSkipped(const TiXmlElement& element) override { checkMapping(element); }
    void onMappingWithoutClass(const TiXmlElement& element, std::uint32_t faultId,
                               std::uint32_t minorType) override;
    void onClassList(const TiXmlElement& element, std::uint32_t /*faultId*/,
                     std::uint32_t /*minorType*/, const char* /*classes*/) override {
        checkMapping(element);
    }
    void onMapping(const TiXmlElement& element, std::uint32_t faultId, std::uint32_t minorType,
                   const std::string& moClass) override;

private:
    FilePosition positionOf(const TiXmlBase& part) const;
    void add(Finding finding);
    void add(Rule rule, const TiXmlBase& part, const std::vector<std::string>& texts = {});
    void addUnread(const TiXmlElement& element, const std::string& read = {},
                   bool isRefused = false);
    void addUnreadAttributes(const TiXmlElement& element, const std::vector<std::string>& known);

    void beginElement(const TiXmlElement& element);
    void checkMapping(const TiXmlElement& element);
    std::optional<std::uint32_t> checkNumber(const TiXmlElement& element, const char* name);
    bool record(const Mappings::key_type& fault, const Mapping& mapping);

    // Of manifests (ManifestChecker.cpp).
    void checkManifest(const TiXmlElement& root);
    void checkFile(const TiXmlElement& file, const LoadModule& loadModule);

    /// How classes occur that differ in digits alone.
    struct Use {
        std::string name; ///< of the first
        FilePosition first;
        std::size_t count;
    };

    Mappings m_mappings;
    std::map<std::string, Use> m_uses; ///< by class without digits

    // Of the file that is read:
    std::string m_file;
    std::vector<LoadModuleFile>* m_manifestFiles = nullptr;
    std::vector<Finding> m_problems;
    bool m_mapsNothing = true;
    std::shared_ptr<const MappingElement> m_element; ///< what the next findings are about, or null
    std::vector<Finding> m_findings;
};

const TiXmlAttribute* findAttribute(const TiXmlElement& element, const char* name);

/// Its value; empty without one.
std::string textOf(const TiXmlElement& element, const char* name);

} // namespace dolqctl
