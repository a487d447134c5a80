#include "check/MappingFileChecker.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <filesystem>
#include <regex>

#include <tinyxml.h>

#include "Output.h"
#include "adapter/MinorType.h"
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

std::string withoutBlanks(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    return text;
}

/// What to write in place of a number that is not read as it is meant: "; write "7"", or nothing.
std::string meantNumber(const std::string& value, bool isMinorType) {
    std::string plain; // of "131 073", "“131073”"
    std::copy_if(value.begin(), value.end(), std::back_inserter(plain),
                 [](char c) { return c > ' ' && c != '"' && c != '\''; });
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

/// Nothing if it is not UTF-8.
std::optional<std::wstring> charactersOf(const std::string& text) {
    std::wstring characters(text.size(), L'\0');
    std::mbstate_t state{};
    const char* from = text.c_str();
    const std::size_t count = std::mbsrtowcs(characters.data(), &from, characters.size(), &state);
    if (count == static_cast<std::size_t>(-1)) {
        return std::nullopt;
    }
    characters.resize(count);
    return characters;
}

/// A blank, something invisible, or typographic punctuation.
bool isUnseen(wchar_t c) {
    const auto character = static_cast<wint_t>(c);
    return std::iswspace(character) != 0 || std::iswcntrl(character) != 0 || c == 0xA0 ||
           c == 0xAD || (c >= 0x2000 && c < 0x2070) || (c >= 0x180B && wcwidth(c) == 0);
}

/// The first character that looks like another one where it stands: a letter of an alphabet that
/// shares shapes with the Latin one, beside Latin letters, or one that is not seen; or 0.
wchar_t misleadingIn(const std::wstring& text) {
    const bool isLatin = std::any_of(text.begin(), text.end(), [](wchar_t c) {
        return c < 0x80 && std::iswalpha(static_cast<wint_t>(c)) != 0;
    });
    const auto found = std::find_if(text.begin(), text.end(), [&](wchar_t c) {
        const bool isShared = (c >= 0x370 && c < 0x530) || (c > 0xFF00 && c < 0xFF5F);
        return c >= 0x80 && (isUnseen(c) || (isLatin && isShared));
    });
    return found != text.end() ? *found : L'\0';
}

/// "U+00A0"
std::string codePoint(wchar_t character) {
    char name[sizeof("U+FFFFFFFF")];
    std::snprintf(name, sizeof(name), "U+%04X", static_cast<unsigned>(character));
    return name;
}

/// Whether `rare` is probably `often` with a letter wrong. Digits make other names.
bool isSlip(const std::string& rare, const std::string& often) {
    const auto letters = [](std::string text) {
        text.erase(std::remove_if(text.begin(), text.end(),
                                  [](unsigned char c) { return std::isdigit(c) != 0; }),
                   text.end());
        return text;
    };
    const std::size_t wrong = distance(rare, often);
    return wrong > 0 && wrong <= rare.size() / 4 && wrong < 3 && letters(rare) != letters(often);
}

} // namespace

std::string alarmText(std::uint32_t minorType) {
    return std::to_string(dolq::majorIdOf(minorType)) + '/' +
           std::to_string(dolq::minorIdOf(minorType));
}

std::string characterBeyondAscii(const std::string& text) {
    const std::wstring characters = charactersOf(text).value_or(L"");
    const auto found =
        std::find_if(characters.begin(), characters.end(), [](wchar_t c) { return c >= 0x80; });
    return found != characters.end() ? codePoint(*found) : std::string();
}

std::wstring folded(const std::string& text) {
    constexpr wchar_t kAccented = L'\uFFFD';
    std::wstring letters;
    for (const wchar_t c : charactersOf(text).value_or(std::wstring(text.begin(), text.end()))) {
        const bool isMark = c >= 0x300 && c < 0x370;
        const bool isAccented = (c >= 0xC0 && c < 0x250) || (c >= 0x1E00 && c < 0x1F00);
        if (isMark && !letters.empty()) {
            letters.back() = kAccented;
        } else if (!isUnseen(c)) {
            letters += isAccented ? kAccented
                                  : static_cast<wchar_t>(std::towlower(static_cast<wint_t>(c)));
        }
    }
    return letters;
}

