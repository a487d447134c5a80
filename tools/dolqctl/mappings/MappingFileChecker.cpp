#include "mappings/MappingFileChecker.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <numeric>
#include <string_view>

#include <tinyxml.h>

#include "Output.h"
#include "common/RegularFile.h"
#include "mappings/ManifestChecker.h"
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

/// The letters and digits of `name`, in lower case.
std::string blurred(const std::string& name) {
    std::string letters;
    for (const char c : name) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
            letters += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
    }
    return letters;
}

constexpr char kWhiteSpace[] = " \t\n\v\f\r";

constexpr std::string_view kDelimiters{" \t\n\v\f\r/>\0", 9};

bool isNameStart(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) != 0 ||
           static_cast<unsigned char>(c) > 127 || c == '_';
}

bool isNameCharacter(char c) {
    return isNameStart(c) || std::isdigit(static_cast<unsigned char>(c)) != 0 || c == '-' ||
           c == '.' || c == ':';
}

/// What is passed over. TinyXML ends all but comments and CDATA sections at the first '>'.
constexpr struct {
    std::string_view begin;
    std::string_view end;
    const char* name;
} kPassedOver[] = {{"<!--", "-->", "comment"},
                   {"<![CDATA[", "]]>", "CDATA section"},
                   {"<?", ">", "declaration"},
                   {"<!", ">", "document type"}};

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

bool isMisspelt(const std::string& name, const std::string& meant) {
    constexpr std::size_t kMostMistakes = 2;
    return name.size() <= meant.size() + 2 * kMostMistakes &&
           distance(blurred(name), blurred(meant)) <= kMostMistakes;
}

std::size_t Findings::count(Severity severity) const {
    return static_cast<std::size_t>(
        std::count_if(m_all.begin(), m_all.end(),
                      [&](const Finding& finding) { return finding.severity == severity; }));
}

void Findings::beginFile(const std::string& file) {
    m_file = file;
    m_beginOfFile = m_all.size();
}

void Findings::endFile() {
    std::stable_sort(m_all.begin() + static_cast<std::ptrdiff_t>(m_beginOfFile), m_all.end(),
                     [](const Finding& one, const Finding& other) {
                         return std::pair(one.position.line, one.position.column) <
                                std::pair(other.position.line, other.position.column);
                     });
}

bool Findings::hasErrorInFile() const {
    return std::any_of(m_all.begin() + static_cast<std::ptrdiff_t>(m_beginOfFile), m_all.end(),
                       [](const Finding& finding) { return finding.severity == Severity::Error; });
}

void Findings::add(Severity severity, const char* rule, const TiXmlBase& part,
                   std::string message) {
    add({dolqctl::positionOf(m_file, part), severity, rule, std::move(message), {}});
}

XmlText::XmlText(const std::string& path, Findings& findings) : m_path(path), m_findings(findings) {
    if (common::readRegularFile(path, m_text.max_size(), m_text) != 0) {
        return;
    }
    const std::size_t nul = m_text.find('\0');
    if (m_text.empty()) {
        fail(0, "it is empty");
    } else if (nul < 2 || m_text.compare(0, 2, "\xFF\xFE") == 0 ||
               m_text.compare(0, 2, "\xFE\xFF") == 0) {
        fail(0, "it looks like UTF-16; save it as UTF-8");
    } else if (nul != m_text.npos) {
        fail(nul, "a NUL byte ends the text here");
    }
    std::size_t at = m_text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    while ((at = m_text.find_first_not_of(kWhiteSpace, at)) != m_text.npos) {
        const bool isOutside = m_open.empty();
        const bool isMarkup = m_text[at] == '<';
        const bool isPassedOver = isMarkup && (m_text[at + 1] == '!' || m_text[at + 1] == '?');
        if (isOutside && !m_rootName.empty() && !isPassedOver) {
            m_findings.add({positionOf(at),
                            Severity::Error,
                            "behind-root",
                            "nothing behind the first root element is read: " + word(at),
                            {}});
            return;
        }
        if (isMarkup) {
            at = markup(at);
        } else if (isOutside) {
            at = fail(at, "no root element, but " + word(at));
        } else {
            at = m_text.find('<', at);
        }
    }
    if (m_rootName.empty()) {
        fail(0, "it has no element");
    } else if (!m_open.empty()) {
        fail(m_open.back(), "the element " + word(m_open.back()) + " is not closed");
    }
}

std::size_t XmlText::markup(std::size_t at) {
    for (const auto& [begin, end, name] : kPassedOver) {
        if (m_text.compare(at, begin.size(), begin) == 0) {
            const std::size_t to = m_text.find(end, at + begin.size());
            return to == m_text.npos ? fail(at, std::string("the ") + name + " is not closed")
                                     : to + end.size();
        }
    }
    return m_text[at + 1] == '/' ? endTag(at) : startTag(at);
}

std::size_t XmlText::startTag(std::size_t at) {
    const std::size_t begin = at;
    if (!isNameStart(m_text[++at])) {
        return fail(begin, "this '<' begins no element: write \"&lt;\" for the character");
    }
    while (isNameCharacter(m_text[at])) {
        ++at;
    }
    if (m_rootName.empty()) {
        m_rootName = m_text.substr(begin + 1, at - begin - 1);
    }
    std::vector<std::string> names;
    while ((at = m_text.find_first_not_of(kWhiteSpace, at)) != m_text.npos) {
        if (m_text[at] == '>') {
            m_open.push_back(begin);
            return at + 1;
        }
        if (m_text[at] == '/') {
            return m_text[at + 1] == '>' ? at + 2 : fail(at, "a '/' without '>' behind it");
        }
        at = attribute(at, names);
        if (at == m_text.npos) {
            return at;
        }
    }
    return fail(begin, "the tag " + word(begin) + " is not complete");
}

