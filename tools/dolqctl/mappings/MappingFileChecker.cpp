#include "mappings/MappingFileChecker.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <numeric>

#include <tinyxml.h>

#include "Output.h"
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

/// A character that looks like a blank or like nothing, and stays in a class of a mapping file.
struct Invisible {
    const char* bytes;
    const char* name;
};

/// In UTF-8; the last one as the parser leaves it in a file without encoding.
constexpr Invisible kInvisible[] = {
    {"\u00A0", "U+00A0"}, {"\u2007", "U+2007"}, {"\u200B", "U+200B"},      {"\u202F", "U+202F"},
    {"\u3000", "U+3000"}, {"\uFEFF", "U+FEFF"}, {"\xA0", "the byte 0xA0"},
};

/// Where `character` is at or behind `from`, or `npos`. A byte behind one that is not ASCII is
/// taken for a part of that character.
std::size_t findInvisible(const std::string& text, const Invisible& character,
                          std::size_t from = 0) {
    const bool isByte = character.bytes[1] == '\0';
    std::size_t at = text.find(character.bytes, from);
    while (isByte && at != text.npos && at > 0 &&
           static_cast<unsigned char>(text[at - 1]) >= 0x80) {
        at = text.find(character.bytes, at + 1);
    }
    return at;
}

/// How many characters have to be changed, added or removed to make `to` of `from`.
std::size_t distance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t changed = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

/// Whether somebody who wrote `name` may have meant `meant` (in lower case, words joined by "_"):
/// at most two characters differ, letter case and hyphens not counted.
bool isMisspelt(std::string name, const char* meant) {
    constexpr std::size_t kMostMistakes = 2;
    if (name.size() > std::strlen(meant) + kMostMistakes) {
        return false;
    }
    std::transform(name.begin(), name.end(), name.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c == '-' ? '_' : c;
    });
    return distance(name, meant) <= kMostMistakes;
}

} // namespace

const char* severityText(Severity severity) {
    return severity == Severity::Error ? "error" : "warning";
}

void removeInvisible(std::string& text) {
    for (const Invisible& character : kInvisible) {
        for (std::size_t at = findInvisible(text, character); at != text.npos;
             at = findInvisible(text, character, at)) {
            text.erase(at, std::strlen(character.bytes));
        }
    }
}

std::size_t MappingFileChecker::count(Severity severity) const {
    return static_cast<std::size_t>(
        std::count_if(m_findings.begin(), m_findings.end(),
                      [&](const Finding& finding) { return finding.severity == severity; }));
}

void MappingFileChecker::check(const std::string& path) {
    m_path = path;
    const std::size_t before = m_findings.size();
    dolq::xmlconf::MappingXmlConfigurator().readMappingFile(path, *this);
    std::stable_sort(m_findings.begin() + static_cast<std::ptrdiff_t>(before), m_findings.end(),
                     [](const Finding& one, const Finding& other) {
                         return std::pair(one.position.line, one.position.column) <
                                std::pair(other.position.line, other.position.column);
                     });
}

void MappingFileChecker::onNotLoaded(const TiXmlDocument& document) {
    reportUnreadable(whyNotLoaded(m_path, document));
}

void MappingFileChecker::onNoRoot() { reportUnreadable(whyNoRoot(m_path)); }

void MappingFileChecker::reportUnreadable(UnreadableFile file) {
    m_findings.push_back({std::move(file.position),
                          Severity::Error,
                          "not-loaded",
                          "the file is not read: " + file.reason,
                          {}});
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
        warning(root, "no-mapping", "the root element holds no 'mapping' element");
    }
    for (const TiXmlElement* other = root.NextSiblingElement(); other != nullptr;
         other = other->NextSiblingElement()) {
        error(*other, "second-root",
              "only the first root element is read, not this " + inQuotes(other->Value()));
    }
}

void MappingFileChecker::checkMapping(const TiXmlElement& element) {
    checkNumber(element, kFaultId);
    checkNumber(element, kMinorType);
    if (const TiXmlAttribute* const list = findAttribute(element, kMoClass)) {
        checkClassList(*list);
    } else {
        warning(element, "missing-class",
                std::string("no '") + kMoClass +
                    "': only an object without a class gets this alarm");
    }
    for (const TiXmlAttribute* attribute = element.FirstAttribute(); attribute != nullptr;
         attribute = attribute->Next()) {
        const std::string name = attribute->Name();
        if (name == kFaultId || name == kMinorType || name == kMoClass) {
            continue;
        }
        const std::string ignored = "the attribute " + inQuotes(name) + " is ignored";
        const char* const known[] = {kFaultId, kMinorType, kMoClass};
        const auto* const meant =
            std::find_if(std::begin(known), std::end(known),
                         [&](const char* candidate) { return isMisspelt(name, candidate); });
        reportUnread(*attribute, "unknown-attribute", ignored,
                     meant != std::end(known) ? *meant : nullptr);
    }
}

