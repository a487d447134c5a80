#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "mappings/Inventory.h"
#include "xmlconf/MappingFileObserverI.h"

class TiXmlAttribute;

namespace dolqctl {

enum class Severity { Warning, Error };

/// "warning" or "error".
const char* severityText(Severity severity);

struct Finding {
    FilePosition position;
    Severity severity;
    const char* rule; ///< a stable name
    std::string message;
    std::optional<FilePosition> other; ///< the mapping that this one repositions
};

/// Looks at mapping files while the library's reader reads them, and finds what the reader skips,
/// or takes for something else than what is written. An error is a mapping lost or changed, a
/// warning something that works but was hardly meant.
class MappingFileChecker final : public dolq::xmlconf::MappingFileObserverI {
public:
    /// Reads `path` on top of the files before it. Its findings are in the order of their
    /// positions.
    void check(const std::string& path);
    const std::vector<Finding>& findings() const { return m_findings; }
    std::size_t count(Severity severity) const;

    void onNotLoaded(const TiXmlDocument& document) override;
    void onNoRoot() override;
    void onRoot(const TiXmlElement& root) override;
    void onMappingWithoutClass(const TiXmlElement& element, std::uint32_t faultId,
                               std::uint32_t minorType) override;
    void onMapping(const TiXmlElement& element, std::uint32_t faultId, std::uint32_t minorType,
                   const std::string& moClass) override;

private:
    void checkMapping(const TiXmlElement& element);
    void checkNumber(const TiXmlElement& element, const char* name);
    void checkClassList(const TiXmlAttribute& list);
    void checkClass(const TiXmlElement& element, const std::string& moClass);
    void checkUnread(const TiXmlElement& element);
    void checkNested(const TiXmlElement& element);
    void remember(Mapping mapping);

    void error(const TiXmlBase& part, const char* rule, std::string message);
    void warning(const TiXmlBase& part, const char* rule, std::string message);
    void reportUnread(const TiXmlBase& part, const char* rule, const std::string& message,
                      const char* meant);
    void reportUnreadable(UnreadableFile file);

    std::string m_path;
    std::vector<Finding> m_findings;
    std::map<std::pair<std::uint32_t, std::string>, Mapping> m_mappings;
};

/// Takes out of `text` the characters that look like a blank or like nothing, and yet stay in a
/// class of a mapping file.
void removeInvisible(std::string& text);

} // namespace dolqctl
