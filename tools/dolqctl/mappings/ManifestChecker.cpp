#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>
#include <system_error>

#include <tinyxml.h>

#include "Output.h"
#include "mappings/Checkers.h"
#include "platform/loadmodules/Manifest.h"
#include "xmlconf/MappingFileFormat.h"

namespace dolqctl {

namespace {

constexpr char kRoot[] = "loadModules";
constexpr char kTag[] = "alarm_mapping";

class Checker final : public platform::loadmodules::ManifestObserverI {
public:
    Checker(const XmlText& text, Findings& findings)
        : m_folder(std::filesystem::path(findings.file()).parent_path()), m_text(text),
          m_findings(findings) {}

    bool wantsPlaces() const override { return true; }

    void onNotLoaded(const TiXmlDocument& document) override {
        if (!m_text.failure.empty() || !m_findings.hasError()) { // else: goes on behind the root
            addNotLoaded(m_text, document, m_findings);
        }
    }

    void onOtherElement(const TiXmlElement& element, const char* expected) override {
        const std::string name = element.Value();
        std::string message = "the whole manifest is refused: " + inShortQuotes(name) +
                              " in place of '" + expected + "'";
        if (expected == std::string(kRoot) &&
            element.FirstChildElement(dolq::xmlconf::kMapping) != nullptr) {
            message += "; it looks like a mapping file";
        } else if (name == "file") {
            message += "; a 'file' belongs into a 'loadModule'";
        }
        m_findings.add(Severity::Error, "unknown-element", element, message);
    }

    void onMissingAttribute(const TiXmlElement& element, const char* name) override {
        const TiXmlAttribute* const written = findAttribute(element, name);
        m_findings.add(Severity::Error, "missing-attribute", element,
                       std::string("the whole manifest is refused: ") +
                           (written != nullptr ? "an empty '" : "no '") + name + "'");
    }

    void onElement(const TiXmlElement& element) override {
        static const std::map<std::string, std::vector<const char*>> kAttributes = {
            {kRoot, {}},
            {"loadModule", {"name", "productNumber", "revision"}},
            {"file", {"tag", "path"}}};
        addUnreadText(element, m_findings);
        addUnknownAttributes(element, kAttributes.at(element.ValueStr()), m_findings);
        for (const char* const name : kAttributes.at(element.ValueStr())) {
            if (const TiXmlAttribute* const attribute = findAttribute(element, name)) {
                checkValue(*attribute);
            }
        }
        if (element.FirstChildElement() != nullptr && element.ValueStr() == "file") {
            m_findings.add(Severity::Error, "unknown-element", *element.FirstChildElement(),
                           "nothing inside a 'file' is read");
        }
    }

private:
    void checkValue(const TiXmlAttribute& attribute) {
        const std::string name = attribute.Name();
        const std::string value = attribute.Value();
        std::string plain = plainText(value).letters;
        plain.erase(std::remove_if(plain.begin(), plain.end(),
                                   [](unsigned char c) { return std::isspace(c) != 0; }),
                    plain.end());
        std::error_code error;
        if (name == "path" && !value.empty() && !std::filesystem::exists(m_folder / value, error)) {
            m_findings.add(Severity::Warning, "missing-file", attribute,
                           written(attribute) + " is not there: a relative path counts from the "
                                                "folder of the manifest");
        } else if (name == "tag" && value != kTag &&
                   (isMisspelt(plain, kTag) || isMisspelt(plain, std::string(kTag) + ".xml"))) {
            m_findings.add(Severity::Error, "misspelt-tag", attribute,
                           written(attribute) + " is not '" + kTag + "': the file is not read");
        } else if ((name == "productNumber" || name == "revision") && plain != value) {
            m_findings.add(
                Severity::Warning, "blank-in-number", attribute,
                written(attribute) +
                    " holds a blank, or a character that looks like another one or like nothing: is " +
                    inShortQuotes(plain) + " meant?");
        }
    }

    const std::filesystem::path m_folder;
    const XmlText& m_text;
    Findings& m_findings;
};

} // namespace

bool isManifest(const XmlText& text) { return isMisspelt(text.rootName, kRoot); }

void checkManifest(const std::string& path, const XmlText& text, Findings& findings) {
    if (text.readError != 0) {
        addNotLoaded(text, {}, findings);
        return;
    }
    Checker checker(text, findings);
    std::vector<platform::loadmodules::LoadModule> modules;
    const int result = platform::loadmodules::readManifest(path, modules, checker);
    if (result != 0 && !findings.hasError()) {
        findings.add(Severity::Error, "not-loaded", TiXmlElement(""),
                     "the whole manifest is refused: error " + std::to_string(result) +
                         " of the embedded load-module handler");
    }
}

std::vector<Finding> findManifestMistakes(const std::string& path) {
    Findings findings(path);
    checkManifest(path, checkText(path, findings), findings);
    return findings.take();
}

} // namespace dolqctl
