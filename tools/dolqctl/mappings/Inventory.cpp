#include "mappings/Inventory.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <map>
#include <utility>

#include <tinyxml.h>

#include "Output.h"
#include "adapter/MinorType.h"
#include "common/RegularFile.h"
#include "common/XmlDocument.h"
#include "xmlconf/dolqXmlConfigurator.h"

namespace dolqctl {

namespace {

/// All mappings ever read for one fault id and class, in reading order.
using Histories = std::map<std::pair<std::uint32_t, std::string>, std::vector<Mapping>>;

class Recorder final : public dolq::xmlconf::MappingFileObserverI {
public:
    explicit Recorder(const std::string& path, Inventory& inventory, Histories& histories)
        : m_path(path), m_inventory(inventory), m_histories(histories) {}

    void onNotLoaded(const TiXmlDocument& document) override {
        m_inventory.unreadable.push_back(whyNotLoaded(m_path, document));
    }
    void onNoRoot() override { m_inventory.unreadable.push_back(whyNoRoot(m_path)); }
    void onRoot(const TiXmlElement&) override { m_inventory.files.push_back({m_path}); }
    void onSkipped(const TiXmlElement& element) override {
        ++m_inventory.files.back().skipped;
        m_inventory.skipped.push_back(positionOf(m_path, element));
    }
    void onMappingWithoutClass(const TiXmlElement& element, std::uint32_t faultId,
                               std::uint32_t minorType) override {
        onMapping(element, faultId, minorType, {});
    }
    void onMapping(const TiXmlElement& element, std::uint32_t faultId, std::uint32_t minorType,
                   const std::string& moClass) override {
        ++m_inventory.files.back().mappings;
        m_inventory.table.set(faultId, minorType, moClass);
        m_histories[{faultId, moClass}].push_back(
            {faultId, moClass, minorType, positionOf(m_path, element)});
    }

private:
    const std::string& m_path;
    Inventory& m_inventory;
    Histories& m_histories;
};

} // namespace

FilePosition positionOf(const std::string& file, const TiXmlBase& part) {
    return {file, part.Row(), part.Column()};
}

std::string positionText(const FilePosition& position) {
    return lineText(position) + (position.column == 0 ? "" : ':' + std::to_string(position.column));
}

std::string lineText(const FilePosition& position) {
    return printable(position.file) +
           (position.line == 0 ? "" : ':' + std::to_string(position.line));
}

std::string hexText(std::uint32_t minorType) {
    char text[sizeof("0x00010002")];
    std::snprintf(text, sizeof(text), "0x%08X", minorType);
    return text;
}

std::string alarmText(std::uint32_t minorType) {
    return std::to_string(dolq::majorIdOf(minorType)) + '/' +
           std::to_string(dolq::minorIdOf(minorType));
}

std::string overriddenText(const EffectiveMapping& effective) {
    std::string all;
    for (const Mapping& mapping : effective.overridden) {
        all += (all.empty() ? "" : ", ") + std::to_string(mapping.minorType) + " at " +
               lineText(mapping.position);
    }
    return all;
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
    Histories histories;
    dolq::xmlconf::MappingXmlConfigurator configurator;
    for (const std::string& path : paths) {
        Recorder recorder(path, inventory, histories);
        configurator.readMappingFile(path, recorder);
    }
    for (const dolq::MappingTable::Block& block : inventory.table.blocks()) {
        for (const dolq::MappingTable::Entry& entry : block) {
            std::vector<Mapping>& history = histories.at({entry.faultId, entry.moClass});
            inventory.effective.push_back({std::move(history.back()),
                                           {std::make_move_iterator(std::next(history.rbegin())),
                                            std::make_move_iterator(history.rend())}});
        }
    }
    return inventory;
}

} // namespace dolqctl
