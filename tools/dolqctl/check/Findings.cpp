#include "check/Findings.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <sstream>
#include <tuple>

#include <nlohmann/json.hpp>
#include <tinyxml.h>

#include "Output.h"
#include "xmlconf/MappingFileFormat.h"

namespace dolqctl {

namespace {

constexpr Severity kLost = Severity::Error;
constexpr Severity kOdd = Severity::Warning;

/// In the order of `Rule`. $1 and so on are the texts of a finding, $@ the position of the other.
constexpr struct {
    const char* name;
    Severity severity;
    const char* sentence;
} kRules[] = {
    {"not-loaded", kLost, "the file is not read: $1"},
    {"not-loaded", kLost, R"(the whole manifest is refused: "$1" in place of '$2')"},
    {"not-loaded", kLost, "the whole manifest is refused: '$1' is missing or empty"},
    {"no-mapping", kLost, "the file maps nothing: it has no 'mapping' that is used"},
    {"unmapped-fault", kLost, R"(fault $1 on the class "$2" has no mapping)"},
    {"not-well-formed", kLost, "$1"},
    {"root-name", kOdd, R"(the root element "$1" is read, but its name is 'alarmMappings')"},
    {"unread-text", kOdd, R"(text is not read: "$1")"},
    {"unread-text", kLost, R"(text is not read: "$1"; is a '<' missing, or is it CDATA?)"},
    {"unknown-element", kOdd, R"(the element "$1" is not read)"},
    {"unknown-element", kLost, R"(the element "$1" is not read: did you mean 'mapping'?)"},
    {"unknown-element", kLost, R"(the element "$1" is not read inside "$2")"},
    {"unknown-attribute", kOdd, R"(the attribute "$1" is ignored)"},
    {"unknown-attribute", kLost, R"(the attribute "$1" is ignored: did you mean '$2'?)"},
    {"missing-attribute", kLost, "no '$1': the element is skipped"},
    {"missing-class", kOdd,
     "no 'managed_object_class': only an object without a class gets this alarm"},
    {"not-an-integer", kLost, R"($1="$2" is no integer: the element is skipped$3)"},
    {"text-after-number", kLost, R"($1="$2" is read as $3: what follows is ignored$4)"},
    {"beyond-32-bits", kLost, R"($1="$2" does not fit 32 bits with a sign: it is read as $3)"},
    {"beyond-32-bits", kOdd, R"($1="$2" does not fit 32 bits with a sign: write $3)"},
    {"negative-number", kOdd, R"($1="$2" stands for $3: is that meant?)"},
    {"no-major-id", kOdd,
     R"(minor_type_id="$1" is the alarm 0/$1: a minor type is the major id times 65536 plus the minor id; for 2/$1 write "$2")"},
    {"no-minor-id", kOdd, R"(minor_type_id="$1" is the alarm $2: is the minor id missing?)"},
    {"swapped-ids", kOdd,
     R"(faultid="$1" would be alarm $2 and minor_type_id="$3" is alarm 0/$3: are they exchanged?)"},
    {"no-class", kLost, R"(managed_object_class="$1" holds no class: the element maps nothing)"},
    {"empty-class", kOdd, "an empty piece of the class list is an entry without a class"},
    {"blank-in-class", kLost,
     R"(managed_object_class="$1" is read without its blanks, as "$2": is a comma missing?)"},
    {"class-never-matches", kLost,
     R"(the class "$1" never matches: that of an object has no white space and no '=')"},
    {"class-character", kLost,
     R"(the class "$1" is a single class: commas separate classes, and there are no patterns, quotation marks or tags)"},
    {"class-character", kOdd,
     R"(the class "$1" holds a character that classes hardly have: is it meant?)"},
    {"beyond-ascii", kOdd, R"(the class "$1" holds $2: objects must be named with the very same)"},
    {"beyond-ascii", kLost,
     R"(the class "$1" holds $2, which looks like another character or like nothing)"},
    {"not-utf-8", kLost,
     R"(the class "$1" is not UTF-8: save the file as UTF-8, and begin it with <?xml version="1.0" encoding="UTF-8"?>)"},
    {"class-case", kOdd,
     R"(the class "$1" is written "$2" at $@: letter case and accents make them two classes)"},
    {"similar-class", kOdd, R"(the class "$1" occurs once, and "$2" $3 times: is that meant?)"},
    {"duplicate", kOdd, R"(fault $1 on the class "$2" is mapped to $3 already at $@)"},
    {"duplicate", kLost, R"(fault $1 on the class "$2" gets $3 in place of $4 at $@)"},
    {"override", kOdd, R"(fault $1 on the class "$2" gets $3 in place of $4 at $@)"},
    {"misspelt-tag", kLost, R"(tag="$1" is not 'alarm_mapping': the file is not read)"},
    {"misspelt-tag", kOdd, R"(tag="$1" is not 'alarm_mapping': the file is not read)"},
    {"missing-file", kOdd,
     R"(path="$1" is no regular file, or the manifest itself; a relative path counts from its folder)"},
    {"no-load-module", kOdd, "the manifest names no load module"},
    {"odd-number", kOdd,
     R"($1="$2" is empty, or holds a blank or a character beyond ASCII: programs must have the same)"},
};

static_assert(std::size(kRules) == static_cast<std::size_t>(Rule::OddNumber) + 1);

const auto& rowOf(const Finding& finding) { return kRules[static_cast<std::size_t>(finding.rule)]; }

bool mayMean(const std::string& name, const char* known) {
    return isMisspelt(name, known) ||
           (name.size() > 4 && std::strstr(known, name.c_str()) != nullptr);
}

/// The value of the attribute, or of one that was meant to be it.
std::string valueOf(const TiXmlElement& element, const char* name) {
    const TiXmlAttribute* found = findAttribute(element, name);
    for (const TiXmlAttribute* each = element.FirstAttribute(); found == nullptr && each != nullptr;
         each = each->Next()) {
        found = mayMean(each->Name(), name) ? each : nullptr;
    }
    return found != nullptr ? found->ValueStr() : std::string();
}

} // namespace

std::string positionText(const FilePosition& position) {
    return position.file + (position.line == 0 ? "" : ':' + std::to_string(position.line)) +
           (position.column == 0 ? "" : ':' + std::to_string(position.column));
}

Severity Finding::severity() const { return rowOf(*this).severity; }

const char* Finding::name() const { return rowOf(*this).name; }

std::string Finding::message() const {
    std::string text;
    for (const char* at = rowOf(*this).sentence; *at != '\0'; ++at) {
        if (*at != '$') {
            text += *at;
        } else if (*++at == '@') {
            text += positionText(*other);
        } else {
            text += shortened(texts.at(static_cast<std::size_t>(*at - '1')));
        }
    }
    return text;
}

bool Finding::costsTheFile() const {
    return rule == Rule::NotLoaded || rule == Rule::OtherElement || rule == Rule::NoManifestValue ||
           rule == Rule::NoMapping;
}

bool Finding::isAbout(std::uint32_t faultId, const std::string& moClass) const {
    const std::size_t number =
        element == nullptr ? std::string::npos : element->faultId.find_first_of("-0123456789");
    if (number == std::string::npos || static_cast<std::uint32_t>(std::strtoll(
                                           &element->faultId[number], nullptr, 10)) != faultId) {
        return false;
    }
    bool isFound = moClass.empty();
    std::istringstream classes(element->classes);
    for (std::string each; !isFound && std::getline(classes, each, ',');) {
        isFound = folded(each) == folded(moClass);
    }
    return isFound;
}

void to_json(nlohmann::ordered_json& json, const FilePosition& position) {
    json = {{"file", position.file}, {"line", position.line}, {"column", position.column}};
}

void to_json(nlohmann::ordered_json& json, const Finding& finding) {
    to_json(json, finding.position);
    json["severity"] = finding.severity() == Severity::Error ? "error" : "warning";
    json["rule"] = finding.name();
    json["message"] = finding.message();
    if (finding.other) {
        to_json(json["other"], *finding.other);
    }
    if (finding.more > 0) {
        json["more"] = finding.more;
    }
}

std::set<std::string> ruleNames() {
    std::set<std::string> names;
    for (const auto& rule : kRules) {
        names.insert(rule.name);
    }
    return names;
}

void Findings::beginFile(const std::string& file, bool wasRead) {
    m_file = file;
    m_wasRead = wasRead;
    beginElement(nullptr);
    m_order.try_emplace(file, m_order.size());
    if (!wasRead) {
        m_files.push_back(file);
    }
}

void Findings::beginElement(const TiXmlElement* element) {
    m_about = element;
    m_element.reset();
}

void Findings::add(Finding finding) {
    if (m_wasRead && finding.rule != Rule::Override) {
        return;
    }
    auto& [count, last] = m_kept[{finding.position.file, finding.rule}];
    if (count == m_most) {
        ++m_all[last].more;
        return;
    }
    ++count;
    last = m_all.size();
    if (m_about != nullptr && m_element == nullptr) {
        m_element = std::make_shared<const MappingElement>(
            MappingElement{positionOf(*m_about), valueOf(*m_about, dolq::xmlconf::kFaultId),
                           valueOf(*m_about, dolq::xmlconf::kMinorType),
                           valueOf(*m_about, dolq::xmlconf::kMoClass)});
    }
    finding.element = m_element;
    m_all.push_back(std::move(finding));
}

void Findings::add(Rule rule, const TiXmlBase& part, std::vector<std::string> texts) {
    add({positionOf(part), rule, std::move(texts)});
}

void Findings::addUnreadText(const TiXmlElement& element) {
    for (const TiXmlNode* node = element.FirstChild(); node != nullptr;
         node = node->NextSibling()) {
        if (const TiXmlText* const text = node->ToText()) {
            const bool isElement = text->ValueStr().find('=') != std::string::npos;
            add(isElement ? Rule::UnreadElement : Rule::UnreadText, *text, {text->ValueStr()});
        }
    }
}

void Findings::addUnknownAttributes(const TiXmlElement& element,
                                    const std::vector<const char*>& known) {
    for (const TiXmlAttribute* attribute = element.FirstAttribute(); attribute != nullptr;
         attribute = attribute->Next()) {
        const std::string name = attribute->Name();
        if (std::find(known.begin(), known.end(), name) != known.end()) {
            continue;
        }
        const auto meant = std::find_if(known.begin(), known.end(), [&](const char* each) {
            return mayMean(name, each) && element.Attribute(each) == nullptr;
        });
        if (meant != known.end()) {
            add(Rule::MisspeltAttribute, *attribute, {name, *meant});
        } else {
            add(Rule::UnknownAttribute, *attribute, {name});
        }
    }
}

FilePosition Findings::positionOf(const TiXmlBase& part) const {
    return {m_file, part.Row(), part.Column()};
}

std::vector<Finding> Findings::take() {
    const auto place = [this](const Finding& each) {
        return std::tuple(m_order[each.position.file], each.position.line, each.position.column);
    };
    std::stable_sort(m_all.begin(), m_all.end(), [&](const Finding& one, const Finding& other) {
        return place(one) < place(other);
    });
    m_kept.clear();
    return std::exchange(m_all, {});
}

const TiXmlAttribute* findAttribute(const TiXmlElement& element, const char* name) {
    const TiXmlAttribute* attribute = element.FirstAttribute();
    while (attribute != nullptr && std::strcmp(attribute->Name(), name) != 0) {
        attribute = attribute->Next();
    }
    return attribute;
}

} // namespace dolqctl
