#include "mappings/MappingFileChecker.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <regex>
#include <sstream>

#include <tinyxml.h>

#include "Output.h"
#include "adapter/MinorType.h"
#include "xmlconf/MappingFileFormat.h"
#include "xmlconf/MappingFileReader.h"

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
} kOddCharacters[] = {{"\t\n\v\f\r", Severity::Error, "class-never-matches",
                       " never matches: all white space is removed from a notification object"},
                      {"=", Severity::Error, "class-never-matches",
                       " never matches: a notification object's class ends before its '='"},
                      {";|/\\+", Severity::Error, "class-character",
                       " is a single class: write a comma if two are meant"},
                      {"*?", Severity::Error, "class-character",
                       " stands for itself only, there are no patterns: name each class"},
                      {"\"'`<>", Severity::Error, "class-character",
                       " holds a quotation mark, or a part of a tag: is one missing, or too many?"},
                      {"!#$%&()@[]^{}~:", Severity::Warning, "class-character",
                       " holds a character that classes hardly have: is it meant?"}};

/// Whether a blank stands between two other characters of one class.
bool hasInnerBlank(const std::string& list) {
    std::istringstream classes(list);
    for (std::string moClass; std::getline(classes, moClass, ',');) {
        const std::size_t first = moClass.find_first_not_of(' ');
        if (moClass.find(' ', first) < moClass.find_last_not_of(' ') && first != moClass.npos) {
            return true;
        }
    }
    return false;
}

/// "131073 (2/1)".
std::string minorTypeText(std::uint32_t minorType) {
    return std::to_string(minorType) + " (" + alarmText(minorType) + ')';
}

/// What to write in place of a number that is not read as it is meant: "; write "7"", or nothing.
std::string meantNumber(const std::string& value, bool isMinorType) {
    std::string plain = plainText(value).letters; // of "131 073", "“131073”"
    plain.erase(
        std::remove_if(plain.begin(), plain.end(), [](char c) { return c == '"' || c == '\''; }),
        plain.end());
    const bool isHexadecimal = plain.find_first_of("xX") == 1;
    char* end = nullptr;
    const long long number = std::strtoll(plain.c_str(), &end, isHexadecimal ? 16 : 10);
    if (*end == '\0' && !plain.empty() && (isHexadecimal || plain != value)) {
        return "; write \"" + std::to_string(static_cast<std::int32_t>(number)) + '"';
    }
    static const std::regex alarm("([0-9]{1,5})[/:-]([0-9]{1,5})");
    std::smatch ids;
    if (isMinorType && std::regex_match(plain, ids, alarm) && std::stoul(ids[1]) <= 0xFFFF &&
        std::stoul(ids[2]) <= 0xFFFF) {
        const auto meant = static_cast<std::int32_t>(std::stoul(ids[1]) << 16 | std::stoul(ids[2]));
        return "; for the alarm " + ids.str(1) + '/' + ids.str(2) + " write \"" +
               std::to_string(meant) + '"';
    }
    return {};
}

} // namespace

void MappingFileChecker::read(const std::string& path, const std::string& name, bool orManifest) {
    m_findings = Findings(name, m_most);
    m_mapsNothing = true;
    XmlText& text = m_text.emplace(path, m_findings);
    if (orManifest && text.isManifest()) {
        checkManifest(path, text, m_findings);
    } else if (dolq::xmlconf::readMappingFile(path, *this)) {
        text.addErrors();
        if (m_mapsNothing) {
            m_findings.add({{name},
                            Severity::Error,
                            "no-mapping",
                            "the file maps nothing: it has no 'mapping' that is used"});
        }
    }
    std::vector<Finding> findings = m_findings.take();
    m_inventory.findings.insert(m_inventory.findings.end(),
                                std::make_move_iterator(findings.begin()),
                                std::make_move_iterator(findings.end()));
}

void MappingFileChecker::onNotLoaded(const TiXmlDocument& document) {
    m_text->addNotLoaded(document, "too many levels of elements, or attributes of one");
}

void MappingFileChecker::onNoRoot() {
    m_text->addNotLoaded({}, "no element is found: a document type may declare nothing");
}

void MappingFileChecker::onRoot(const TiXmlElement& root) {
    if (root.ValueStr() != kRoot) {
        m_findings.add(Severity::Warning, "root-name", root,
                       "the root element " + inShortQuotes(root.Value()) +
                           " is read, but its name is '" + kRoot + "'");
    }
    checkChildren(root);
}