void MappingFileChecker::checkNumber(const TiXmlElement& element, const char* name) {
    int number = 0;
    const int outcome = element.QueryIntAttribute(name, &number); // as the reader asks
    if (outcome == TIXML_NO_ATTRIBUTE) {
        error(element, "missing-attribute",
              std::string("no '") + name + "': the element is skipped");
        return;
    }
    const TiXmlAttribute& attribute = *findAttribute(element, name);
    if (outcome != TIXML_SUCCESS) {
        error(attribute, "not-an-integer",
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
        error(attribute, "beyond-32-bits",
              written(attribute) + " does not fit 32 bits: it is read as " + stored);
    } else if (meant > Signed::max()) {
        warning(attribute, "beyond-32-bits",
                written(attribute) + " does not fit 32 bits with a sign: what is read, here " +
                    stored + ", is up to the C library; write " +
                    std::to_string(static_cast<std::int32_t>(meant)));
    }
    if (rest[std::strspn(rest, " \t\n\v\f\r")] != '\0') {
        error(attribute, "text-after-number",
              written(attribute) + " is read as " + stored + ": what follows is ignored");
    }
}

void MappingFileChecker::checkClassList(const TiXmlAttribute& list) {
    const std::string classes = withoutBlanks(list.Value());
    if (classes.empty()) {
        error(list, "no-class", written(list) + " holds no class: the element maps nothing");
        return;
    }
    if (hasInnerBlank(list.Value())) {
        warning(list, "blank-in-class",
                written(list) + " is read without its blanks, as " + inQuotes(classes));
    }
    if (classes.back() == ',') {
        warning(list, "final-comma", written(list) + " has no class behind its last comma");
    }
}

void MappingFileChecker::checkUnread(const TiXmlElement& element) {
    const bool hasIds =
        element.Attribute(kFaultId) != nullptr || element.Attribute(kMinorType) != nullptr;
    reportUnread(element, "unknown-element",
                 "the element " + inQuotes(element.Value()) + " is not read",
                 hasIds || isMisspelt(element.ValueStr(), kMapping) ? kMapping : nullptr);
}

/// An error when something else is `meant`, for then a mapping is lost.
void MappingFileChecker::reportUnread(const TiXmlBase& part, const char* rule,
                                      const std::string& message, const char* meant) {
    if (meant == nullptr) {
        warning(part, rule, message);
    } else {
        error(part, rule, message + ": did you mean '" + meant + "'?");
    }
}

/// The depth is bounded: the reader gives no deeper document to the parser.
void MappingFileChecker::checkNested(const TiXmlElement& element) {
    for (const TiXmlElement* child = element.FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        if (child->ValueStr() == kMapping) {
            error(*child, "nested-mapping",
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
    remember({faultId, {}, minorType, positionOf(m_path, element)});
}

void MappingFileChecker::onMapping(const TiXmlElement& element, std::uint32_t faultId,
                                   std::uint32_t minorType, const std::string& moClass) {
    checkClass(element, moClass);
    remember({faultId, moClass, minorType, positionOf(m_path, element)});
}

void MappingFileChecker::checkClass(const TiXmlElement& element, const std::string& moClass) {
    const TiXmlAttribute& list = *findAttribute(element, kMoClass);
    if (moClass.empty()) {
        warning(list, "empty-class",
                "an empty piece of the class list is an entry without a class");
    } else if (moClass.find_first_of(kOtherWhiteSpace) != moClass.npos) {
        error(list, "class-never-matches",
              "the class " + inQuotes(moClass) +
                  " never matches: only blanks are removed from it, but all white space from the "
                  "notification object");
    } else if (moClass.find('=') != moClass.npos) {
        error(list, "class-never-matches",
              "the class " + inQuotes(moClass) +
                  " never matches: a notification object's class ends before its '='");
    }
    for (const Invisible& character : kInvisible) {
        if (findInvisible(moClass, character) != moClass.npos) {
            warning(list, "invisible-in-class",
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
    const bool sameFile = earlier.position.file == mapping.position.file;
    const bool sameAlarm = earlier.minorType == mapping.minorType;
    const std::string message =
        described(mapping.faultId, mapping.moClass) +
        (sameAlarm ? " is mapped to " + std::to_string(mapping.minorType) + " already at "
                   : " gets " + std::to_string(mapping.minorType) + " in place of " +
                         std::to_string(earlier.minorType) + " at ") +
        positionText(earlier.position);
    m_findings.push_back({mapping.position,
                          sameFile && !sameAlarm ? Severity::Error : Severity::Warning,
                          sameFile ? "duplicate" : "override", message, earlier.position});
    entry->second = std::move(mapping);
}

void MappingFileChecker::error(const TiXmlBase& part, const char* rule, std::string message) {
    m_findings.push_back({positionOf(m_path, part), Severity::Error, rule, std::move(message), {}});
}

void MappingFileChecker::warning(const TiXmlBase& part, const char* rule, std::string message) {
    m_findings.push_back(
        {positionOf(m_path, part), Severity::Warning, rule, std::move(message), {}});
}

} // namespace dolqctl
