#include "check/MappingFileChecker.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <tuple>

#include <sys/mman.h>

#include "Output.h"
#include "adapter/MinorType.h"
#include "common/RegularFile.h"
#include "xmlconf/MappingFileFormat.h"
#include "xmlconf/MappingFileReader.h"

namespace dolqctl {

namespace {

using dolq::xmlconf::kFaultId;
using dolq::xmlconf::kMapping;
using dolq::xmlconf::kMinorType;
using dolq::xmlconf::kMoClass;

/// The path of an unnamed file that holds the standard input: the reader takes regular files only.
std::string keptStandardInput() {
    std::string path = "/proc/self/fd/" + std::to_string(memfd_create("", MFD_CLOEXEC));
    std::ofstream(path, std::ios::binary) << std::cin.rdbuf();
    return path;
}

/// Whether a blank stands between two other characters of one class.
bool hasInnerBlank(const std::string& list) {
    for (std::size_t next = 0, at = list.find(' '); at != list.npos; at = list.find(' ', next)) {
        next = std::min(list.find_first_not_of(' ', at), list.size());
        if (at > 0 && list[at - 1] != ',' && next < list.size() && list[next] != ',') {
            return true;
        }
    }
    return false;
}

} // namespace

const TiXmlAttribute* findAttribute(const TiXmlElement& element, const char* name) {
    const TiXmlAttribute* attribute = element.FirstAttribute();
    while (attribute != nullptr && std::strcmp(attribute->Name(), name) != 0) {
        attribute = attribute->Next();
    }
    return attribute;
}

std::string textOf(const TiXmlElement& element, const char* name) {
    const char* const value = element.Attribute(name);
    return value != nullptr ? value : "";
}

void MappingFileChecker::read(const std::string& name, std::vector<LoadModuleFile>* manifestFiles) {
    std::vector<Finding>& findings = m_inventory.findings;
    const auto before = static_cast<std::ptrdiff_t>(findings.size());
    const std::string path = name == "-" ? keptStandardInput() : name;
    std::string text;
    const int error = common::readRegularFile(path, text.max_size(), text);
    const char* const why = error == EINVAL ? "it is no regular file" : std::strerror(error);
    m_problems = error == 0 ? findXmlProblems(name, text)
                            : std::vector<Finding>{{{name}, Rule::NotWellFormed, {why}}};
    m_file = name;
    m_manifestFiles = manifestFiles;
    m_mapsNothing = true;
    const bool isRead = dolq::xmlconf::readMappingFile(path, *this);
    if (isRead && m_mapsNothing) {
        findings.push_back({{name}, Rule::NoMapping, {}});
    }
    findings.insert(findings.end(), m_problems.begin(), m_problems.end());
    std::stable_sort(findings.begin() + before, findings.end(), [](const auto& a, const auto& b) {
        return std::tie(a.position.line, a.position.column) <
               std::tie(b.position.line, b.position.column);
    });
}

FilePosition MappingFileChecker::positionOf(const TiXmlBase& part) const {
    return {m_file, part.Row(), part.Column()};
}

/// Adds what is wrong at the `place` of the element.
void MappingFileChecker::add(Rule rule, const TiXmlElement& element, const TiXmlBase& place,
                             const std::vector<std::string>& texts) {
    const FilePosition position = positionOf(element);
    if (m_element == nullptr || positionText(m_element->position) != positionText(position)) {
        m_element = std::make_shared<const MappingElement>(
            MappingElement{position, textOf(element, kFaultId), textOf(element, kMoClass)});
    }
    m_inventory.findings.push_back({positionOf(place), rule, texts});
    m_inventory.findings.back().element = m_element;
}

/// Adds text, and elements of another name than `read`, for which the file may be refused. The
/// depth is bounded: the reader gives no deeper document to the parser.
void MappingFileChecker::addUnread(const TiXmlElement& element, const std::string& read,
                                   bool isRefused) {
    for (const auto* node = element.FirstChild(); node != nullptr; node = node->NextSibling()) {
        const TiXmlElement* const child = node->ToElement();
        if (node->ToText() != nullptr) {
            const bool isLost = node->ValueStr().find('=') != std::string::npos;
            add(isLost ? Rule::LostMapping : Rule::Unread, element, *node,
                {inQuotes(node->ValueStr())});
        } else if (child != nullptr && child->ValueStr() != read) {
            const bool isLost = child->Attribute(kFaultId) != nullptr || child->Attribute("path");
            add(isRefused ? Rule::NotLoaded
                : isLost  ? Rule::LostMapping
                          : Rule::Unread,
                *child, *child, {'<' + child->ValueStr() + '>'});
            addUnread(*child);
        }
    }
}

void MappingFileChecker::addUnreadAttributes(const TiXmlElement& element,
                                             const std::vector<std::string>& known) {
    for (const auto* each = element.FirstAttribute(); each != nullptr; each = each->Next()) {
        const std::string name = each->Name();
        const auto meant = std::find_if(known.begin(), known.end(), [&](const auto& other) {
            return element.Attribute(other) == nullptr &&
                   (isMisspelt(name, other) || other.find(name) != other.npos);
        });
        if (meant != known.end()) {
            add(Rule::LostAttribute, element, *each, {name, *meant});
        } else if (std::find(known.begin(), known.end(), name) == known.end()) {
            add(Rule::UnreadAttribute, element, *each, {name});
        }
    }
}

void MappingFileChecker::onNotLoaded(const TiXmlDocument& document) {
    FilePosition position{m_file, document.ErrorRow(), document.ErrorCol()};
    std::string why = document.Error()
                          ? document.ErrorDesc()
                          : "it has no element, too many levels, or too many attributes";
    if (!m_problems.empty()) {
        position = m_problems.back().position;
        why = m_problems.back().message;
        m_problems.pop_back();
    }
    m_inventory.findings.push_back({position, Rule::NotLoaded, {why}});
}

void MappingFileChecker::onRoot(const TiXmlElement& root) {
    const TiXmlElement* const first = root.FirstChildElement();
    if (m_manifestFiles != nullptr && isMisspelt(root.ValueStr(), "loadModules") &&
        (first == nullptr || first->ValueStr() != kMapping)) {
        m_mapsNothing = false;
        checkManifest(root);
    } else {
        addUnread(root, kMapping);
    }
}

void MappingFileChecker::checkMapping(const TiXmlElement& element) {
    addUnread(element);
    addUnreadAttributes(element, {kFaultId, kMinorType, kMoClass});
    const std::optional<std::uint32_t> faultId = checkNumber(element, kFaultId);
    const std::optional<std::uint32_t> minorType = checkNumber(element, kMinorType);
    if (minorType && (dolq::majorIdOf(*minorType) == 0 || dolq::minorIdOf(*minorType) == 0)) {
        const bool isFaultId = dolq::majorIdOf(*minorType) == 0 && faultId.value_or(0) > 0xFFFF;
        add(isFaultId ? Rule::SwappedIds : Rule::ZeroId, element,
            *findAttribute(element, kMinorType),
            {std::to_string(*minorType), alarmText(*minorType)});
    }
    const TiXmlAttribute* const list = findAttribute(element, kMoClass);
    if (list == nullptr) {
        return;
    }
    if (list->ValueStr().find_first_not_of(' ') == std::string::npos) {
        add(Rule::NoClass, element, *list, {list->ValueStr()});
    } else if (hasInnerBlank(list->ValueStr())) {
        add(Rule::BlankInClass, element, *list, {list->ValueStr()});
    }
}

/// Returns the number if it is what is written.
std::optional<std::uint32_t> MappingFileChecker::checkNumber(const TiXmlElement& element,
                                                             const char* name) {
    int number = 0;
    if (element.QueryIntAttribute(name, &number) != TIXML_SUCCESS) { // as the reader asks
        add(Rule::NoNumber, element, element, {name});
        return std::nullopt;
    }
    const TiXmlAttribute& attribute = *findAttribute(element, name);
    const std::string value = attribute.Value();
    const auto stored = static_cast<std::uint32_t>(number);
    char* rest = nullptr;
    const long long meant = std::strtoll(value.c_str(), &rest, 10);
    if (rest[std::strspn(rest, " \t\n\v\f\r")] != '\0' || (meant != number && meant != stored)) {
        add(Rule::OtherNumber, element, attribute, {name, value, std::to_string(stored)});
        return std::nullopt;
    }
    if (number < 0) {
        add(Rule::NegativeNumber, element, attribute,
            {name, value, std::to_string(stored), std::to_string(number)});
    }
    return stored;
}

void MappingFileChecker::onMappingWithoutClass(const TiXmlElement& element, std::uint32_t faultId,
                                               std::uint32_t minorType) {
    checkMapping(element);
    onMapping(element, faultId, minorType, {});
}

void MappingFileChecker::onMapping(const TiXmlElement& element, std::uint32_t faultId,
                                   std::uint32_t minorType, const std::string& moClass) {
    m_mapsNothing = false;
    const FilePosition position = positionOf(element);
    std::vector<Mapping>& history = m_inventory.mappings[{faultId, moClass}];
    if (!history.empty()) {
        const auto& [earlier, place] = history.back();
        if (positionText(place) == positionText(position)) {
            return; // again in one list
        }
        const bool isLost = place.file == m_file && earlier != minorType;
        add(isLost ? Rule::Duplicate : Rule::Override, element, element,
            {std::to_string(faultId), moClass, alarmText(minorType), alarmText(earlier),
             positionText(place)});
    }
    history.push_back({minorType, position});
    if (moClass.empty()) {
        add(Rule::MissingClass, element, element);
        return;
    }
    const TiXmlAttribute& list = *findAttribute(element, kMoClass);
    if (moClass.find_first_of("\t\n\v\f\r=;|/\\+*?\"'`<>()[]{}^$!&") != std::string::npos) {
        add(Rule::ClassCharacter, element, list, {moClass});
    }
    if (const Look look = lookOf(moClass); !look.beyondAscii.empty()) {
        add(look.misleads ? Rule::Misleading : Rule::BeyondAscii, element, list,
            {moClass, look.beyondAscii});
    }
}

Inventory readMappingFiles(const std::vector<std::string>& paths) {
    MappingFileChecker checker;
    for (const std::string& path : paths) {
        checker.read(path);
    }
    return checker.inventory();
}

} // namespace dolqctl
