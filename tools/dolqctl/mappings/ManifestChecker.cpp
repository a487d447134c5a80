#include <filesystem>
#include <map>
#include <system_error>

#include <Velk.h>
#include <tinyxml.h>

#include "Output.h"
#include "mappings/XmlChecks.h"
#include "platform/loadmodules/Manifest.h"
#include "xmlconf/MappingFileFormat.h"

namespace dolqctl {

namespace {

constexpr char kTag[] = "alarm_mapping";

class Checker final : public platform::loadmodules::ManifestObserverI {
public:
    Checker(XmlText& text, Findings& findings)
        : m_folder(std::filesystem::path(findings.file()).parent_path()), m_text(text),
          m_findings(findings) {}

    bool wantsPlaces() const override { return true; }

    void onNotLoaded(const TiXmlDocument& document) override {
        m_text.addNotLoaded(document, "it is no manifest to the embedded load-module handler");
    }

    void onOtherElement(const TiXmlElement& element, const char* expected) override {
        m_findings.add(Severity::Error, "not-loaded", element,
                       "the whole manifest is refused: " + inShortQuotes(element.Value()) +
                           " in place of '" + expected + "'");
    }

    void onMissingAttribute(const TiXmlElement& element, const char* name) override {
        const TiXmlAttribute* const written = findAttribute(element, name);
        m_findings.add(Severity::Error, "not-loaded", element,
                       std::string("the whole manifest is refused: ") +
                           (written != nullptr ? "an empty '" : "no '") + name + "'");
    }

    void onElement(const TiXmlElement& element) override {
        static const std::map<std::string, std::vector<const char*>> kAttributes = {
            {kManifestRoot, {}},
            {"loadModule", {"name", "productNumber", "revision"}},
            {"file", {"tag", "path"}}};
        addUnreadText(element, m_findings);
        addUnknownAttributes(element, kAttributes.at(element.ValueStr()), m_findings);
        for (const char* const name : kAttributes.at(element.ValueStr())) {
            if (const TiXmlAttribute* const attribute = findAttribute(element, name)) {
                checkValue(*attribute);
            }
        }
        if (element.ValueStr() == "file" && element.FirstChildElement() != nullptr) {
            m_findings.add(Severity::Error, "unknown-element", *element.FirstChildElement(),
                           "nothing inside a 'file' is read");
        }
    }

private:
    void checkValue(const TiXmlAttribute& attribute) {
        const std::string name = attribute.Name();
        const std::string value = attribute.Value();
        const std::string plain = plainText(value).letters;
        std::error_code error;
        const auto file = m_folder / value;
        const bool isNumber = name == "productNumber" || name == "revision";
        if (name == "path" && !value.empty() &&
            (!std::filesystem::is_regular_file(file, error) ||
             std::filesystem::equivalent(file, m_findings.file(), error))) {
            m_findings.add(Severity::Warning, "missing-file", attribute,
                           written(attribute) + " is no regular file, or the manifest itself; a "
                                                "relative path counts from its folder");
        } else if (name == "tag" && value != kTag &&
                   (isMisspelt(plain, kTag) || folded(value).find("map") != value.npos)) {
            m_findings.add(isMisspelt(plain, kTag) ? Severity::Error : Severity::Warning,
                           "misspelt-tag", attribute,
                           written(attribute) + " is not '" + kTag + "': the file is not read");
        } else if (isNumber && (plain != value || value.empty())) {
            m_findings.add(Severity::Warning, "odd-number", attribute,
                           written(attribute) + (value.empty()
                                                     ? " fits only programs that have none, either"
                                                     : " holds a blank or an odd character: is " +
                                                           inShortQuotes(plain) + " meant?"));
        }
    }

    const std::filesystem::path m_folder;
    XmlText& m_text;
    Findings& m_findings;
};

} // namespace

void checkManifest(const std::string& path, XmlText& text, Findings& findings) {
    Checker checker(text, findings);
    std::vector<platform::loadmodules::LoadModule> modules;
    const int result = platform::loadmodules::readManifest(path, modules, checker);
    text.addErrors();
    if (result != VELK_OK ? !findings.hasError() : !text.wasRead()) {
        text.addNotLoaded({}, "error " + std::to_string(result) +
                                  " of the embedded load-module handler");
    } else if (result == VELK_OK && modules.empty()) {
        findings.add({{findings.file()},
                      Severity::Warning,
                      "no-load-module",
                      "the manifest names no load module"});
    }
}

std::vector<Finding> findManifestMistakes(const std::string& path) {
    Findings findings(path, std::string::npos);
    XmlText text(path, findings);
    checkManifest(path, text, findings);
    return findings.take();
}

} // namespace dolqctl
