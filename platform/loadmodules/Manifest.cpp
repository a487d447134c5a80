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

/// Goes on behind what it refuses, for the observer to hear of all of it.
class Reader {
public:
    /// `directory` ends in a slash.
    Reader(std::string directory, std::vector<LoadModule>& modules, ManifestObserverI& observer)
        : m_directory(std::move(directory)), m_modules(modules), m_observer(observer) {}

    bool read(std::string text) {
        const bool hasNul = text.find('\0') != std::string::npos;
        common::XmlDocument document;
        document.SetTabSize(m_observer.wantsPlaces() ? 1 : 0);
        const bool isLoaded = document.load(std::move(text));
        const TiXmlElement* const root = document.FirstChildElement();
        if (hasNul || !isLoaded || !document.isLoadedWhole() || root == nullptr ||
            root->NextSiblingElement() != nullptr) {
            m_observer.onNotLoaded(document);
            return false;
        }
        if (!isNamed(*root, "loadModules")) {
            return false;
        }
        bool isGood = true;
        for (const TiXmlElement* child = root->FirstChildElement(); child != nullptr;
             child = child->NextSiblingElement()) {
            isGood = readLoadModule(*child, m_modules.emplace_back()) && isGood;
        }
        return isGood;
    }

private:
    bool readLoadModule(const TiXmlElement& element, LoadModule& module) {
        if (!isNamed(element, "loadModule")) {
            return false;
        }
        bool isGood = readAttribute(element, "productNumber", module.productNumber);
        isGood = readAttribute(element, "revision", module.revision) && isGood;
        const char* const name = element.Attribute("name");
        module.name = name != nullptr ? name : "";
        for (const TiXmlElement* child = element.FirstChildElement(); child != nullptr;
             child = child->NextSiblingElement()) {
            isGood = readFile(*child, module.files.emplace_back()) && isGood;
        }
        return isGood;
    }

    bool readFile(const TiXmlElement& element, TaggedFile& file) {
        if (!isNamed(element, "file")) {
            return false;
        }
        bool isGood = readAttribute(element, "tag", file.tag, false);
        isGood = readAttribute(element, "path", file.path, false) && isGood;
        if (isGood && file.path.front() != '/') {
            file.path.insert(0, m_directory);
        }
        return isGood;
    }

    bool isNamed(const TiXmlElement& element, const char* name) {
        const bool isNamed = std::strcmp(element.Value(), name) == 0;
        isNamed ? m_observer.onElement(element) : m_observer.onOtherElement(element, name);
        return isNamed;
    }

    bool readAttribute(const TiXmlElement& element, const char* name, std::string& value,
                       bool mayBeEmpty = true) {
        const char* const text = element.Attribute(name);
        if (text == nullptr || (*text == '\0' && !mayBeEmpty)) {
            m_observer.onMissingAttribute(element, name);
            return false;
        }
        value = text;
        return true;
    }

    const std::string m_directory;
    std::vector<LoadModule>& m_modules;
    ManifestObserverI& m_observer;
};

} // namespace

int readManifest(const std::string& path, std::vector<LoadModule>& modules) {
    ManifestObserverI nobody;
    return readManifest(path, modules, nobody);
}

int readManifest(const std::string& path, std::vector<LoadModule>& modules,
                 ManifestObserverI& observer) {
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
    return Reader(path.substr(0, path.rfind('/') + 1), modules, observer).read(std::move(text))
               ? VELK_OK
               : VELK_MALFORMED_MANIFEST;
}

} // namespace platform::loadmodules