void MappingFileChecker::read(const std::string& path, const std::string& name, Kind kind,
                              const LoadModule& loadModule) {
    std::error_code error; // of a file that is not there
    const auto canonical = std::filesystem::weakly_canonical(name, error);
    std::set<LoadModule>& readers = m_readers[error ? name : canonical.string()];
    const bool wasRead = !readers.empty();
    if (!readers.insert(loadModule).second) {
        return;
    }
    m_findings.beginFile(name, wasRead);
    m_loadModule = loadModule;
    m_kind = kind;
    m_text = readXml(path);
    m_isManifest = false;
    m_mapsNothing = true;
    if (dolq::xmlconf::readMappingFile(path, *this)) {
        m_findings.beginElement(nullptr);
        for (const XmlText::Problem& each : m_text.problems) {
            m_findings.add({{name, each.line, each.column}, Rule::NotWellFormed, {each.text}});
        }
        if (m_mapsNothing && !m_isManifest) {
            m_findings.addFile(Rule::NoMapping);
        }
    }
    for (const auto& [module, file] : std::exchange(m_named, {})) {
        read(file, file, Kind::MappingFile, module);
    }
}

void MappingFileChecker::onNotLoaded(const TiXmlDocument& document) {
    addNotLoaded(document, "too many levels of elements, or attributes of one");
}

void MappingFileChecker::onNoRoot() {
    addNotLoaded({}, "no element is found: a document type may declare nothing");
}

void MappingFileChecker::addNotLoaded(const TiXmlDocument& document, const char* otherwise) {
    Finding reason{{m_findings.file()}, Rule::NotLoaded, {otherwise}};
    if (!m_text.readError.empty()) {
        reason.texts = {m_text.readError};
    } else if (!m_text.problems.empty()) {
        const XmlText::Problem& last = m_text.problems.back();
        reason = {{m_findings.file(), last.line, last.column}, Rule::NotLoaded, {last.text}};
        m_text.problems.pop_back();
    } else if (document.Error()) {
        reason = {{m_findings.file(), document.ErrorRow(), document.ErrorCol()},
                  Rule::NotLoaded,
                  {document.ErrorDesc()}};
    }
    m_findings.add(std::move(reason));
}

void MappingFileChecker::onRoot(const TiXmlElement& root) {
    constexpr std::size_t kMaxManifestSize = std::size_t{16} * 1024 * 1024; // of the handler
    const TiXmlElement* const first = root.FirstChildElement();
    m_isManifest = m_kind == Kind::Manifest ||
                   (m_kind == Kind::Either && isMisspelt(root.ValueStr(), "loadModules") &&
                    (first == nullptr || first->ValueStr() != kMapping));
    if (!m_isManifest) {
        if (root.ValueStr() != "alarmMappings") {
            m_findings.add(Rule::RootName, root, {root.ValueStr()});
        }
        checkChildren(root);
        return;
    }
    const auto* const document = dynamic_cast<const common::XmlDocument*>(root.GetDocument());
    if (m_text.size > kMaxManifestSize || m_text.hasNul || root.NextSiblingElement() != nullptr ||
        (document != nullptr && !document->isLoadedWhole())) {
        addNotLoaded({}, "something stands behind the root, or the manifest is larger than 16 MiB");
    } else {
        std::vector<LoadModuleFile> files = checkManifest(root, m_findings);
        m_named = m_kind == Kind::Either ? std::move(files) : std::vector<LoadModuleFile>();
    }
}

/// The depth is bounded: the reader gives no deeper document to the parser.
void MappingFileChecker::checkChildren(const TiXmlElement& element) {
    const bool isRoot = element.Parent()->ToDocument() != nullptr;
    m_findings.addUnreadText(element);
    for (const TiXmlElement* child = element.FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        const std::string& name = child->ValueStr();
        m_findings.beginElement(child);
        if (name == kMapping && isRoot) {
            checkMapping(*child);
        } else if (name == kMapping) {
            m_findings.add(Rule::MisplacedElement, *child, {name, element.ValueStr()});
        } else {
            const bool isMeant = child->Attribute(kFaultId) != nullptr ||
                                 child->Attribute(kMinorType) != nullptr ||
                                 isMisspelt(name, kMapping);
            m_findings.add(isMeant ? Rule::MisspeltElement : Rule::UnknownElement, *child, {name});
        }
        checkChildren(*child);
    }
}

