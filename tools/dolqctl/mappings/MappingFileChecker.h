#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "mappings/Findings.h"
#include "mappings/XmlChecks.h"
#include "xmlconf/MappingFileObserverI.h"

class TiXmlAttribute;

namespace dolqctl {

/// One entry of a mapping file as the library's reader stores it.
struct Mapping {
    std::uint32_t faultId;
    std::string moClass;
    std::uint32_t minorType;
    FilePosition position;
};

/// "1/2": major id and minor id.
std::string alarmText(std::uint32_t minorType);

/// By fault id, then class byte for byte: all mappings that were read for them, one replacing the
/// other. The last one is what a program has.
using Mappings = std::map<std::pair<std::uint32_t, std::string>, std::vector<Mapping>>;

/// What the library's reader takes from mapping files read one after the other, and what is wrong
/// in them.
struct Inventory {
    Mappings mappings;
    std::vector<Finding> findings; ///< in reading order, those of one file by position
};

/// Looks at mapping files while the library's reader reads them, and finds what the reader skips,
/// or takes for something else than what is written.
class MappingFileChecker final : public dolq::xmlconf::MappingFileObserverI {
public:
    /// Of one file, rule and severity, `most` findings are kept.
    MappingFileChecker(Inventory& inventory, std::size_t most)
        : m_inventory(inventory), m_findings({}, most), m_most(most) {}

    /// Reads `path` on top of the files before it, and calls it `name`. With `orManifest`, a
    /// manifest is recognized and checked as one; otherwise it is a file without mappings.
    void read(const std::string& path, const std::string& name, bool orManifest);

    void onNotLoaded(const TiXmlDocument& document) override;
    void onNoRoot() override;
    void onRoot(const TiXmlElement& root) override;
    void onMappingWithoutClass(const TiXmlElement& element, std::uint32_t faultId,
                               std::uint32_t minorType) override;
    void onMapping(const TiXmlElement& element, std::uint32_t faultId, std::uint32_t minorType,
                   const std::string& moClass) override;

private:
    void checkChildren(const TiXmlElement& element);
    void checkMapping(const TiXmlElement& element);
    void checkNumber(const TiXmlElement& element, const char* name);
    void checkClassList(const TiXmlAttribute& list);
    void checkClass(const TiXmlAttribute& list, const std::string& moClass);
    bool record(const Mapping& mapping);

    Inventory& m_inventory;
    Findings m_findings;
    const std::size_t m_most;
    std::optional<XmlText> m_text; ///< of the file that is read
    bool m_mapsNothing = true;
    std::map<std::string, std::pair<std::string, FilePosition>> m_spellings; ///< by `folded`
};

Inventory readMappingFiles(const std::vector<std::string>& paths);

} // namespace dolqctl
