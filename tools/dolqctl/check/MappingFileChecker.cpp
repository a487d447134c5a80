#include "check/MappingFileChecker.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <sstream>

#include "Output.h"
#include "adapter/MinorType.h"
#include "common/RegularFile.h"
#include "common/XmlDocument.h"
#include "xmlconf/MappingFileFormat.h"
#include "xmlconf/MappingFileReader.h"

namespace dolqctl {

namespace {

using dolq::xmlconf::kFaultId;
using dolq::xmlconf::kMapping;
using dolq::xmlconf::kMinorType;
using dolq::xmlconf::kMoClass;

/// Characters with which a class is hardly that of an object.
constexpr std::pair<const char*, Rule> kOddCharacters[] = {
    {"\t\n\v\f\r=", Rule::ClassNeverMatches},
    {";|/\\+*?\"'`<>", Rule::ClassCharacter},
    {"!#$%&()@[]^{}~:", Rule::ClassPunctuation}};

/// "131073 (2/1)".
std::string minorTypeText(std::uint32_t minorType) {
    return std::to_string(minorType) + " (" + alarmText(minorType) + ')';
}

/// What a class looks like.
struct Look {
    bool isUtf8 = true;
    wchar_t beyondAscii = 0; ///< the first such character, or 0
    wchar_t misleading = 0;  ///< the first that looks like another one there, or like nothing, or 0
    std::wstring folded;
};

Look lookOf(const std::string& text) {
    constexpr wchar_t kAccented = L'\uFFFD';
    Look look;
    bool isLatin = false;
    wchar_t shared = 0; // the first letter of an alphabet that shares shapes with the Latin one
    const auto keepFirst = [](wchar_t& first, wchar_t c, bool is) {
        first = first == 0 && is ? c : first;
    };
    for (std::size_t at = 0, length = 0; at < text.size(); at += length) {
        wchar_t c = 0;
        std::mbstate_t state{};
        length = std::mbrtowc(&c, &text[at], text.size() - at, &state);
        if (length == 0 || length > text.size()) {
            return {false, 0, 0, {text.begin(), text.end()}};
        }
        // NOLINTNEXTLINE(bugprone-signed-char-misuse): a wchar_t is no char
        const auto character = static_cast<wint_t>(c);
        const bool isUnseen = std::iswspace(character) != 0 || std::iswcntrl(character) != 0 ||
                              c == 0xA0 || c == 0xAD || (c >= 0x2000 && c < 0x2070) ||
                              (c >= 0x180B && wcwidth(c) == 0);
        isLatin = isLatin || (c < 0x80 && std::iswalpha(character) != 0);
        keepFirst(shared, c, (c >= 0x370 && c < 0x530) || (c > 0xFF00 && c < 0xFF5F));
        keepFirst(look.beyondAscii, c, c >= 0x80);
        keepFirst(look.misleading, c, c >= 0x80 && isUnseen);
        if (c >= 0x300 && c < 0x370 && !look.folded.empty()) { // combines with the one before it
            look.folded.back() = kAccented;
        } else if (!isUnseen) {
            const bool isAccented = (c >= 0xC0 && c < 0x250) || (c >= 0x1E00 && c < 0x1F00);
            look.folded += isAccented ? kAccented : static_cast<wchar_t>(std::towlower(character));
        }
    }
    keepFirst(look.misleading, shared, isLatin);
    return look;
}

/// "U+00A0"
std::string codePoint(wchar_t character) {
    char name[sizeof("U+FFFFFFFF")];
    std::snprintf(name, sizeof(name), "U+%04X", static_cast<unsigned>(character));
    return name;
}

std::string withoutDigits(std::string text) {
    text.erase(std::remove_if(text.begin(), text.end(),
                              [](unsigned char c) { return std::isdigit(c) != 0; }),
               text.end());
    return text;
}

/// Whether a blank stands between two other characters of one class.
bool hasInnerBlank(const std::string& list) {
    std::istringstream classes(list);
    for (std::string each; std::getline(classes, each, ',');) {
        const std::size_t first = each.find_first_not_of(' ');
        if (first != each.npos && each.find(' ', first) < each.find_last_not_of(' ')) {
            return true;
        }
    }
    return false;
}

} // namespace

std::string alarmText(std::uint32_t minorType) {
    return std::to_string(dolq::majorIdOf(minorType)) + '/' +
           std::to_string(dolq::minorIdOf(minorType));
}

std::string characterBeyondAscii(const std::string& text) {
    const wchar_t character = lookOf(text).beyondAscii;
    return character != 0 ? codePoint(character) : std::string();
}

std::wstring folded(const std::string& text) { return lookOf(text).folded; }

std::vector<Finding> MappingFileChecker::read(const std::string& path, const std::string& name,
                                              std::vector<LoadModuleFile>* manifestFiles) {
    std::string text;
    const int error = common::readRegularFile(path, text.max_size(), text);
    m_whyUnread = error == EISDIR || error == EINVAL ? "not a regular file"
                  : error != 0                       ? std::strerror(error)
                  : text.empty()                     ? "it is empty"
                                                     : "";
    m_hasNul = text.find('\0') != text.npos;
    m_problems = text.empty() ? std::vector<XmlProblem>() : findXmlProblems(std::move(text));
    m_file = name;
    m_manifestFiles = manifestFiles;
    m_mapsNothing = true;
    const bool isRead = dolq::xmlconf::readMappingFile(path, *this);
    beginElement(nullptr);
    if (isRead && m_mapsNothing) {
        add({{name}, Rule::NoMapping});
    }
    for (const XmlProblem& each : m_problems) {
        add({{name, each.line, each.column}, Rule::NotWellFormed, {each.text}});
    }
    return takeFindings();
}

void MappingFileChecker::onNotLoaded(const TiXmlDocument& document) {
    XmlProblem reason{document.ErrorRow(), document.ErrorCol(), document.ErrorDesc(), false};
    if (!m_whyUnread.empty()) {
        reason = {0, 0, m_whyUnread, false};
    } else if (!m_problems.empty()) {
        reason = m_problems.back();
        m_problems.pop_back();
    } else if (!document.Error()) {
        reason = {0, 0, "it has no element, too many levels of them, or too many attributes",
                  false};
    }
    add({{m_file, reason.line, reason.column}, Rule::NotLoaded, {reason.text}});
}

void MappingFileChecker::onRoot(const TiXmlElement& root) {
    const TiXmlElement* const first = root.FirstChildElement();
    if (m_manifestFiles == nullptr || !isMisspelt(root.ValueStr(), "loadModules") ||
        (first != nullptr && first->ValueStr() == kMapping)) {
        if (root.ValueStr() != "alarmMappings") {
            add(Rule::RootName, root, {root.ValueStr()});
        }
        checkChildren(root);
        return;
    }
    m_mapsNothing = false;
    const auto* const document = dynamic_cast<const common::XmlDocument*>(root.GetDocument());
    if (m_hasNul || root.NextSiblingElement() != nullptr ||
        (document != nullptr && !document->isLoadedWhole())) {
        onNotLoaded({}); // the problem is there
    } else {
        checkManifest(root);
    }
}

/// The depth is bounded: the reader gives no deeper document to the parser.
void MappingFileChecker::checkChildren(const TiXmlElement& element) {
    const bool isRoot = element.Parent()->ToDocument() != nullptr;
    addUnreadText(element);
    for (const TiXmlElement* child = element.FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        const std::string& name = child->ValueStr();
        beginElement(child);
        if (name == kMapping && isRoot) {
            checkMapping(*child);
        } else if (name == kMapping) {
            add(Rule::LostElement, *child, {name, "only those in the root element are"});
        } else if (child->Attribute(kFaultId) != nullptr ||
                   child->Attribute(kMinorType) != nullptr || isMisspelt(name, kMapping)) {
            add(Rule::LostElement, *child, {name, "did you mean 'mapping'?"});
        } else {
            add(Rule::UnknownElement, *child, {name});
        }
        checkChildren(*child);
    }
}

void MappingFileChecker::checkMapping(const TiXmlElement& element) {
    const std::optional<std::uint32_t> faultId = checkNumber(element, kFaultId);
    const std::optional<std::uint32_t> minorType = checkNumber(element, kMinorType);
    if (minorType && (dolq::majorIdOf(*minorType) == 0 || dolq::minorIdOf(*minorType) == 0)) {
        const TiXmlAttribute& attribute = *findAttribute(element, kMinorType);
        const std::string text = std::to_string(*minorType);
        if (dolq::majorIdOf(*minorType) != 0) {
            add(Rule::NoMinorId, attribute, {text, alarmText(*minorType)});
        } else if (faultId.value_or(0) > 0xFFFF && *faultId <= 0x7FFFFFFF) {
            add(Rule::SwappedIds, attribute, {text, std::to_string(*faultId), alarmText(*faultId)});
        } else {
            add(Rule::NoMajorId, attribute, {text, std::to_string(131072 + *minorType)});
        }
    }
    if (const TiXmlAttribute* const list = findAttribute(element, kMoClass)) {
        if (list->ValueStr().find_first_not_of(' ') == std::string::npos) {
            add(Rule::NoClass, *list, {list->ValueStr()});
        } else if (hasInnerBlank(list->ValueStr())) {
            add(Rule::BlankInClass, *list, {list->ValueStr()});
        }
    } else {
        add(Rule::MissingClass, element);
    }
    addUnknownAttributes(element, {kFaultId, kMinorType, kMoClass});
}

/// Returns the number if it is what is written.
std::optional<std::uint32_t> MappingFileChecker::checkNumber(const TiXmlElement& element,
                                                             const char* name) {
    int number = 0;
    const int outcome = element.QueryIntAttribute(name, &number); // as the reader asks
    if (outcome == TIXML_NO_ATTRIBUTE) {
        add(Rule::MissingAttribute, element, {name});
        return std::nullopt;
    }
    const TiXmlAttribute& attribute = *findAttribute(element, name);
    const std::string value = attribute.Value();
    errno = 0;
    char* rest = nullptr;
    const long long meant = std::strtoll(value.c_str(), &rest, 10);
    const auto stored = static_cast<std::uint32_t>(number);
    const bool isOther = errno == ERANGE || (meant != number && meant != stored);
    const bool hasRest = rest[std::strspn(rest, " \t\n\v\f\r")] != '\0';
    const bool isLost = outcome != TIXML_SUCCESS || isOther || hasRest;
    if (isLost || meant < 0 || meant != number) {
        add(outcome != TIXML_SUCCESS ? Rule::NotAnInteger
            : isOther                ? Rule::OtherNumber
            : hasRest                ? Rule::TextAfterNumber
            : meant < 0              ? Rule::NegativeNumber
                                     : Rule::Beyond32Bits,
            attribute, {name, value, std::to_string(stored), std::to_string(number)});
    }
    return isLost ? std::nullopt : std::optional(stored);
}

void MappingFileChecker::onMappingWithoutClass(const TiXmlElement& element, std::uint32_t faultId,
                                               std::uint32_t minorType) {
    beginElement(&element);
    record({faultId, {}, minorType, positionOf(element)});
}

void MappingFileChecker::onMapping(const TiXmlElement& element, std::uint32_t faultId,
                                   std::uint32_t minorType, const std::string& moClass) {
    beginElement(&element);
    if (record({faultId, moClass, minorType, positionOf(element)})) {
        checkClass(*findAttribute(element, kMoClass), moClass);
    }
}

/// False for one that the same element has given already.
bool MappingFileChecker::record(const Mapping& mapping) {
    m_mapsNothing = false;
    std::vector<Mapping>& history = m_mappings[{mapping.faultId, mapping.moClass}];
    const Mapping earlier = history.empty() ? Mapping() : history.back();
    const bool sameFile = earlier.position.file == mapping.position.file;
    const bool sameElement = sameFile && earlier.position.line == mapping.position.line &&
                             earlier.position.column == mapping.position.column;
    if (!history.empty() && !(sameElement && mapping.moClass.empty())) {
        const bool isEqual = earlier.minorType == mapping.minorType;
        add({mapping.position,
             !sameFile ? Rule::Override
             : isEqual ? Rule::Repeated
                       : Rule::Duplicate,
             {std::to_string(mapping.faultId), mapping.moClass, minorTypeText(mapping.minorType),
              minorTypeText(earlier.minorType)},
             earlier.position});
    }
    if (!sameElement) {
        history.push_back(mapping);
    }
    return !sameElement;
}

void MappingFileChecker::checkClass(const TiXmlAttribute& list, const std::string& moClass) {
    if (moClass.empty()) {
        add(Rule::EmptyClass, list);
        return;
    }
    for (const auto& [characters, rule] : kOddCharacters) {
        if (moClass.find_first_of(characters) != std::string::npos) {
            add(rule, list, {moClass});
        }
    }
    const Look look = lookOf(moClass);
    if (!look.isUtf8) {
        add(Rule::NotUtf8, list, {moClass});
    } else if (look.misleading != 0) {
        add(Rule::Misleading, list, {moClass, codePoint(look.misleading)});
    } else if (look.beyondAscii != 0) {
        add(Rule::BeyondAscii, list, {moClass, codePoint(look.beyondAscii)});
    }
    const FilePosition position = positionOf(list);
    const auto& [other, first] =
        m_spellings.try_emplace(look.folded, moClass, position).first->second;
    if (other != moClass && look.misleading == 0) {
        add({position, Rule::ClassCase, {moClass, other}, first});
    }
    ++m_uses.try_emplace(withoutDigits(moClass), Use{moClass, position, 0}).first->second.count;
}

std::vector<Finding> MappingFileChecker::findSimilarClasses() const {
    constexpr std::size_t kOften = 10;
    std::vector<std::pair<std::string, Use>> rare;
    std::vector<std::pair<std::string, Use>> often;
    for (const auto& each : m_uses) {
        const std::size_t size = each.first.size();
        if (size >= 4 && size <= 100 && (each.second.count == 1 || each.second.count >= kOften)) {
            (each.second.count == 1 ? rare : often).push_back(each);
        }
    }
    std::vector<Finding> findings;
    for (const auto& [letters, use] : rare) {
        for (const auto& [others, other] : often) {
            const std::size_t longer = std::max(letters.size(), others.size());
            const std::size_t most = letters.size() == 4 ? 1 : 2; // letters that differ
            if (longer - std::min(letters.size(), others.size()) <= most &&
                distance(letters, others) <= most) {
                findings.push_back({use.first,
                                    Rule::SimilarClass,
                                    {use.name, other.name, std::to_string(other.count)}});
                break;
            }
        }
    }
    return findings;
}

Inventory readMappingFiles(const std::vector<std::string>& paths) {
    MappingFileChecker checker(1000); // what is left out could be what is asked for
    std::vector<Finding> findings;
    for (const std::string& path : paths) {
        const std::vector<Finding> those = checker.read(path, path);
        findings.insert(findings.end(), those.begin(), those.end());
    }
    return {checker.mappings(), findings};
}

} // namespace dolqctl