void MappingFileChecker::checkMapping(const TiXmlElement& element) {
    const std::optional<std::uint32_t> faultId = checkNumber(element, kFaultId);
    const std::optional<std::uint32_t> minorType = checkNumber(element, kMinorType);
    if (minorType && dolq::majorIdOf(*minorType) == 0) {
        const TiXmlAttribute& attribute = *findAttribute(element, kMinorType);
        const std::string text = std::to_string(*minorType);
        if (faultId.value_or(0) > 0xFFFF && *faultId <= 0x7FFFFFFF) {
            m_findings.add(Rule::SwappedIds, attribute,
                           {std::to_string(*faultId), alarmText(*faultId), text});
        } else {
            m_findings.add(Rule::NoMajorId, attribute, {text, std::to_string(131072 + *minorType)});
        }
    } else if (minorType && dolq::minorIdOf(*minorType) == 0) {
        m_findings.add(Rule::NoMinorId, *findAttribute(element, kMinorType),
                       {std::to_string(*minorType), alarmText(*minorType)});
    }
    if (const TiXmlAttribute* const list = findAttribute(element, kMoClass)) {
        checkClassList(*list);
    } else {
        m_findings.add(Rule::MissingClass, element);
    }
    m_findings.addUnknownAttributes(element, {kFaultId, kMinorType, kMoClass});
}

/// Returns the number if it is what is written.
std::optional<std::uint32_t> MappingFileChecker::checkNumber(const TiXmlElement& element,
                                                             const char* name) {
    int number = 0;
    const int outcome = element.QueryIntAttribute(name, &number); // as the reader asks
    if (outcome == TIXML_NO_ATTRIBUTE) {
        m_findings.add(Rule::MissingAttribute, element, {name});
        return std::nullopt;
    }
    const TiXmlAttribute& attribute = *findAttribute(element, name);
    const std::string value = attribute.Value();
    const std::string advice = meantNumber(value, name == kMinorType);
    if (outcome != TIXML_SUCCESS) {
        m_findings.add(Rule::NotAnInteger, attribute, {name, value, advice});
        return std::nullopt;
    }
    errno = 0;
    char* rest = nullptr;
    const long long meant = std::strtoll(value.c_str(), &rest, 10);
    const auto stored = static_cast<std::uint32_t>(number);
    const bool isOther = errno == ERANGE || static_cast<std::int32_t>(meant) != number;
    if (isOther || (meant != number && meant != stored)) {
        m_findings.add(Rule::OtherNumber, attribute, {name, value, std::to_string(stored)});
        return std::nullopt;
    }
    if (rest[std::strspn(rest, " \t\n\v\f\r")] != '\0') {
        m_findings.add(Rule::TextAfterNumber, attribute,
                       {name, value, std::to_string(stored), advice});
        return std::nullopt;
    }
    if (meant != number) {
        m_findings.add(Rule::Beyond32Bits, attribute, {name, value, std::to_string(number)});
    } else if (meant < 0) {
        m_findings.add(Rule::NegativeNumber, attribute, {name, value, std::to_string(stored)});
    }
    return stored;
}

void MappingFileChecker::checkClassList(const TiXmlAttribute& list) {
    static const std::regex innerBlank("[^ ,] +[^ ,]");
    const std::string& value = list.ValueStr();
    const std::string classes = withoutBlanks(value);
    if (classes.empty()) {
        m_findings.add(Rule::NoClass, list, {value});
    } else if (std::regex_search(value, innerBlank)) {
        m_findings.add(Rule::BlankInClass, list, {value, classes});
    }
}

void MappingFileChecker::onMappingWithoutClass(const TiXmlElement& element, std::uint32_t faultId,
                                               std::uint32_t minorType) {
    m_findings.beginElement(&element);
    record({faultId, {}, minorType, m_findings.positionOf(element)});
}

