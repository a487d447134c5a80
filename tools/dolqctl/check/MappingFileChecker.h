#pragma once

#include <cstdint>
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
    /// Reads the file `name`, or with "-" the standard input, on top of those before it. With
    /// `manifestFiles`, a file is a manifest if its root says so: an error is one that the embedded
    /// load-module handler refuses, or a mapping file that the library does not find in it; those
    /// that are there are added to `manifestFiles`, and not read.
    void read(const std::string& name, std::vector<LoadModuleFile>* manifestFiles = nullptr);
    const Inventory& inventory() const { return m_inventory; }

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
    void add(Rule rule, const TiXmlElement& element, const TiXmlBase& place,
             const std::vector<std::string>& texts = {});
    void addUnread(const TiXmlElement& element, const std::string& read = {},
                   bool isRefused = false);
    void addUnreadAttributes(const TiXmlElement& element, const std::vector<std::string>& known);

    void checkMapping(const TiXmlElement& element);
    std::optional<std::uint32_t> checkNumber(const TiXmlElement& element, const char* name);

    // Of manifests (ManifestChecker.cpp).
    void checkManifest(const TiXmlElement& root);
    void checkFile(const TiXmlElement& file, const LoadModule& loadModule);

    Inventory m_inventory;

    // Of the file that is read:
    std::string m_file;
    std::vector<LoadModuleFile>* m_manifestFiles = nullptr;
    std::vector<Finding> m_problems;
    bool m_mapsNothing = true;
    std::shared_ptr<const MappingElement> m_element; ///< of the latest finding, or null
};

const TiXmlAttribute* findAttribute(const TiXmlElement& element, const char* name);

/// Its value; empty without one.
std::string textOf(const TiXmlElement& element, const char* name);

} // namespace dolqctl
