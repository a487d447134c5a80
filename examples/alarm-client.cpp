/// An application that raises and ceases alarms through both generations of the library.
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "Observer.h"
#include "ruxa/fm/dolq/v1/FmiFactory.h"
#include "ruxa/fm/dolq/v2/FmiFactory.h"

namespace {

namespace fmi = ruxa::fm::fmi::v1;
namespace v1 = ruxa::fm::dolq::v1;
namespace v2 = ruxa::fm::dolq::v2;

struct Fault {
    std::uint32_t id;
    const char* name;
    const char* object; ///< the attribute of its last pair is the class that the mapping goes by
};

constexpr Fault kTemperature{4101, "TemperatureTooHigh", "ManagedElement=1,Equipment=1,Board=3"};
constexpr Fault kLinkFailure{4102, "LinkFailure", "ManagedElement=1,Transport=1,Port=7"};
constexpr Fault kDegraded{4104, "ServiceDegraded", "ManagedElement=1,Service=voice"};
/// No mapping file knows this one.
constexpr Fault kUnknown{4999, "LicenceExpired", "ManagedElement=1,Application=billing"};

constexpr std::uint32_t kFanStopped = 4711; // events, as the application numbers them
constexpr std::uint32_t kBoardShutDown = 4712;

/// Both empty: the library takes the identity from SYSTEM_UUID and COMPUTE_NAME.
const std::string kSystemUuid;
const std::string kComputeName;

/// Says what the client does, does it, and shows what came of it.
class Walkthrough {
public:
    template <typename Call>
    void step(const std::string& what, std::size_t expectedNotifications, Call call) {
        std::cout << "\n-- " << what << '\n';
        call();
        if (m_observer.printNews() != expectedNotifications) {
            std::cout << "   UNEXPECTED: " << expectedNotifications << " notification(s) awaited\n";
            m_asExpected = false;
        }
    }

    void chapter(const std::string& title) { std::cout << "\n==== " << title << '\n'; }
    void printPlaces() const { m_observer.printPlaces(); }
    bool wentAsExpected() const { return m_asExpected; }

private:
    Observer m_observer;
    bool m_asExpected = true;
};

void cease(Walkthrough& walkthrough, fmi::FaultManagementI& alarms, const Fault& fault,
           std::size_t expectedNotifications) {
    walkthrough.step(std::string("cease ") + fault.name, expectedNotifications,
                     [&] { alarms.ceaseAlarm(fault.object, fault.id, fault.name); });
}

void raisePrimary(fmi::FaultManagementI& alarms, const Fault& fault, const std::string& text) {
    alarms.raisePrimaryAlarm(fault.object, fault.id, fault.name, text, {"Source=self-test"},
                             fmi::PerceivedSeverityMajor, kFanStopped, kSystemUuid, kComputeName);
}

void raiseAndCease(Walkthrough& walkthrough, fmi::FaultManagementI& alarms) {
    walkthrough.step("raise a primary alarm, caused by a 32-bit event", 1, [&] {
        raisePrimary(alarms, kTemperature, "Temperature is 87 degrees, limit is 80");
    });
    walkthrough.step(
        "raise a secondary alarm, with two 128-bit events and a program group", 1, [&] {
            const std::vector<std::string> events = {"7d3f5a10-42c8-4e9b-b1f6-0c9a8e7d6b51",
                                                     "c28e91d4-6b7f-4a35-9d02-f1e8b3a4c576"};
            alarms.raiseSecondaryAlarm(kLinkFailure.object, kLinkFailure.id, kLinkFailure.name,
                                       "No signal on port 7", {"Cable=12", "Peer=compute-2"},
                                       fmi::PerceivedSeverityCritical, kSystemUuid, kComputeName,
                                       events, fmi::ProgramGroupNr);
        });
    walkthrough.step(
        "raise a combined alarm, with an event of its own and two correlated ones", 1, [&] {
            alarms.raiseAlarm(kDegraded.object, kDegraded.id, kDegraded.name,
                              "Half of the capacity is lost", {}, fmi::PerceivedSeverityMinor,
                              kFanStopped, {kFanStopped, kBoardShutDown});
        });
    walkthrough.step("raise an alarm whose fault id no mapping knows: dropped, the trace says why",
                     0, [&] { raisePrimary(alarms, kUnknown, "The licence has expired"); });

    cease(walkthrough, alarms, kTemperature, 1);
    cease(walkthrough, alarms, kLinkFailure, 1);
    cease(walkthrough, alarms, kDegraded, 1);
    cease(walkthrough, alarms, kUnknown, 0);
}

void loadMapping(Walkthrough& walkthrough) {
    walkthrough.step("get the factory, which reads the load module's mapping files", 0,
                     [] { v2::getFmiFactory(); });
}

void useSecondGeneration(Walkthrough& walkthrough) {
    walkthrough.chapter("Second generation (v2)");
    loadMapping(walkthrough);
    {
        const std::shared_ptr<fmi::FaultManagementI> alarms =
            v2::getFmiFactory()->createFaultManagement();
        raiseAndCease(walkthrough, *alarms);
    } // the alarm interface goes before its factory
    v2::freeFmiFactory();
}

void useFirstGeneration(Walkthrough& walkthrough) {
    walkthrough.chapter("First generation (v1)");
    v1::FmiFactory* factory = nullptr;
    walkthrough.step("get the factory, which reads the load module's mapping files", 0,
                     [&] { factory = v1::getFmiFactory(); });
    {
        const std::unique_ptr<fmi::FaultManagementI> alarms(factory->createFaultManagement());
        raiseAndCease(walkthrough, *alarms);
        walkthrough.step(
            "set a mapping for the unknown fault: class Application, alarm 4/1", 0, [&] {
                constexpr std::uint32_t kMinorType = (4U << 16U) | 1U;
                factory->getConfiguration()->setMapping(kUnknown.id, kMinorType, "Application");
            });
        walkthrough.step("raise the alarm that was dropped before", 1,
                         [&] { raisePrimary(*alarms, kUnknown, "The licence has expired"); });
        cease(walkthrough, *alarms, kUnknown, 1);
    }
    v1::freeFmiFactory();
}

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0' ? value : "(not set)";
}

} // namespace

int main(int argc, char** argv) try {
    CLI::App options(
        "Raises and ceases alarms of the load module that ZBN_NO and ZBN_REV name, and "
        "shows what the notification service received.");
    bool loadOnly = false;
    options.add_flag("--load-only", loadOnly,
                     "Only read the load module's mapping files and show what the trace says");
    CLI11_PARSE(options, argc, argv);

    Walkthrough walkthrough;
    std::cout << "Load module " << variable("ZBN_NO") << ", revision " << variable("ZBN_REV")
              << "; load modules are described in " << variable("VELK_MANIFEST_DIR") << '\n';
    walkthrough.printPlaces();
    if (loadOnly) {
        loadMapping(walkthrough);
        v2::freeFmiFactory();
        return EXIT_SUCCESS;
    }
    useSecondGeneration(walkthrough);
    useFirstGeneration(walkthrough);

    std::cout << '\n';
    walkthrough.printPlaces();
    if (!walkthrough.wentAsExpected()) {
        std::cerr << "alarm-client: not every alarm came out as expected, see UNEXPECTED above\n";
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
} catch (const std::exception& failure) {
    std::cerr << "alarm-client: " << failure.what() << '\n';
    return EXIT_FAILURE;
}