/// The depth is bounded: the reader gives no deeper document to the parser.
void MappingFileChecker::checkChildren(const TiXmlElement& element) {
    const bool isRoot = element.Parent()->ToDocument() != nullptr;
    addUnreadText(element, m_findings);
    for (const TiXmlElement* child = element.FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        const bool isMapping = child->ValueStr() == kMapping;
        if (isMapping && isRoot) {
            checkMapping(*child);
        } else {
            const bool isMeant = isMapping || child->Attribute(kFaultId) != nullptr ||
                                 child->Attribute(kMinorType) != nullptr ||
                                 isMisspelt(child->ValueStr(), kMapping);
            m_findings.add(isMeant ? Severity::Error : Severity::Warning, "unknown-element", *child,
                           "the element " + inShortQuotes(child->Value()) + " is not read" +
                               (isMapping ? ": only those directly in the root element are"
                                : isMeant ? std::string(": did you mean '") + kMapping + "'?"
                                          : ""));
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
    if (errno == ERANGE || meant != static_cast<std::int32_t>(meant)) {
        const bool isOther = errno == ERANGE || std::to_string(meant) != stored;
        m_findings.add(isOther ? Severity::Error : Severity::Warning, "beyond-32-bits", attribute,
                       written(attribute) + " does not fit 32 bits with a sign: " +
                           (isOther ? "it is read as " + stored
                                    : "write " + std::to_string(static_cast<std::int32_t>(meant))));
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
}

void MappingFileChecker::onMappingWithoutClass(const TiXmlElement& element, std::uint32_t faultId,
                                               std::uint32_t minorType) {
    record({faultId, {}, minorType, positionOf(m_findings.file(), element)});
}

void MappingFileChecker::onMapping(const TiXmlElement& element, std::uint32_t faultId,
                                   std::uint32_t minorType, const std::string& moClass) {
    if (record({faultId, moClass, minorType, positionOf(m_findings.file(), element)})) {
        checkClass(*findAttribute(element, kMoClass), moClass);
    }
}

/// False for one that the same element has given already.
bool MappingFileChecker::record(const Mapping& mapping) {
    m_mapsNothing = false;
    std::vector<Mapping>& history = m_inventory.mappings[{mapping.faultId, mapping.moClass}];
    const FilePosition position = mapping.position;
    const bool isNew = history.empty();
    const FilePosition earlier = isNew ? FilePosition() : history.back().position;
    const bool sameFile = earlier.file == position.file;
    const bool sameElement =
        sameFile && earlier.line == position.line && earlier.column == position.column;
    if (!isNew && !(sameElement && mapping.moClass.empty())) {
        const std::uint32_t other = history.back().minorType;
        const std::string text = minorTypeText(mapping.minorType);
        const bool isError = sameFile && other != mapping.minorType;
        m_findings.add({position, isError ? Severity::Error : Severity::Warning,
                        sameFile ? "duplicate" : "override",
                        "fault " + std::to_string(mapping.faultId) +
                            (mapping.moClass.empty() ? " without a class"
                                                     : " on " + inShortQuotes(mapping.moClass)) +
                            (other == mapping.minorType ? " is mapped to " + text + " already at "
                                                        : " gets " + text + " in place of " +
                                                              minorTypeText(other) + " at ") +
                            positionText(earlier),
                        earlier});
    }
    if (!sameElement) {
        history.push_back(mapping);
    }
    return !sameElement;
}

void MappingFileChecker::checkClass(const TiXmlAttribute& list, const std::string& moClass) {
    if (moClass.empty()) {
        m_findings.add(Severity::Warning, "empty-class", list,
                       "an empty piece of the class list is an entry without a class");
        return;
    }
    const std::string theClass = "the class " + inShortQuotes(moClass);
    const PlainText plain = plainText(moClass);
    for (const auto& [characters, severity, rule, reason] : kOddCharacters) {
        const bool mayBeEntity = *characters == ';' && m_text->hasErrorIn(list.Row()); // "A&nbsp;B"
        if (!mayBeEntity &&
            (moClass + plain.letters).find_first_of(characters) != std::string::npos) {
            m_findings.add(severity, rule, list, theClass + reason);
        }
    }
    if (!plain.isUtf8) {
        m_findings.add(Severity::Error, "not-utf-8", list,
                       theClass + " is not UTF-8: save the file as UTF-8, and begin it with "
                                  "<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
    } else if (!plain.odd.empty()) {
        m_findings.add(Severity::Error, plain.isInvisible ? "invisible-in-class" : "look-alike",
                       list,
                       theClass + " holds " + plain.odd +
                           (plain.isInvisible ? ", which cannot be seen but is part of it"
                                              : ", which looks like another character") +
                           ": write " + inShortQuotes(plain.letters));
    } else if (plain.letters == moClass) {
        const FilePosition position = positionOf(m_findings.file(), list);
        const auto entry = m_spellings.try_emplace(folded(moClass), moClass, position);
        const auto& [other, earlier] = entry.first->second;
        if (other != moClass) {
            m_findings.add(Severity::Warning, "class-case", list,
                           theClass + " is written " + inShortQuotes(other) + " at " +
                               positionText(earlier) + ": letter case makes them two classes");
        }
    }
}

std::string alarmText(std::uint32_t minorType) {
    return std::to_string(dolq::majorIdOf(minorType)) + '/' +
           std::to_string(dolq::minorIdOf(minorType));
}

Inventory readMappingFiles(const std::vector<std::string>& paths) {
    Inventory inventory;
    MappingFileChecker checker(inventory, 1000); // what is left out could be what is asked for
    for (const std::string& path : paths) {
        checker.read(path, path, false);
    }
    return inventory;
}

} // namespace dolqctl
