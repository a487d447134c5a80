#include <filesystem>
#include <system_error>

#include "Output.h"
#include "check/MappingFileChecker.h"
#include "common/LoadModuleNames.h"

namespace dolqctl {

/// A file of the `loadModule`.
void MappingFileChecker::checkFile(const TiXmlElement& file, const LoadModule& loadModule) {
    addUnread(file);
    addUnreadAttributes(file, {"tag", "path"});
    const std::string tag = textOf(file, "tag");
    const std::string path = textOf(file, "path");
    if (tag.empty() || path.empty()) {
        add(Rule::NotLoaded, file, file, {"'tag' or 'path' is missing or empty"});
        return;
    }
    const auto place = std::filesystem::path(m_file).parent_path() / path;
    std::error_code error;
    if (!std::filesystem::is_regular_file(place, error)) {
        add(Rule::MissingFile, file, *findAttribute(file, "path"), {path});
    } else if (tag == common::kMappingFileTag) {
        m_manifestFiles->emplace_back(loadModule, place.string());
    }
    if (tag != common::kMappingFileTag && isMisspelt(tag, common::kMappingFileTag)) {
        add(Rule::MisspeltTag, file, *findAttribute(file, "tag"), {tag});
    }
}

void MappingFileChecker::checkManifest(const TiXmlElement& root) {
    if (root.ValueStr() != "loadModules") {
        add(Rule::NotLoaded, root, root, {"the root is not 'loadModules'"});
    }
    addUnread(root, "loadModule", true);
    for (const auto* each = root.FirstChildElement("loadModule"); each != nullptr;
         each = each->NextSiblingElement("loadModule")) {
        addUnread(*each, "file", true);
        addUnreadAttributes(*each, {"productNumber", "revision", "name"});
        if (each->Attribute("productNumber") == nullptr || each->Attribute("revision") == nullptr) {
            add(Rule::NotLoaded, *each, *each, {"'productNumber' or 'revision' is missing"});
        }
        for (const auto* file = each->FirstChildElement("file"); file != nullptr;
             file = file->NextSiblingElement("file")) {
            checkFile(*file, {textOf(*each, "productNumber"), textOf(*each, "revision")});
        }
    }
}

} // namespace dolqctl
