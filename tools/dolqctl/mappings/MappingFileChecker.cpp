#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <tinyxml.h>

#include "Output.h"
#include "adapter/MinorType.h"
#include "mappings/Checkers.h"
#include "xmlconf/MappingFileFormat.h"
#include "xmlconf/dolqXmlConfigurator.h"

namespace dolqctl {

namespace {

using dolq::xmlconf::kFaultId;
using dolq::xmlconf::kMapping;
using dolq::xmlconf::kMinorType;
using dolq::xmlconf::kMoClass;

constexpr char kRoot[] = "alarmMappings";

/// Characters with which a class is hardly that of an object.
constexpr struct {
    const char* characters;
    Severity severity;
    const char* rule;
    const char* reason;
} kOddCharacters[] = {
    {"\t\n\v\f\r", Severity::Error, "class-never-matches",
     " never matches: only blanks are removed from it, but all white space from the notification "
     "object"},
    {"=", Severity::Error, "class-never-matches",
     " never matches: a notification object's class ends before its '='"},
    {";|/\\+", Severity::Error, "class-character",
     " is a single class: write a comma if two are meant"},
    {"*?", Severity::Error, "class-character",
     " stands for itself only, there are no patterns: name each class"},
    {"\"'`", Severity::Error, "class-character",
     " holds quotation marks that no object has: leave them out"},
    {"<>", Severity::Error, "class-character",
     " holds a part of a tag: is a quotation mark missing?"},
    {"!#$%&()@[]^{}~:", Severity::Warning, "class-character",
     " holds a character that classes hardly have: is it meant?"}};

/// Whether a blank stands between two other characters of one class.
bool hasInnerBlank(const std::string& list) {
    for (std::size_t at = list.find(' '); at != list.npos; at = list.find(' ', at)) {
        const std::size_t behind = list.find_first_not_of(' ', at);
        if (at > 0 && behind != list.npos && list[at - 1] != ',' && list[behind] != ',') {
            return true;
        }
        at = std::min(behind, list.size());
    }
    return false;
}

/// "131073 (2/1)".
std::string minorTypeText(std::uint32_t minorType) {
    return std::to_string(minorType) + " (" + alarmText(minorType) + ')';
}

/// What to write in place of a number that is not read as it is meant: "; write "7"", or nothing.
std::string meantNumber(const std::string& value, bool isMinorType) {
    std::string plain = plainText(value).letters;
    plain.erase(std::remove_if(plain.begin(), plain.end(),
                               [](char c) { return c == ' ' || c == '"' || c == '\''; }),
                plain.end());
    const bool isHexadecimal = plain.find_first_of("xX") == 1;
    char* end = nullptr;
    const long long number = std::strtoll(plain.c_str(), &end, isHexadecimal ? 16 : 10);
    if (*end == '\0' && !plain.empty() && (isHexadecimal || plain != value)) {
        return "; write \"" + std::to_string(number) + '"';
    }
    unsigned int majorId = 0;
    unsigned int minorId = 0;
    if (isMinorType && std::sscanf(plain.c_str(), "%5u%*1[/:.-]%5u", &majorId, &minorId) == 2 &&
        majorId <= 0xFFFF && minorId <= 0xFFFF) {
        const auto meant = static_cast<std::int32_t>(majorId << 16U | minorId);
        return "; for the alarm " + alarmText(static_cast<std::uint32_t>(meant)) + " write \"" +
               std::to_string(meant) + '"';
    }
    return {};
}

} // namespace

std::vector<Finding> MappingFileChecker::check(const std::string& path, const std::string& name) {
    m_findings = Findings(name, m_most);
    m_text = checkText(path, m_findings);
    if (isManifest(m_text)) {
        checkManifest(path, m_text, m_findings);
    } else {
        dolq::xmlconf::MappingXmlConfigurator().readMappingFile(path, *this);
    }
    return m_findings.take();
}

void MappingFileChecker::onNotLoaded(const TiXmlDocument& document) {
    addNotLoaded(m_text, document, m_findings);
}

void MappingFileChecker::onNoRoot() { addNotLoaded(m_text, {}, m_findings); }

void MappingFileChecker::onRoot(const TiXmlElement& root) {
    if (root.ValueStr() != kRoot && isMisspelt(root.ValueStr(), kRoot)) {
        m_findings.add(Severity::Warning, "misspelt-root", root,
                       "the root element " + inShortQuotes(root.Value()) +
                           " is read, but its name is '" + kRoot + "'");
    }
    addUnreadText(root, m_findings);
    checkChildren(root);
    if (root.FirstChildElement(kMapping) == nullptr) {
        m_findings.add(
            Severity::Error, "no-mapping", root,
            "the file maps nothing: its root element " + inShortQuotes(root.Value()) +
                " holds no 'mapping'" +
                (root.ValueStr() == kMapping ? ", it is one: put it into a root element" : ""));
    }
}

/// The depth is bounded: the reader gives no deeper document to the parser.
void MappingFileChecker::checkChildren(const TiXmlElement& element) {
    const bool isRoot = element.Parent()->ToDocument() != nullptr;
    for (const TiXmlElement* child = element.FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        const bool isMapping = child->ValueStr() == kMapping;
        if (isMapping && isRoot) {
            checkMapping(*child);
        } else if (isMapping) {
            m_findings.add(Severity::Error, "nested-mapping", *child,
                           "a 'mapping' inside " + inShortQuotes(element.Value()) +
                               " is not read: only children of the root element are");
        } else if (isRoot || element.ValueStr() == kMapping) {
            checkUnread(*child);
        }
        checkChildren(*child);
    }
}

void MappingFileChecker::checkMapping(const TiXmlElement& element) {
    checkNumber(element, kFaultId);
    checkNumber(element, kMinorType);
    if (const TiXmlAttribute* const list = findAttribute(element, kMoClass)) {
        checkClassList(*list);
    } else {
        m_findings.add(Severity::Warning, "missing-class", element,
                       std::string("no '") + kMoClass +
                           "': only an object without a class gets this alarm");
    }
    addUnknownAttributes(element, {kFaultId, kMinorType, kMoClass}, m_findings);
}

void MappingFileChecker::checkNumber(const TiXmlElement& element, const char* name) {
    int number = 0;
    const int outcome = element.QueryIntAttribute(name, &number); // as the reader asks
    if (outcome == TIXML_NO_ATTRIBUTE) {
        m_findings.add(Severity::Error, "missing-attribute", element,
                       std::string("no '") + name + "': the element is skipped");
        return;
    }
    const TiXmlAttribute& attribute = *findAttribute(element, name);
    if (outcome != TIXML_SUCCESS) {
        m_findings.add(Severity::Error, "not-an-integer", attribute,
                       written(attribute) + " is no integer: the element is skipped" +
                           meantNumber(attribute.Value(), name == kMinorType));
        return;
    }
    errno = 0;
    char* rest = nullptr;
    const long long meant = std::strtoll(attribute.Value(), &rest, 10);
    const std::string stored = std::to_string(static_cast<std::uint32_t>(number));
    using Signed = std::numeric_limits<std::int32_t>;
    const bool isBeyond = errno == ERANGE || meant < Signed::min() ||
                          meant > std::numeric_limits<std::uint32_t>::max();
    if (isBeyond || meant > Signed::max()) {
        m_findings.add(isBeyond ? Severity::Error : Severity::Warning, "beyond-32-bits", attribute,
                       written(attribute) + " does not fit 32 bits" +
                           (isBeyond ? ": it is read as " + stored
                                     : " with a sign: write " +
                                           std::to_string(static_cast<std::int32_t>(meant))));
    }
    if (rest[std::strspn(rest, " \t\n\v\f\r")] != '\0') {
        m_findings.add(Severity::Error, "text-after-number", attribute,
                       written(attribute) + " is read as " + stored + ": what follows is ignored" +
                           meantNumber(attribute.Value(), name == kMinorType));
    } else if (name == kMinorType && dolq::majorIdOf(static_cast<std::uint32_t>(number)) == 0) {
        m_findings.add(Severity::Warning, "no-major-id", attribute,
                       written(attribute) + " is the alarm 0/" + stored +
                           ": a minor type is the major id times 65536 plus the minor id; for 2/" +
                           stored + " write \"" + std::to_string(131072 + number) + '"');
    }
}

void MappingFileChecker::checkClassList(const TiXmlAttribute& list) {
    std::string classes = list.Value();
    classes.erase(std::remove(classes.begin(), classes.end(), ' '), classes.end());
    if (classes.empty()) {
        m_findings.add(Severity::Error, "no-class", list,
                       written(list) + " holds no class: the element maps nothing");
        return;
    }
    if (hasInnerBlank(list.Value())) {
        m_findings.add(Severity::Warning, "blank-in-class", list,
                       written(list) + " is read without its blanks, as " + inShortQuotes(classes) +
                           ": is a comma missing?");
    }
    if (classes.back() == ',') {
        m_findings.add(Severity::Warning, "final-comma", list,
                       written(list) + " has no class behind its last comma");
    }
}

void MappingFileChecker::checkUnread(const TiXmlElement& element) {
    const bool hasIds =
        element.Attribute(kFaultId) != nullptr || element.Attribute(kMinorType) != nullptr;
    const bool isMapping = hasIds || isMisspelt(element.ValueStr(), kMapping);
    m_findings.add(isMapping ? Severity::Error : Severity::Warning, "unknown-element", element,
                   "the element " + inShortQuotes(element.Value()) + " is not read" +
                       (isMapping ? std::string(": did you mean '") + kMapping + "'?" : ""));
}

void MappingFileChecker::onMappingWithoutClass(const TiXmlElement& element, std::uint32_t faultId,
                                               std::uint32_t minorType) {
    remember(element, faultId, minorType, {});
}

void MappingFileChecker::onMapping(const TiXmlElement& element, std::uint32_t faultId,
                                   std::uint32_t minorType, const std::string& moClass) {
    checkClass(*findAttribute(element, kMoClass), moClass);
    remember(element, faultId, minorType, moClass);
}

void MappingFileChecker::checkClass(const TiXmlAttribute& list, const std::string& moClass) {
    if (moClass.empty()) {
        m_findings.add(Severity::Warning, "empty-class", list,
                       "an empty piece of the class list is an entry without a class");
        return;
    }
    const std::string theClass = "the class " + inShortQuotes(moClass);
    const auto [plain, visible, first] = plainText(moClass);
    for (const auto& [characters, severity, rule, reason] : kOddCharacters) {
        if (plain.find_first_of(characters) != plain.npos) {
            m_findings.add(severity, rule, list, theClass + reason);
        }
    }
    if (!first.empty()) {
        const bool isInvisible = visible == plain;
        m_findings.add(Severity::Error, isInvisible ? "invisible-in-class" : "look-alike", list,
                       theClass + " holds " + first +
                           (isInvisible ? ", which cannot be seen but is part of it"
                                        : ", which looks like another character") +
                           ": write " + inShortQuotes(plain));
    }
    std::string lowerCase = moClass;
    std::transform(lowerCase.begin(), lowerCase.end(), lowerCase.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const FilePosition position = positionOf(m_findings.file(), list);
    const auto& [spelling, earlier] =
        m_spellings.try_emplace(std::move(lowerCase), moClass, position).first->second;
    if (spelling != moClass) {
        m_findings.add(Severity::Warning, "class-case", list,
                       theClass + " is written " + inShortQuotes(spelling) + " at " +
                           positionText(earlier) + ": letter case makes them two classes");
    }
}

void MappingFileChecker::remember(const TiXmlElement& element, std::uint32_t faultId,
                                  std::uint32_t minorType, const std::string& moClass) {
    const Earlier mapping{minorType, positionOf(m_findings.file(), element)};
    const auto [entry, isNew] = m_mappings.try_emplace({faultId, moClass}, mapping);
    const auto [earlierType, earlier] = std::exchange(entry->second, mapping);
    const bool sameFile = earlier.file == mapping.position.file;
    const bool sameElement = sameFile && earlier.line == mapping.position.line &&
                             earlier.column == mapping.position.column;
    if (isNew || (moClass.empty() && sameElement)) {
        return; // empty pieces of one list are told already
    }
    const bool sameAlarm = earlierType == minorType;
    m_findings.add({mapping.position, sameFile && !sameAlarm ? Severity::Error : Severity::Warning,
                    sameFile ? "duplicate" : "override",
                    "fault " + std::to_string(faultId) +
                        (moClass.empty() ? " without a class" : " on " + inShortQuotes(moClass)) +
                        (sameAlarm ? " is mapped to " + minorTypeText(minorType) + " already at "
                                   : " gets " + minorTypeText(minorType) + " in place of " +
                                         minorTypeText(earlierType) + " at ") +
                        positionText(earlier),
                    earlier});
}

} // namespace dolqctl
