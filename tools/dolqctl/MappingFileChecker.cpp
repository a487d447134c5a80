#include "MappingFileChecker.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <tinyxml.h>

#include "Invisible.h"
#include "Output.h"
#include "Spelling.h"
#include "Unreadable.h"
#include "xmlconf/MappingFileFormat.h"
#include "xmlconf/dolqXmlConfigurator.h"

namespace dolqctl {

namespace {

using dolq::xmlconf::kFaultId;
using dolq::xmlconf::kMapping;
using dolq::xmlconf::kMinorType;
using dolq::xmlconf::kMoClass;

/// What a notification object's class loses, apart from the blank, which the file's class loses
/// too.
constexpr char kOtherWhiteSpace[] = "\t\n\v\f\r";

const TiXmlAttribute* findAttribute(const TiXmlElement& element, const char* name) {
    const TiXmlAttribute* attribute = element.FirstAttribute();
    while (attribute != nullptr && std::strcmp(attribute->Name(), name) != 0) {
        attribute = attribute->Next();
    }
    return attribute;
}

std::string written(const TiXmlAttribute& attribute) {
    return std::string(attribute.Name()) + '=' + inQuotes(attribute.Value());
}

std::string withoutBlanks(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    return text;
}

/// Whether a blank stands between two other characters of one class.
bool hasInnerBlank(const std::string& list) {
    for (std::size_t at = list.find(' '); at != list.npos; at = list.find(' ', at + 1)) {
        const std::size_t before = list.find_last_not_of(' ', at);
        const std::size_t behind = list.find_first_not_of(' ', at);
        if (before != list.npos && behind != list.npos && list[before] != ',' &&
            list[behind] != ',') {
            return true;
        }
    }
    return false;
}

std::string described(std::uint32_t faultId, const std::string& moClass) {
    return "fault " + std::to_string(faultId) +
           (moClass.empty() ? " without a class" : " on " + inQuotes(moClass));
}

} // namespace

void MappingFileChecker::check(const std::string& path) {
    m_path = path;
    const std::size_t before = m_findings.size();
    dolq::xmlconf::MappingXmlConfigurator().readMappingFile(path, *this);
    std::stable_sort(m_findings.begin() + static_cast<std::ptrdiff_t>(before), m_findings.end(),
                     [](const Finding& one, const Finding& other) {
                         return std::pair(one.place.line, one.place.column) <
                                std::pair(other.place.line, other.place.column);
                     });
}

void MappingFileChecker::onNotLoaded(const TiXmlDocument& document) {
    Unreadable unreadable = whyNotLoaded(m_path, document);
    error(unreadable.place, "not-loaded", "the file is not read: " + unreadable.reason);
}

void MappingFileChecker::onNoRoot() {
    error({m_path}, "not-loaded", "the file is not read: " + whyNoRoot(m_path).reason);
}

void MappingFileChecker::onRoot(const TiXmlElement& root) {
    for (const TiXmlElement* element = root.FirstChildElement(); element != nullptr;
         element = element->NextSiblingElement()) {
        if (element->ValueStr() == kMapping) {
            checkMapping(*element);
        } else {
            checkUnread(*element);
        }
        checkNested(*element);
    }
    if (root.FirstChildElement(kMapping) == nullptr) {
        warning(placeOf(m_path, root), "no-mapping", "the root element holds no 'mapping' element");
    }
    for (const TiXmlElement* other = root.NextSiblingElement(); other != nullptr;
         other = other->NextSiblingElement()) {
        error(placeOf(m_path, *other), "second-root",
              "only the first root element is read, not this " + inQuotes(other->Value()));
    }
}

void MappingFileChecker::checkMapping(const TiXmlElement& element) {
    checkNumber(element, kFaultId);
    checkNumber(element, kMinorType);
    if (const TiXmlAttribute* const list = findAttribute(element, kMoClass)) {
        checkClassList(*list);
    } else {
        warning(placeOf(m_path, element), "missing-class",
                std::string("no '") + kMoClass +
                    "': only an object without a class gets this alarm");
    }
    for (const TiXmlAttribute* attribute = element.FirstAttribute(); attribute != nullptr;
         attribute = attribute->Next()) {
        const std::string name = attribute->Name();
        if (name == kFaultId || name == kMinorType || name == kMoClass) {
            continue;
        }
        const Place place = placeOf(m_path, *attribute);
        const std::string ignored = "the attribute " + inQuotes(name) + " is ignored";
        const char* const known[] = {kFaultId, kMinorType, kMoClass};
        const auto* const meant =
            std::find_if(std::begin(known), std::end(known),
                         [&](const char* candidate) { return isMisspelt(name, candidate); });
        if (meant == std::end(known)) {
            warning(place, "unknown-attribute", ignored);
        } else {
            error(place, "unknown-attribute", ignored + ": did you mean '" + *meant + "'?");
        }
    }
}

void MappingFileChecker::checkNumber(const TiXmlElement& element, const char* name) {
    int number = 0;
    const int outcome = element.QueryIntAttribute(name, &number); // as the reader asks
    if (outcome == TIXML_NO_ATTRIBUTE) {
        error(placeOf(m_path, element), "missing-attribute",
              std::string("no '") + name + "': the element is skipped");
        return;
    }
    const TiXmlAttribute& attribute = *findAttribute(element, name);
    const Place place = placeOf(m_path, attribute);
    if (outcome != TIXML_SUCCESS) {
        error(place, "not-an-integer",
              written(attribute) + " is no integer: the element is skipped");
        return;
    }
    errno = 0;
    char* rest = nullptr;
    const long long meant = std::strtoll(attribute.Value(), &rest, 10);
    const std::string stored = std::to_string(static_cast<std::uint32_t>(number));
    using Signed = std::numeric_limits<std::int32_t>;
    if (errno == ERANGE || meant < Signed::min() ||
        meant > std::numeric_limits<std::uint32_t>::max()) {
        error(place, "beyond-32-bits",
              written(attribute) + " does not fit 32 bits: it is read as " + stored);
    } else if (meant > Signed::max()) {
        warning(place, "beyond-32-bits",
                written(attribute) + " does not fit 32 bits with a sign: what is read, here " +
                    stored + ", is up to the C library; write " +
                    std::to_string(static_cast<std::int32_t>(meant)));
    }
    if (rest[std::strspn(rest, " \t\n\v\f\r")] != '\0') {
        error(place, "text-after-number",
              written(attribute) + " is read as " + stored + ": what follows is ignored");
    }
}

void MappingFileChecker::checkClassList(const TiXmlAttribute& list) {
    const Place place = placeOf(m_path, list);
    const std::string classes = withoutBlanks(list.Value());
    if (classes.empty()) {
        error(place, "no-class", written(list) + " holds no class: the element maps nothing");
        return;
    }
    if (hasInnerBlank(list.Value())) {
        warning(place, "blank-in-class",
                written(list) + " is read without its blanks, as " + inQuotes(classes));
    }
    if (classes.back() == ',') {
        warning(place, "final-comma", written(list) + " has no class behind its last comma");
    }
}

void MappingFileChecker::checkUnread(const TiXmlElement& element) {
    const Place place = placeOf(m_path, element);
    const std::string ignored = "the element " + inQuotes(element.Value()) + " is not read";
    const bool hasIds =
        element.Attribute(kFaultId) != nullptr || element.Attribute(kMinorType) != nullptr;
    if (hasIds || isMisspelt(element.ValueStr(), kMapping)) {
        error(place, "unknown-element", ignored + ": did you mean '" + kMapping + "'?");
    } else {
        warning(place, "unknown-element", ignored);
    }
}

/// The depth is bounded: the reader gives no deeper document to the parser.
void MappingFileChecker::checkNested(const TiXmlElement& element) {
    for (const TiXmlElement* child = element.FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        if (child->ValueStr() == kMapping) {
            error(placeOf(m_path, *child), "nested-mapping",
                  "a 'mapping' inside " + inQuotes(element.Value()) +
                      " is not read: only children of the root element are");
        } else if (element.ValueStr() == kMapping) {
            checkUnread(*child);
        }
        checkNested(*child);
    }
}

void MappingFileChecker::onMappingWithoutClass(const TiXmlElement& element, std::uint32_t faultId,
                                               std::uint32_t minorType) {
    remember({faultId, {}, minorType, placeOf(m_path, element)});
}

void MappingFileChecker::onMapping(const TiXmlElement& element, std::uint32_t faultId,
                                   std::uint32_t minorType, const std::string& moClass) {
    checkClass(element, moClass);
    remember({faultId, moClass, minorType, placeOf(m_path, element)});
}

void MappingFileChecker::checkClass(const TiXmlElement& element, const std::string& moClass) {
    const Place place = placeOf(m_path, *findAttribute(element, kMoClass));
    if (moClass.empty()) {
        warning(place, "empty-class",
                "an empty piece of the class list is an entry without a class");
    } else if (moClass.find_first_of(kOtherWhiteSpace) != moClass.npos) {
        error(place, "class-never-matches",
              "the class " + inQuotes(moClass) +
                  " never matches: only blanks are removed from it, but all white space from the "
                  "notification object");
    } else if (moClass.find('=') != moClass.npos) {
        error(place, "class-never-matches",
              "the class " + inQuotes(moClass) +
                  " never matches: a notification object's class ends before its '='");
    }
    for (const Invisible& character : kInvisible) {
        if (findInvisible(moClass, character) != moClass.npos) {
            warning(place, "invisible-in-class",
                    "the class " + inQuotes(moClass) + " holds " + character.name +
                        ", which looks like a blank or like nothing but is not removed");
        }
    }
}

void MappingFileChecker::remember(Mapping mapping) {
    const auto [entry, isNew] = m_mappings.try_emplace({mapping.faultId, mapping.moClass}, mapping);
    if (isNew) {
        return;
    }
    const Mapping& earlier = entry->second;
    const bool sameFile = earlier.place.file == mapping.place.file;
    const bool sameAlarm = earlier.minorType == mapping.minorType;
    const std::string message =
        described(mapping.faultId, mapping.moClass) +
        (sameAlarm ? " is mapped to " + std::to_string(mapping.minorType) + " already at "
                   : " gets " + std::to_string(mapping.minorType) + " in place of " +
                         std::to_string(earlier.minorType) + " at ") +
        text(earlier.place);
    m_findings.push_back({mapping.place,
                          sameFile && !sameAlarm ? Severity::Error : Severity::Warning,
                          sameFile ? "duplicate" : "override", message, earlier.place});
    entry->second = std::move(mapping);
}

void MappingFileChecker::error(const Place& place, const char* rule, std::string message) {
    m_findings.push_back({place, Severity::Error, rule, std::move(message), std::nullopt});
}

void MappingFileChecker::warning(const Place& place, const char* rule, std::string message) {
    m_findings.push_back({place, Severity::Warning, rule, std::move(message), std::nullopt});
}

} // namespace dolqctl