std::size_t XmlText::attribute(std::size_t at, std::vector<std::string>& names) {
    const std::size_t begin = at;
    while (isNameCharacter(m_text[at])) {
        ++at;
    }
    const std::string name = m_text.substr(begin, at - begin);
    if (name.empty()) {
        return fail(begin, "an attribute or '>' is missing before " + word(begin));
    }
    if (std::find(names.begin(), names.end(), name) != names.end()) {
        return fail(begin, "the attribute " + inQuotes(name) + " is there twice");
    }
    names.push_back(name);
    at = m_text.find_first_not_of(kWhiteSpace, at);
    if (at == m_text.npos || m_text[at] != '=') {
        return fail(begin, "the attribute " + inQuotes(name) + " has no value");
    }
    at = std::min(m_text.find_first_not_of(kWhiteSpace, at + 1), m_text.size());
    if (m_text[at] == '"' || m_text[at] == '\'') {
        const std::size_t end = m_text.find(m_text[at], at + 1);
        return end != m_text.npos ? end + 1 : fail(at, "this quotation mark has no partner");
    }
    const std::size_t end = m_text.find_first_of(" \t\n\v\f\r/>\"'", at);
    return end != m_text.npos && std::strchr("\"'", m_text[end]) != nullptr
               ? fail(end, "a quotation mark that nothing opened")
               : end;
}

std::size_t XmlText::endTag(std::size_t at) {
    const std::size_t open = m_open.back() + 1;
    std::size_t length = 0;
    while (isNameCharacter(m_text[open + length])) {
        ++length;
    }
    const std::size_t behind = m_text.find_first_not_of(kWhiteSpace, at + 2 + length);
    if (m_text.compare(at + 2, length, m_text, open, length) != 0 || behind == m_text.npos ||
        m_text[behind] != '>') {
        const FilePosition begin = positionOf(open - 1);
        return fail(at, word(at) + " does not close " + word(open - 1) + " of line " +
                            std::to_string(begin.line));
    }
    m_open.pop_back();
    return behind + 1;
}

/// The first failure counts, as with TinyXML.
std::size_t XmlText::fail(std::size_t at, std::string reason) {
    if (m_failure.empty()) {
        m_failedAt = positionOf(at);
        m_failure = std::move(reason);
    }
    m_open.clear();
    return m_text.npos;
}

/// The beginning of what stands at `at`, in quotes.
std::string XmlText::word(std::size_t at) const {
    constexpr std::size_t kLongest = 20;
    const std::size_t end = std::min(m_text.find_first_of(kDelimiters, at + 2), m_text.size());
    return inQuotes(m_text.substr(at, std::min(end - at + (m_text[end] == '>' ? 1 : 0), kLongest)));
}

FilePosition XmlText::positionOf(std::size_t at) const {
    FilePosition position{m_findings.file(), 1, 1};
    for (std::size_t i = m_text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0; i < at; ++i) {
        if (m_text[i] == '\n' || (m_text[i] == '\r' && m_text[i + 1] != '\n')) {
            ++position.line;
            position.column = 1;
        } else if ((static_cast<unsigned char>(m_text[i]) & 0xC0U) != 0x80) {
            ++position.column;
        }
    }
    return position;
}

void XmlText::addNotLoaded(const TiXmlDocument& document) const {
    const UnreadableFile parser = whyNotLoaded(m_path, document);
    const bool isKnown = !m_failure.empty();
    const FilePosition position =
        isKnown ? m_failedAt
                : FilePosition{m_findings.file(), parser.position.line, parser.position.column};
    m_findings.add({position,
                    Severity::Error,
                    "not-loaded",
                    "the file is not read: " + (isKnown ? m_failure : parser.reason),
                    {}});
}

void MappingFileChecker::check(const std::string& path) {
    m_findings.beginFile(path);
    const XmlText text(path, m_findings);
    m_text = &text;
    if (isManifest(text)) {
        checkManifest(path, text, m_findings);
    } else {
        dolq::xmlconf::MappingXmlConfigurator().readMappingFile(path, *this);
    }
    m_findings.endFile();
}

void MappingFileChecker::onNotLoaded(const TiXmlDocument& document) {
    m_text->addNotLoaded(document);
}

void MappingFileChecker::onNoRoot() { m_text->addNotLoaded({}); }

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
    remember({faultId, {}, minorType, positionOf(m_findings.file(), element)});
}

void MappingFileChecker::onMapping(const TiXmlElement& element, std::uint32_t faultId,
                                   std::uint32_t minorType, const std::string& moClass) {
    checkClass(element, moClass);
    remember({faultId, moClass, minorType, positionOf(m_findings.file(), element)});
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
    m_findings.add({mapping.position, sameFile && !sameAlarm ? Severity::Error : Severity::Warning,
                    sameFile ? "duplicate" : "override", message, earlier.position});
    entry->second = std::move(mapping);
}

void MappingFileChecker::error(const TiXmlBase& part, const char* rule, std::string message) {
    m_findings.add(Severity::Error, rule, part, std::move(message));
}

void MappingFileChecker::warning(const TiXmlBase& part, const char* rule, std::string message) {
    m_findings.add(Severity::Warning, rule, part, std::move(message));
}

} // namespace dolqctl
