// A whole client decoded from the input: factories and adapters of both generations, every
// operation, configuration, environment, and a service that fails as scripted. The service's guard
// zones must stay whole, and everything must be given back.

#include <memory>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "FakePlatform.h"
#include "Fuzzing.h"
#include "ruxa/fm/dolq/v1/FmiFactory.h"
#include "ruxa/fm/dolq/v2/FmiFactory.h"

namespace {

namespace v1 = ruxa::fm::dolq::v1;
namespace v2 = ruxa::fm::dolq::v2;
using ruxa::fm::fmi::v1::FaultManagementI;

constexpr const char* kEnvironment[] = {"SYSTEM_UUID", "COMPUTE_NAME", "ZBN_NO", "ZBN_NUM",
                                        "ZBN_REV"};
constexpr char kMappings[] =
    R"(<m><mapping faultid="0" minor_type_id="65537" managed_object_class="Unit"/>)"
    R"(<mapping faultid="1" minor_type_id="2" managed_object_class="Unit,Other"/>)"
    R"(<mapping faultid="2" minor_type_id="3"/></m>)";

class Session {
public:
    Session(const std::uint8_t* data, std::size_t size) : m_input(data, size) {}

    void run() {
        for (const char* const name : kEnvironment) {
            unsetenv(name);
        }
        static const InputFile mappings(reinterpret_cast<const std::uint8_t*>(kMappings),
                                        sizeof kMappings - 1);
        setenv("ZBN_NO", "CXC1", 1);
        setenv("ZBN_REV", "R1A", 1);
        platform().loadModules["local"] = {{"CXC1", "R1A", {{"alarm_mapping", mappings.path()}}}};
        while (m_input.remaining_bytes() != 0) {
            step();
        }
        m_clients.clear();
        v1::freeFmiFactory();
        v2::freeFmiFactory();
    }

private:
    void step() {
        switch (m_input.ConsumeIntegralInRange(0, 8)) {
        case 0:
            if (m_clients.size() < 8) {
                m_clients.emplace_back(v1::getFmiFactory()->createFaultManagement());
            }
            break;
        case 1:
            if (m_clients.size() < 8) {
                m_clients.push_back(v2::getFmiFactory()->createFaultManagement());
            }
            break;
        case 2:
            if (!m_clients.empty()) {
                m_clients.pop_back();
            }
            break;
        case 3:
            changeTable(*v1::getFmiFactory()->getConfiguration());
            break;
        case 4:
            changeEnvironment();
            break;
        case 5:
            changePlatform();
            break;
        default:
            if (!m_clients.empty()) {
                callOperation(
                    *m_clients[m_input.ConsumeIntegral<std::uint8_t>() % m_clients.size()]);
            }
        }
    }

    void changeTable(v1::ConfigurationI& table) {
        switch (m_input.ConsumeIntegralInRange(0, 2)) {
        case 0:
            table.setMapping(fault(), number());
            break;
        case 1:
            table.setMapping(fault(), number(), text());
            break;
        default:
            table.configurationFile(text());
        }
    }

    void changeEnvironment() {
        const char* const name = m_input.PickValueInArray(kEnvironment);
        if (m_input.ConsumeBool()) {
            setenv(name, text().c_str(), 1);
        } else {
            unsetenv(name);
        }
    }

    void changePlatform() {
        switch (m_input.ConsumeIntegralInRange(0, 3)) {
        case 0:
            platform()
                .results[m_input.PickValueInArray(
                    {"initialize", "finalize", "allocate", "value", "send", "free"})]
                .push_back(static_cast<SaAisErrorT>(m_input.ConsumeIntegralInRange(1, 40)));
            break;
        case 1:
            platform().correlationService = m_input.ConsumeBool();
            break;
        case 2:
            platform().underivableEvents.insert(event());
            platform().leftByFailedDerivation = text();
            break;
        default:
            platform().enabledGroups.clear();
            for (const int group : {0, 4, 8}) {
                if (m_input.ConsumeBool()) {
                    platform().enabledGroups.insert(group);
                }
            }
        }
    }

    void callOperation(FaultManagementI& client) {
        const std::string object =
            text() + m_input.PickValueInArray<const char*>({",Unit=", ",Unit", ""}) + text();
        const std::uint32_t id = fault();
        const std::string name = text();
        const int operation = m_input.ConsumeIntegralInRange(0, 10);
        if (operation == 0) {
            client.ceaseAlarm(object, id, name);
            return;
        }
        const std::string additional = text();
        const auto info = list(&Session::text);
        const std::uint32_t severity = m_input.ConsumeIntegralInRange(0U, 6U);
        const std::string uuid = text();
        const std::string compute = text();
        const std::uint32_t group = m_input.ConsumeIntegralInRange(0U, 5U);
        switch (operation) {
        case 1:
            client.raiseAlarm(object, id, name, additional, info, severity, group,
                              list(&Session::event));
            break;
        case 2:
            client.raiseAlarm(object, id, name, additional, info, severity, id,
                              list(&Session::event), group);
            break;
        case 3:
            client.raisePrimaryAlarm(object, id, name, additional, info, severity, event(), uuid,
                                     compute);
            break;
        case 4:
            client.raisePrimaryAlarm(object, id, name, additional, info, severity, event(), uuid,
                                     compute, group);
            break;
        case 5:
            client.raisePrimaryAlarm(object, id, name, additional, info, severity, text(), uuid,
                                     compute);
            break;
        case 6:
            client.raisePrimaryAlarm(object, id, name, additional, info, severity, text(), uuid,
                                     compute, group);
            break;
        case 7:
            client.raiseSecondaryAlarm(object, id, name, additional, info, severity, uuid, compute,
                                       list(&Session::event));
            break;
        case 8:
            client.raiseSecondaryAlarm(object, id, name, additional, info, severity, uuid, compute,
                                       list(&Session::event), group);
            break;
        case 9:
            client.raiseSecondaryAlarm(object, id, name, additional, info, severity, uuid, compute,
                                       list(&Session::text));
            break;
        default:
            client.raiseSecondaryAlarm(object, id, name, additional, info, severity, uuid, compute,
                                       list(&Session::text), group);
        }
        require(platform().openNotifications == 0, "no notification outlives its call");
    }

    std::uint32_t number() { return m_input.ConsumeIntegral<std::uint32_t>(); }
    std::uint32_t fault() { return m_input.ConsumeIntegralInRange(0U, 3U); }
    std::uint32_t event() { return m_input.ConsumeIntegralInRange(0U, 3U); }

    /// Bytes of the input, or one of the lengths around which fields are cut.
    std::string text() {
        const std::size_t length = m_input.PickValueInArray<std::size_t>(
            {0, 0, 0, 0, 0, 0, 0, 598, 599, 600, 65533, 65534, 65535, 65536});
        return length == 0 ? m_input.ConsumeRandomLengthString(64)
                           : std::string(length, m_input.ConsumeIntegral<char>());
    }

    template <typename Entry> std::vector<Entry> list(Entry (Session::*next)()) {
        std::vector<Entry> entries(m_input.ConsumeIntegralInRange<std::size_t>(0, 4));
        for (Entry& entry : entries) {
            entry = (this->*next)();
        }
        return entries;
    }

    FuzzedDataProvider m_input;
    std::vector<std::shared_ptr<FaultManagementI>> m_clients;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    resetPlatform();
    Session(data, size).run();
    require(platform().holdsNothing(), "all is given back, and no byte written past a buffer");
    return 0;
}
