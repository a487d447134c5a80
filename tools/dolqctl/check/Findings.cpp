#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <tuple>

#include <nlohmann/json.hpp>

#include "Output.h"
#include "check/MappingFileChecker.h"
#include "xmlconf/MappingFileFormat.h"

namespace dolqctl {

namespace {

bool mayMean(const std::string& name, const char* known) {
    return isMisspelt(name, known) ||
           (name.size() > 4 && std::strstr(known, name.c_str()) != nullptr);
}

/// The value of the attribute, or of one that was meant to be it.
std::string valueOf(const TiXmlElement& element, const char* name) {
    const TiXmlAttribute* found = findAttribute(element, name);
    for (const auto* each = element.FirstAttribute(); found == nullptr && each != nullptr;
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

const std::vector<RuleText>& ruleTexts() {
    static const std::vector<RuleText> texts = {
#define DOLQCTL_TEXT(rule, name, severity, sentence) {name, Severity::severity, sentence},
        DOLQCTL_RULES(DOLQCTL_TEXT)
#undef DOLQCTL_TEXT
    };
    return texts;
}

const RuleText& Finding::ruleText() const { return ruleTexts()[static_cast<std::size_t>(rule)]; }

std::string Finding::message() const {
    std::string text;
    for (const char* at = ruleText().sentence; *at != '\0'; ++at) {
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

bool Finding::costsTheFile() const { return rule == Rule::NotLoaded || rule == Rule::NoMapping; }

bool Finding::isAbout(std::uint32_t faultId, const std::string& moClass) const {
    if (element == nullptr) {
        return false;
    }
    const std::string number = element->faultId.substr(
        std::min(element->faultId.find_first_of("-0123456789"), element->faultId.size()));
    bool isFound = moClass.empty();
    std::istringstream classes(element->classes);
    for (std::string each; !isFound && std::getline(classes, each, ',');) {
        isFound = folded(each) == folded(moClass);
    }
    return isFound && !number.empty() &&
           static_cast<std::uint32_t>(std::strtoll(number.c_str(), nullptr, 10)) == faultId;
}

void to_json(nlohmann::ordered_json& json, const FilePosition& position) {
    json = {{"file", position.file}, {"line", position.line}, {"column", position.column}};
}

void to_json(nlohmann::ordered_json& json, const Finding& finding) {
    json = finding.position;
    json["severity"] = finding.severity() == Severity::Error ? "error" : "warning";
    json["rule"] = finding.name();
    json["message"] = finding.message();
    if (finding.other) {
        json["other"] = *finding.other;
    }
    if (finding.more > 0) {
        json["more"] = finding.more;
    }
}

FilePosition MappingFileChecker::positionOf(const TiXmlBase& part) const {
    return {m_file, part.Row(), part.Column()};
}

void MappingFileChecker::beginElement(const TiXmlElement* element) {
    m_about = element;
    m_element.reset();
}

void MappingFileChecker::add(Finding finding) {
    auto& [count, last] = m_kept[finding.rule];
    if (count == m_most) {
        ++m_findings[last].more;
        return;
    }
    ++count;
    last = m_findings.size();
    if (m_about != nullptr && m_element == nullptr) {
        m_element = std::make_shared<const MappingElement>(
            MappingElement{positionOf(*m_about), valueOf(*m_about, dolq::xmlconf::kFaultId),
                           valueOf(*m_about, dolq::xmlconf::kMoClass)});
    }
    finding.element = m_element;
    m_findings.push_back(std::move(finding));
}

void MappingFileChecker::add(Rule rule, const TiXmlBase& part, std::vector<std::string> texts) {
    add({positionOf(part), rule, std::move(texts)});
}

void MappingFileChecker::addUnreadText(const TiXmlElement& element) {
    for (const auto* node = element.FirstChild(); node != nullptr; node = node->NextSibling()) {
        if (const TiXmlText* const text = node->ToText()) {
            const bool isElement = text->ValueStr().find('=') != std::string::npos;
            add(isElement ? Rule::UnreadElement : Rule::UnreadText, *text, {text->ValueStr()});
        }
    }
}

void MappingFileChecker::addUnknownAttributes(const TiXmlElement& element,
                                              const std::vector<const char*>& known) {
    for (const auto* each = element.FirstAttribute(); each != nullptr; each = each->Next()) {
        const std::string name = each->Name();
        const auto meant = std::find_if(known.begin(), known.end(), [&](const char* attribute) {
            return mayMean(name, attribute) && element.Attribute(attribute) == nullptr;
        });
        if (std::find(known.begin(), known.end(), name) != known.end()) {
            continue;
        }
        if (meant != known.end()) {
            add(Rule::LostAttribute, *each, {name, *meant});
        } else {
            add(Rule::UnknownAttribute, *each, {name});
        }
    }
}

std::vector<Finding> MappingFileChecker::takeFindings() {
    std::stable_sort(m_findings.begin(), m_findings.end(),
                     [](const Finding& one, const Finding& other) {
                         return std::tie(one.position.line, one.position.column) <
                                std::tie(other.position.line, other.position.column);
                     });
    m_kept.clear();
    return std::exchange(m_findings, {});
}

const TiXmlAttribute* findAttribute(const TiXmlElement& element, const char* name) {
    const TiXmlAttribute* attribute = element.FirstAttribute();
    while (attribute != nullptr && std::strcmp(attribute->Name(), name) != 0) {
        attribute = attribute->Next();
    }
    return attribute;
}

} // namespace dolqctl
