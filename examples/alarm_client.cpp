/// An application that raises and ceases alarms. The library returns no status: the trace says what
/// was sent, and why something was not.
#include <cstdint>
#include <iostream>
#include <string>
#include <vector>

#include <ruxa/fm/dolq/v2/FmiFactory.h>

namespace {

namespace fmi = ruxa::fm::fmi::v1;
namespace dolq = ruxa::fm::dolq::v2;

struct Fault {
    std::uint32_t id; ///< with the class of the object, this selects the alarm in the mapping files
    const char* name;
    const char* object; ///< distinguished name; the attribute of its last pair is the class
};

constexpr Fault kTemperature{4101, "TemperatureTooHigh", "Equipment=1,Board=3"};
constexpr Fault kLinkFailure{4102, "LinkFailure", "Transport=1,Port=7"};
constexpr Fault kDegraded{4104, "ServiceDegraded", "Service=voice"};
/// It has no mapping: the library drops it and leaves a trace in group 0.
constexpr Fault kUnmapped{4999, "LicenceExpired", "Application=billing"};

// Events, as the platform's correlation service knows them.
constexpr std::uint32_t kFanStopped = 4711;
constexpr std::uint32_t kBoardShutDown = 4712;

/// Both empty: the library takes them from SYSTEM_UUID and COMPUTE_NAME.
const std::string kSystemUuid;
const std::string kComputeName;

void announce(const char* step) { std::cout << "-- " << step << std::endl; }

void raiseAll(fmi::FaultManagementI& alarms) {
    announce("raise a primary alarm, caused by an event");
    alarms.raisePrimaryAlarm(kTemperature.object, kTemperature.id, kTemperature.name,
                             "Temperature is 87 degrees, limit is 80", {"Sensor=2"},
                             fmi::PerceivedSeverityMajor, kFanStopped, kSystemUuid, kComputeName);

    announce("raise a secondary alarm, led to by two events, with a program group");
    const std::vector<std::uint32_t> events = {kFanStopped, kBoardShutDown};
    alarms.raiseSecondaryAlarm(kLinkFailure.object, kLinkFailure.id, kLinkFailure.name,
                               "No signal on port 7", {"Cable=12", "Peer=compute-2"},
                               fmi::PerceivedSeverityCritical, kSystemUuid, kComputeName, events,
                               fmi::ProgramGroupNr);

    announce("raise a combined alarm: primary or secondary, by the events that it is given");
    alarms.raiseAlarm(kDegraded.object, kDegraded.id, kDegraded.name,
                      "Half of the capacity is lost", {}, fmi::PerceivedSeverityMinor, kFanStopped,
                      {kBoardShutDown});

    announce("raise an alarm that no mapping file has");
    alarms.raisePrimaryAlarm(kUnmapped.object, kUnmapped.id, kUnmapped.name,
                             "The licence has expired", {}, fmi::PerceivedSeverityWarning,
                             kFanStopped, kSystemUuid, kComputeName);
}

void ceaseAll(fmi::FaultManagementI& alarms) {
    announce("cease the three");
    for (const Fault& fault : {kTemperature, kLinkFailure, kDegraded}) {
        alarms.ceaseAlarm(fault.object, fault.id, fault.name);
    }
}

} // namespace

int main() {
    announce("get the factory, which reads the mapping files of the load module");
    dolq::FmiFactory* const factory = dolq::getFmiFactory();
    {
        const auto alarms = factory->createFaultManagement();
        raiseAll(*alarms);
        ceaseAll(*alarms);
    } // the adapter goes before its factory
    dolq::freeFmiFactory();
}
