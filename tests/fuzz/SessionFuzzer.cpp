// A whole client decoded from the input: factories and adapters of both generations, every
// operation, configuration, environment, and a service that fails as scripted. The service's guard
// zones must stay whole, and everything must be given back.

#include <functional>
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
        const int step = m_input.ConsumeIntegralInRange(0, 8);
        if (step == 0 && m_clients.size() < 8) {
            m_clients.emplace_back(v1::getFmiFactory()->createFaultManagement());
        } else if (step == 1 && m_clients.size() < 8) {
            m_clients.push_back(v2::getFmiFactory()->createFaultManagement());
        } else if (step == 2 && !m_clients.empty()) {
            m_clients.pop_back();
        } else if (step == 3) {
            changeTable(*v1::getFmiFactory()->getConfiguration());
        } else if (step == 4) {
            changeEnvironment();
        } else if (step == 5) {
            changePlatform();
        } else if (!m_clients.empty()) {
            callOperation(*m_clients[m_input.ConsumeIntegral<std::uint8_t>() % m_clients.size()]);
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
        const auto operation = m_input.ConsumeIntegralInRange<std::size_t>(0, 10);
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
#define ALARM object, id, name, additional, info, severity
        const std::function<void()> raises[] = {
            [&] { client.raiseAlarm(ALARM, group, list(&Session::event)); },
            [&] { client.raiseAlarm(ALARM, id, list(&Session::event), group); },
            [&] { client.raisePrimaryAlarm(ALARM, event(), uuid, compute); },
            [&] { client.raisePrimaryAlarm(ALARM, event(), uuid, compute, group); },
            [&] { client.raisePrimaryAlarm(ALARM, text(), uuid, compute); },
            [&] { client.raisePrimaryAlarm(ALARM, text(), uuid, compute, group); },
            [&] { client.raiseSecondaryAlarm(ALARM, uuid, compute, list(&Session::event)); },
            [&] { client.raiseSecondaryAlarm(ALARM, uuid, compute, list(&Session::event), group); },
            [&] { client.raiseSecondaryAlarm(ALARM, uuid, compute, list(&Session::text)); },
            [&] { client.raiseSecondaryAlarm(ALARM, uuid, compute, list(&Session::text), group); },
        };
#undef ALARM
        raises[operation - 1]();
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
