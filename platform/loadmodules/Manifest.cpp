#include "platform/loadmodules/Manifest.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include <Velk.h>

#include "common/RegularFile.h"
#include "common/XmlDocument.h"

namespace platform::loadmodules {

namespace {

/// Far beyond the manifest of any node; a larger file is something else.
constexpr std::size_t kMaxManifestSize = std::size_t{16} * 1024 * 1024;

bool isNamed(const TiXmlElement& element, const char* name) {
    return std::strcmp(element.Value(), name) == 0;
}

bool readAttribute(const TiXmlElement& element, const char* name, std::string& value) {
    const char* text = element.Attribute(name);
    value = text != nullptr ? text : "";
    return text != nullptr;
}

bool readFile(const TiXmlElement& element, const std::string& directory, TaggedFile& file) {
    if (!isNamed(element, "file") || !readAttribute(element, "tag", file.tag) ||
        !readAttribute(element, "path", file.path) || file.tag.empty() || file.path.empty()) {
        return false;
    }
    if (file.path.front() != '/') {
        file.path.insert(0, directory);
    }
    return true;
}

bool readLoadModule(const TiXmlElement& element, const std::string& directory, LoadModule& module) {
    if (!isNamed(element, "loadModule") ||
        !readAttribute(element, "productNumber", module.productNumber) ||
        !readAttribute(element, "revision", module.revision)) {
        return false;
    }
    readAttribute(element, "name", module.name);
    for (const TiXmlElement* child = element.FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        if (!readFile(*child, directory, module.files.emplace_back())) {
            return false;
        }
    }
    return true;
}

/// `directory` ends in a slash.
bool readDocument(std::string text, const std::string& directory,
                  std::vector<LoadModule>& modules) {
    if (text.find('\0') != std::string::npos) {
        return false;
    }
    common::XmlDocument document;
    document.SetTabSize(0); // nobody asks for lines
    if (!document.load(std::move(text)) || !document.isLoadedWhole()) {
        return false;
    }
    const TiXmlElement* const root = document.FirstChildElement();
    if (root == nullptr || root->NextSiblingElement() != nullptr ||
        !isNamed(*root, "loadModules")) {
        return false;
    }
    for (const TiXmlElement* child = root->FirstChildElement(); child != nullptr;
         child = child->NextSiblingElement()) {
        if (!readLoadModule(*child, directory, modules.emplace_back())) {
            return false;
        }
    }
    return true;
}

} // namespace

int readManifest(const std::string& path, std::vector<LoadModule>& modules) {
    std::string text;
    switch (common::readRegularFile(path, kMaxManifestSize, text)) {
    case 0:
        break;
    case ENOENT:
        return VELK_OK;
    case EFBIG:
        return VELK_MALFORMED_MANIFEST;
    case ENOMEM:
        return VELK_NO_MEMORY;
    default:
        return VELK_UNREADABLE_MANIFEST;
    }
    const std::string directory = path.substr(0, path.rfind('/') + 1);
    return readDocument(std::move(text), directory, modules) ? VELK_OK : VELK_MALFORMED_MANIFEST;
}

} // namespace platform::loadmodules
