#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include <tinyxml.h>

#include "Output.h"
#include "common/LoadModuleNames.h"
#include "common/RegularFile.h"
#include "common/XmlDocument.h"
#include "mappings/XmlChecks.h"

namespace dolqctl {

namespace {

using common::kMappingFileTag;

/// Far beyond the manifest of any node: the embedded handler refuses a larger one.
constexpr std::size_t kMaxManifestSize = std::size_t{16} * 1024 * 1024;

class Checker {
public:
    explicit Checker(Findings& findings)
        : m_folder(std::filesystem::path(findings.file()).parent_path()), m_findings(findings) {}

    void checkRoot(const TiXmlElement& root) {
        if (!isElement(root, kManifestRoot, {})) {
            return;
        }
        if (root.FirstChildElement() == nullptr) {
            m_findings.add({{m_findings.file()},
                            Severity::Warning,
                            "no-load-module",
                            "the manifest names no load module"});
        }
        for (const TiXmlElement* module = root.FirstChildElement(); module != nullptr;
             module = module->NextSiblingElement()) {
            if (isElement(*module, "loadModule", {"productNumber", "revision", "name"})) {
                for (const TiXmlElement* file = module->FirstChildElement(); file != nullptr;
                     file = file->NextSiblingElement()) {
                    checkFile(*file);
                }
            }
        }
    }

private:
    void checkFile(const TiXmlElement& file) {
        if (isElement(file, "file", {"tag", "path"}) && file.FirstChildElement() != nullptr) {
            m_findings.add(Severity::Error, "unknown-element", *file.FirstChildElement(),
                           "nothing inside a 'file' is read");
        }
    }

    /// Also looks at its attributes, of which only the name of a load module may be missing, and at
    /// the texts between its children.
    bool isElement(const TiXmlElement& element, const char* expected,
                   const std::vector<const char*>& attributes) {
        if (element.ValueStr() != expected) {
            refuse(element, inShortQuotes(element.Value()) + " in place of '" + expected + "'");
            return false;
        }
        addUnreadText(element, m_findings);
        addUnknownAttributes(element, attributes, m_findings);
        for (const std::string name : attributes) {
            const TiXmlAttribute* const attribute = findAttribute(element, name.c_str());
            const bool mayBeEmpty = name != "tag" && name != "path";
            if (attribute != nullptr && (mayBeEmpty || !attribute->ValueStr().empty())) {
                checkValue(*attribute);
            } else if (name != "name") {
                refuse(element, (attribute != nullptr ? "an empty '" : "no '") + name + "'");
            }
        }
        return true;
    }

    void refuse(const TiXmlElement& element, const std::string& reason) {
        m_findings.add(Severity::Error, "not-loaded", element,
                       "the whole manifest is refused: " + reason);
    }

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
        } else if (name == "tag" && value != kMappingFileTag &&
                   (isMisspelt(plain, kMappingFileTag) ||
                    folded(value).find("map") != value.npos)) {
            m_findings.add(isMisspelt(plain, kMappingFileTag) ? Severity::Error : Severity::Warning,
                           "misspelt-tag", attribute,
                           written(attribute) + " is not '" + kMappingFileTag +
                               "': the file is not read");
        } else if (isNumber && (plain != value || value.empty())) {
            m_findings.add(Severity::Warning, "odd-number", attribute,
                           written(attribute) + (value.empty()
                                                     ? " fits only programs that have none, either"
                                                     : " holds a blank or an odd character: is " +
                                                           inShortQuotes(plain) + " meant?"));
        }
    }

    const std::filesystem::path m_folder;
    Findings& m_findings;
};

} // namespace

void checkManifest(const std::string& path, XmlText& text, Findings& findings) {
    std::string content;
    common::XmlDocument document;
    document.SetTabSize(1); // so that elements have places
    const int error = common::readRegularFile(path, kMaxManifestSize, content);
    const bool hasNul = content.find('\0') != content.npos;
    const TiXmlElement* const root =
        error == 0 && document.load(std::move(content)) ? document.FirstChildElement() : nullptr;
    if (root == nullptr || hasNul || !document.isLoadedWhole() ||
        root->NextSiblingElement() != nullptr) {
        text.addNotLoaded(document, error == EFBIG ? "it is larger than 16 MiB"
                                                   : "it is no manifest to the embedded handler");
        return;
    }
    Checker(findings).checkRoot(*root);
    text.addErrors();
}

std::vector<Finding> findManifestMistakes(const std::string& path) {
    Findings findings(path, std::string::npos);
    XmlText text(path, findings);
    checkManifest(path, text, findings);
    return findings.take();
}

} // namespace dolqctl
