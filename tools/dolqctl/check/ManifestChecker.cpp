#include <algorithm>
#include <filesystem>
#include <system_error>

#include "Output.h"
#include "check/MappingFileChecker.h"
#include "common/LoadModuleNames.h"

namespace dolqctl {

/// Returns the values of the attributes `names` if the element may stand there, or nothing. All but
/// a "name" must be there, and those of a file have a value.
std::vector<std::string> MappingFileChecker::checkElement(const TiXmlElement& element,
                                                          const char* expected,
                                                          const std::vector<const char*>& names) {
    if (element.ValueStr() != expected) {
        add(Rule::NotLoaded, element,
            {inQuotes(element.ValueStr()) + " in place of '" + expected + "'"});
        return {};
    }
    addUnreadText(element);
    addUnknownAttributes(element, names);
    std::vector<std::string> values;
    for (const std::string name : names) {
        const TiXmlAttribute* const attribute = findAttribute(element, name.c_str());
        const auto& value = values.emplace_back(attribute != nullptr ? attribute->Value() : "");
        const bool isNumber = name == "productNumber" || name == "revision";
        const bool isPlain =
            std::all_of(value.begin(), value.end(), [](char c) { return c > ' ' && c <= '~'; });
        if (name != "name" && (attribute == nullptr || (value.empty() && !isNumber))) {
            add(Rule::NotLoaded, element, {"'" + name + "' is missing or empty"});
        } else if (attribute != nullptr && isNumber && (value.empty() || !isPlain)) {
            add(Rule::OddNumber, *attribute, {name, value});
        }
    }
    return values;
}

/// A file of the `loadModule`.
void MappingFileChecker::checkFile(const TiXmlElement& file, const LoadModule& loadModule) {
    const auto values = checkElement(file, "file", {"tag", "path"});
    if (values.empty() || values[0].empty() || values[1].empty()) {
        return;
    }
    if (const TiXmlElement* const child = file.FirstChildElement()) {
        add(Rule::LostElement, *child, {child->ValueStr(), "nothing in a 'file' is"});
    }
    const bool isMapping = values[0] == common::kMappingFileTag;
    if (!isMapping && isMisspelt(values[0], common::kMappingFileTag)) {
        add(Rule::LostTag, *findAttribute(file, "tag"), {values[0]});
    } else if (!isMapping && folded(values[0]).find(L"map") != std::wstring::npos) {
        add(Rule::OtherTag, *findAttribute(file, "tag"), {values[0]});
    }
    std::error_code error;
    const auto path = std::filesystem::path(m_file).parent_path() / values[1];
    if (!std::filesystem::is_regular_file(path, error) ||
        std::filesystem::equivalent(path, m_file, error)) {
        add(Rule::MissingFile, *findAttribute(file, "path"), {values[1]});
    } else if (isMapping) {
        m_manifestFiles->emplace_back(loadModule, path.string());
    }
}

void MappingFileChecker::checkManifest(const TiXmlElement& root) {
    checkElement(root, "loadModules", {});
    if (root.FirstChildElement() == nullptr) {
        add({{m_file}, Rule::NoLoadModule});
    }
    for (const auto* each = root.FirstChildElement(); each != nullptr;
         each = each->NextSiblingElement()) {
        LoadModule loadModule =
            checkElement(*each, "loadModule", {"productNumber", "revision", "name"});
        const bool isRead = !loadModule.empty();
        loadModule.resize(2);
        for (const auto* file = each->FirstChildElement(); file != nullptr && isRead;
             file = file->NextSiblingElement()) {
            checkFile(*file, loadModule);
        }
    }
}

} // namespace dolqctl
