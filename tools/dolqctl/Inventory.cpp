#include "Inventory.h"

#include <iterator>
#include <map>
#include <utility>

#include <tinyxml.h>

#include "QuietTraces.h"
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
        m_inventory.skipped.push_back(placeOf(m_path, element));
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
            {faultId, moClass, minorType, placeOf(m_path, element)});
    }

private:
    const std::string& m_path;
    Inventory& m_inventory;
    Histories& m_histories;
};

} // namespace

Inventory readMappingFiles(const std::vector<std::string>& paths) {
    quietTraces();
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
