#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "check/Findings.h"
#include "check/XmlText.h"
#include "xmlconf/MappingFileObserverI.h"

namespace dolqctl {

/// Product number and revision; nothing for files that no manifest names.
using LoadModule = std::vector<std::string>;
using LoadModuleFile = std::pair<LoadModule, std::string>; ///< one of its mapping files

/// Adds the mistakes in a manifest as the embedded load-module handler reads it: an error is a
/// manifest that it refuses, or a mapping file that the library does not find in it. Returns the
/// mapping files that are there.
std::vector<LoadModuleFile> checkManifest(const TiXmlElement& root, Findings& findings);

/// Looks at mapping files while the library's reader reads them, and finds what the reader skips,
/// or takes for something else than what is written.
class MappingFileChecker final : public dolq::xmlconf::MappingFileObserverI {
public:
    enum class Kind { MappingFile, Manifest, Either };

    /// Of one file and rule, `most` findings are kept.
    explicit MappingFileChecker(std::size_t most) : m_findings(most) {}

    /// Reads `path` and calls it `name`, on top of the files that were read before it for the same
    /// load module; not again for the same. `Either`: a manifest is recognized by its root, and the
    /// files that it names are read for their load modules.
    void read(const std::string& path, const std::string& name, Kind kind,
              const LoadModule& loadModule = {});

    /// When all files are read: what is wrong in them. Nothing is left here.
    std::vector<Finding> takeFindings();
    const std::vector<std::string>& files() const { return m_findings.files(); }
    const std::map<LoadModule, Mappings>& mappings() const { return m_mappings; }

    void onNotLoaded(const TiXmlDocument& document) override;
    void onNoRoot() override;
    void onRoot(const TiXmlElement& root) override;
    void onMappingWithoutClass(const TiXmlElement& element, std::uint32_t faultId,
                               std::uint32_t minorType) override;
    void onMapping(const TiXmlElement& element, std::uint32_t faultId, std::uint32_t minorType,
                   const std::string& moClass) override;

private:
    void addNotLoaded(const TiXmlDocument& document, const char* otherwise);
    void checkChildren(const TiXmlElement& element);
    void checkMapping(const TiXmlElement& element);
    std::optional<std::uint32_t> checkNumber(const TiXmlElement& element, const char* name);
    void checkClassList(const TiXmlAttribute& list);
    void checkClass(const TiXmlAttribute& list, const std::string& moClass);
    bool record(const Mapping& mapping);

    /// How a class occurs in the files of a load module.
    struct Use {
        FilePosition first;
        std::size_t count = 0;
    };

    Findings m_findings;
    std::map<std::string, std::set<LoadModule>> m_readers; ///< of each file
    std::map<LoadModule, Mappings> m_mappings;
    std::map<LoadModule, std::map<std::string, Use>> m_uses;
    std::map<LoadModule, std::map<std::wstring, std::string>> m_spellings; ///< by `folded`
    // Of the file that is read:
    LoadModule m_loadModule;
    Kind m_kind = Kind::MappingFile;
    XmlText m_text;
    bool m_isManifest = false;
    bool m_mapsNothing = true;
    std::vector<LoadModuleFile> m_named;
};

} // namespace dolqctl
