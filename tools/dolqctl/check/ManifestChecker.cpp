#include <algorithm>
#include <filesystem>
#include <system_error>

#include <tinyxml.h>

#include "Output.h"
#include "check/MappingFileChecker.h"
#include "common/LoadModuleNames.h"

namespace dolqctl {

namespace {

class ManifestChecker {
public:
    explicit ManifestChecker(Findings& findings)
        : m_folder(std::filesystem::path(findings.file()).parent_path()), m_findings(findings) {}

    std::vector<LoadModuleFile> check(const TiXmlElement& root) {
        if (!isElement(root, "loadModules", {})) {
            return {};
        }
        if (root.FirstChildElement() == nullptr) {
            m_findings.addFile(Rule::NoLoadModule);
        }
        for (const TiXmlElement* module = root.FirstChildElement(); module != nullptr;
             module = module->NextSiblingElement()) {
            if (isElement(*module, "loadModule", {"productNumber", "revision", "name"})) {
                m_module = {valueOf(*module, "productNumber"), valueOf(*module, "revision")};
                for (const TiXmlElement* file = module->FirstChildElement(); file != nullptr;
                     file = file->NextSiblingElement()) {
                    checkFile(*file);
                }
            }
        }
        return m_files;
    }

private:
    static std::string valueOf(const TiXmlElement& element, const char* name) {
        const char* const value = element.Attribute(name);
        return value != nullptr ? value : "";
    }

    /// Also looks at its attributes, of which only the name of a load module may be missing, and at
    /// the texts between its children.
    bool isElement(const TiXmlElement& element, const char* expected,
                   const std::vector<const char*>& attributes) {
        if (element.ValueStr() != expected) {
            m_findings.add(Rule::OtherElement, element, {element.ValueStr(), expected});
            return false;
        }
        m_findings.addUnreadText(element);
        m_findings.addUnknownAttributes(element, attributes);
        for (const std::string name : attributes) {
            const TiXmlAttribute* const attribute = findAttribute(element, name.c_str());
            const std::string value = attribute != nullptr ? attribute->ValueStr() : "";
            const bool isNumber = name == "productNumber" || name == "revision";
            const bool isPlain =
                std::all_of(value.begin(), value.end(), [](char c) { return c > ' ' && c <= '~'; });
            if (name != "name" && (attribute == nullptr || (value.empty() && !isNumber))) {
                m_findings.add(Rule::NoManifestValue, element, {name});
            } else if (isNumber && (value.empty() || !isPlain)) {
                m_findings.add(Rule::OddNumber, *attribute, {name, value});
            }
        }
        return true;
    }

    void checkFile(const TiXmlElement& file) {
        if (!isElement(file, "file", {"tag", "path"})) {
            return;
        }
        if (const TiXmlElement* const child = file.FirstChildElement()) {
            m_findings.add(Rule::MisplacedElement, *child, {child->ValueStr(), file.ValueStr()});
        }
        const std::string tag = valueOf(file, "tag");
        const std::string value = valueOf(file, "path");
        const std::filesystem::path path = m_folder / value;
        std::error_code error;
        if (!value.empty() && (!std::filesystem::is_regular_file(path, error) ||
                               std::filesystem::equivalent(path, m_findings.file(), error))) {
            m_findings.add(Rule::MissingFile, *findAttribute(file, "path"), {value});
        } else if (!value.empty() && tag == common::kMappingFileTag) {
            m_files.emplace_back(m_module, path.string());
        }
        const bool isMisspeltTag = isMisspelt(tag, common::kMappingFileTag);
        if (tag != common::kMappingFileTag &&
            (isMisspeltTag || folded(tag).find(L"map") != std::wstring::npos)) {
            m_findings.add(isMisspeltTag ? Rule::MisspeltTag : Rule::OtherTag,
                           *findAttribute(file, "tag"), {tag});
        }
    }

    const std::filesystem::path m_folder;
    Findings& m_findings;
    LoadModule m_module;
    std::vector<LoadModuleFile> m_files;
};

} // namespace

std::vector<LoadModuleFile> checkManifest(const TiXmlElement& root, Findings& findings) {
    return ManifestChecker(findings).check(root);
}

} // namespace dolqctl
