#include "platform/loadmodules/Manifest.h"

#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include <Velk.h>

#include "common/RegularFile.h"
#include "common/XmlDocument.h"

namespace platform::loadmodules {

namespace {

/// Far beyond the manifest of any node; a larger file is something else.
constexpr std::size_t kMaxManifestSize = std::size_t{16} * 1024 * 1024;

/// Stops at the first mistake.
class Reader {
public:
    /// `directory` ends in a slash.
    Reader(std::string directory, std::vector<LoadModule>& modules, std::string& reason)
        : m_directory(std::move(directory)), m_modules(modules), m_reason(reason) {}

    bool read(std::string text) {
        if (text.find('\0') != std::string::npos) {
            return refuse(0, "it holds a NUL byte");
        }
        common::XmlDocument document;
        document.SetTabSize(1); // so that elements know their lines
        if (!document.load(std::move(text))) {
            return document.Error()
                       ? refuse(document.ErrorRow(), document.ErrorDesc())
                       : refuse(0, "too many levels of elements, or attributes of one");
        }
        const TiXmlElement* const root = document.FirstChildElement();
        if (root == nullptr || root->NextSiblingElement() != nullptr || !document.isLoadedWhole()) {
            return refuse(0, "it must hold one 'loadModules' and nothing behind it");
        }
        return isNamed(*root, "loadModules") && eachChild(*root, [this](const TiXmlElement& child) {
                   return readLoadModule(child, m_modules.emplace_back());
               });
    }

private:
    bool readLoadModule(const TiXmlElement& element, LoadModule& module) {
        const char* const name = element.Attribute("name");
        module.name = name != nullptr ? name : "";
        return isNamed(element, "loadModule") &&
               readAttribute(element, "productNumber", module.productNumber) &&
               readAttribute(element, "revision", module.revision) &&
               eachChild(element, [&](const TiXmlElement& child) {
                   return readFile(child, module.files.emplace_back());
               });
    }

    bool readFile(const TiXmlElement& element, TaggedFile& file) {
        if (!isNamed(element, "file") || !readAttribute(element, "tag", file.tag, false) ||
            !readAttribute(element, "path", file.path, false)) {
            return false;
        }
        if (file.path.front() != '/') {
            file.path.insert(0, m_directory);
        }
        return true;
    }

    template <typename Read> static bool eachChild(const TiXmlElement& element, Read read) {
        const TiXmlElement* child = element.FirstChildElement();
        while (child != nullptr && read(*child)) {
            child = child->NextSiblingElement();
        }
        return child == nullptr;
    }

    bool isNamed(const TiXmlElement& element, const char* name) {
        return std::strcmp(element.Value(), name) == 0 ||
               refuse(element.Row(),
                      std::string("'") + element.Value() + "' where '" + name + "' is expected");
    }

    bool readAttribute(const TiXmlElement& element, const char* name, std::string& value,
                       bool mayBeEmpty = true) {
        const char* const text = element.Attribute(name);
        if (text == nullptr || (*text == '\0' && !mayBeEmpty)) {
            return refuse(element.Row(), std::string(text == nullptr ? "no '" : "an empty '") +
                                             name + "' in '" + element.Value() + "'");
        }
        value = text;
        return true;
    }

    bool refuse(int line, const std::string& what) {
        m_reason = (line > 0 ? "line " + std::to_string(line) + ": " : "") + what;
        return false;
    }

    const std::string m_directory;
    std::vector<LoadModule>& m_modules;
    std::string& m_reason;
};

} // namespace

int readManifest(const std::string& path, std::vector<LoadModule>& modules, std::string& reason) {
    std::string text;
    switch (const int error = common::readRegularFile(path, kMaxManifestSize, text)) {
    case 0:
        break;
    case ENOENT:
        return VELK_OK;
    case EFBIG:
        reason = "it has more than 16 MiB";
        return VELK_MALFORMED_MANIFEST;
    default:
        reason = error == EINVAL ? "it is no regular file" : std::generic_category().message(error);
        return VELK_UNREADABLE_MANIFEST;
    }
    return Reader(path.substr(0, path.rfind('/') + 1), modules, reason).read(std::move(text))
               ? VELK_OK
               : VELK_MALFORMED_MANIFEST;
}

} // namespace platform::loadmodules
