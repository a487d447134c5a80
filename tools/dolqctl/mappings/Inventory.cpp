#include "mappings/Inventory.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <tinyxml.h>

#include "Output.h"
#include "adapter/MinorType.h"
#include "common/RegularFile.h"
#include "common/XmlDocument.h"
#include "xmlconf/dolqXmlConfigurator.h"

namespace dolqctl {

namespace {

class Recorder final : public dolq::xmlconf::MappingFileObserverI {
public:
    Recorder(const std::string& path, Inventory& inventory)
        : m_path(path), m_inventory(inventory) {}

    void onNotLoaded(const TiXmlDocument& document) override {
        m_inventory.unreadable.push_back(whyNotLoaded(m_path, document));
    }
    void onNoRoot() override { m_inventory.unreadable.push_back(whyNoRoot(m_path)); }
    void onSkipped(const TiXmlElement& element) override {
        m_inventory.skipped.push_back(positionOf(m_path, element));
    }
    void onMappingWithoutClass(const TiXmlElement& element, std::uint32_t faultId,
                               std::uint32_t minorType) override {
        onMapping(element, faultId, minorType, {});
    }
    void onMapping(const TiXmlElement& element, std::uint32_t faultId, std::uint32_t minorType,
                   const std::string& moClass) override {
        m_mapsNothing = false;
        m_inventory.mappings[{faultId, moClass}].push_back(
            {faultId, moClass, minorType, positionOf(m_path, element)});
    }
    bool mapsNothing() const { return m_mapsNothing; }

private:
    const std::string& m_path;
    Inventory& m_inventory;
    bool m_mapsNothing = true;
};

} // namespace

FilePosition positionOf(const std::string& file, const TiXmlBase& part) {
    return {file, part.Row(), part.Column()};
}

std::string positionText(const FilePosition& position) {
    return lineText(position) + (position.column == 0 ? "" : ':' + std::to_string(position.column));
}

std::string lineText(const FilePosition& position, std::size_t skipped) {
    return printable(position.file.substr(skipped)) +
           (position.line == 0 ? "" : ':' + std::to_string(position.line));
}

std::string commonFolder(const std::vector<std::string>& paths) {
    std::string common = paths.empty() ? "" : paths.front();
    for (const std::string& path : paths) {
        const auto end = std::mismatch(common.begin(), common.end(), path.begin(), path.end());
        common.erase(end.first, common.end());
    }
    return common.substr(0, common.rfind('/') + 1);
}

std::string alarmText(std::uint32_t minorType) {
    return std::to_string(dolq::majorIdOf(minorType)) + '/' +
           std::to_string(dolq::minorIdOf(minorType));
}

UnreadableFile whyNotLoaded(const std::string& path, const TiXmlDocument& document) {
    if (document.Error()) {
        std::string reason = document.ErrorDesc();
        if (!reason.empty() && reason.back() == '.') {
            reason.pop_back();
        }
        return {{path, document.ErrorRow(), document.ErrorCol()}, std::move(reason)};
    }
    std::string text;
    switch (const int error = common::readRegularFile(path, text.max_size(), text)) {
    case 0:
        return {{path},
                "not given to the parser: more than " + std::to_string(common::XmlLimits().depth) +
                    " levels of elements, or more than " +
                    std::to_string(common::XmlLimits().attributes) + " attributes in one"};
    case EISDIR:
    case EINVAL:
        return {{path}, "not a regular file"};
    default:
        return {{path}, std::strerror(error)};
    }
}

UnreadableFile whyNoRoot(const std::string& path) { return {{path}, "no root element"}; }

Inventory readMappingFiles(const std::vector<std::string>& paths) {
    Inventory inventory;
    dolq::xmlconf::MappingXmlConfigurator configurator;
    for (const std::string& path : paths) {
        Recorder recorder(path, inventory);
        if (configurator.readMappingFile(path, recorder) && recorder.mapsNothing()) {
            inventory.unreadable.push_back({{path}, "none of its elements is a mapping"});
        }
    }
    return inventory;
}

} // namespace dolqctl