void MappingFileChecker::onMapping(const TiXmlElement& element, std::uint32_t faultId,
                                   std::uint32_t minorType, const std::string& moClass) {
    m_findings.beginElement(&element);
    if (record({faultId, moClass, minorType, m_findings.positionOf(element)})) {
        checkClass(*findAttribute(element, kMoClass), moClass);
    }
}

/// False for one that the same element has given already.
bool MappingFileChecker::record(const Mapping& mapping) {
    m_mapsNothing = false;
    std::vector<Mapping>& history = m_mappings[m_loadModule][{mapping.faultId, mapping.moClass}];
    const FilePosition& position = mapping.position;
    if (history.empty()) {
        history.push_back(mapping);
        return true;
    }
    const Mapping earlier = history.back();
    const bool sameFile = earlier.position.file == position.file;
    const bool sameElement = sameFile && earlier.position.line == position.line &&
                             earlier.position.column == position.column;
    if (!sameElement || !mapping.moClass.empty()) {
        const Rule rule = !sameFile                                ? Rule::Override
                          : earlier.minorType == mapping.minorType ? Rule::Repeated
                                                                   : Rule::Duplicate;
        m_findings.add({position,
                        rule,
                        {std::to_string(mapping.faultId), mapping.moClass,
                         minorTypeText(mapping.minorType), minorTypeText(earlier.minorType)},
                        earlier.position});
    }
    if (!sameElement) {
        history.push_back(mapping);
    }
    return !sameElement;
}

void MappingFileChecker::checkClass(const TiXmlAttribute& list, const std::string& moClass) {
    if (moClass.empty()) {
        m_findings.add(Rule::EmptyClass, list);
        return;
    }
    for (const auto& [characters, rule] : kOddCharacters) {
        if (moClass.find_first_of(characters) != std::string::npos) {
            m_findings.add(rule, list, {moClass});
        }
    }
    const std::optional<std::wstring> characters = charactersOf(moClass);
    if (!characters) {
        m_findings.add(Rule::NotUtf8, list, {moClass});
        return;
    }
    const std::string beyond = characterBeyondAscii(moClass);
    if (const wchar_t misleading = misleadingIn(*characters)) {
        m_findings.add(Rule::OddBeyondAscii, list, {moClass, codePoint(misleading)});
        return;
    }
    if (!beyond.empty()) {
        m_findings.add(Rule::BeyondAscii, list, {moClass, beyond});
    }
    Use& use = m_uses[m_loadModule][moClass];
    if (++use.count == 1) {
        use.first = m_findings.positionOf(list);
        const auto& [spelling, isNew] = m_spellings[m_loadModule].emplace(folded(moClass), moClass);
        if (!isNew) {
            m_findings.add({use.first,
                            Rule::ClassCase,
                            {moClass, spelling->second},
                            m_uses[m_loadModule][spelling->second].first});
        }
    }
}

std::vector<Finding> MappingFileChecker::takeFindings() {
    constexpr std::size_t kOften = 10;
    m_findings.beginElement(nullptr);
    for (const auto& [loadModule, uses] : m_uses) {
        for (const auto& [rare, once] : uses) {
            const auto similar =
                std::find_if(uses.begin(), uses.end(), [&, &rare = rare](const auto& each) {
                    return each.second.count >= kOften && isSlip(rare, each.first);
                });
            if (once.count == 1 && similar != uses.end()) {
                m_findings.add({once.first,
                                Rule::SimilarClass,
                                {rare, similar->first, std::to_string(similar->second.count)}});
            }
        }
    }
    return m_findings.take();
}

Inventory readMappingFiles(const std::vector<std::string>& paths) {
    MappingFileChecker checker(1000); // what is left out could be what is asked for
    for (const std::string& path : paths) {
        checker.read(path, path, MappingFileChecker::Kind::MappingFile);
    }
    const auto& all = checker.mappings();
    return {all.empty() ? Mappings() : all.begin()->second, checker.takeFindings()};
}

std::vector<Finding> findManifestMistakes(const std::string& path) {
    MappingFileChecker checker(std::string::npos);
    checker.read(path, path, MappingFileChecker::Kind::Manifest);
    return checker.takeFindings();
}

} // namespace dolqctl
