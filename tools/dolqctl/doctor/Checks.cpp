#include "doctor/Checks.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <regex>
#include <set>

#include <ruxa/trace/v2/TraceBackend.h>
#include <ruxa/zum2/v1/CorrelationApi.h>
#include <saNtf.h>
#include <unistd.h>

#include "Ntf.h"
#include "Output.h"
#include "SharedObject.h"
#include "common/Environment.h"
#include "common/LoadModuleNames.h"

namespace dolqctl {

namespace {

/// What can be seen of a notification that the service allocates.
struct Allocated {
    std::uintptr_t apart = 0; ///< bytes from one name to the other
    std::optional<SaTimeT> eventTime;
};

Allocated allocate() {
    Ntf ntf;
    SaNtfAlarmNotificationT alarm{};
    ntf.ask<decltype(saNtfAlarmNotificationAllocate)>(
        "saNtfAlarmNotificationAllocate", [&](auto* allocate) {
            return allocate(ntf.handle(), &alarm, 0, 1, 1, 0, 0, 1, SA_NTF_ALLOC_SYSTEM_LIMIT);
        });
    if (alarm.notificationHandle == 0) {
        throw CommandError("saNtfAlarmNotificationAllocate answers SA_AIS_OK, but gives none");
    }
    const SaNtfNotificationHeaderT& header = alarm.notificationHeader;
    const auto one = reinterpret_cast<std::uintptr_t>(header.notificationObject);
    const auto other = reinterpret_cast<std::uintptr_t>(header.notifyingObject);
    return {std::max(one, other) - std::min(one, other),
            header.eventTime != nullptr ? std::optional(*header.eventTime) : std::nullopt};
}

} // namespace

void checkSettings(Diagnosis& diagnosis) {
    std::set<std::string> settings;
    for (char** each = environ; *each != nullptr; ++each) {
        if (std::string(*each).rfind("RUXA_", 0) == 0) {
            settings.insert(*each);
        }
    }
    if (settings.empty()) {
        diagnosis.ok("settings", "no RUXA_* variable is set");
    } else {
        diagnosis.note("settings", joined(settings) + ": each changes what an alarm meets");
    }
}

void checkTraces(Diagnosis& diagnosis) {
    using ruxa::trace::v2::TraceBackend;
    constexpr char kIsEnabled[] =
        "_ZN4ruxa5trace2v212TraceBackend19isTraceGroupEnabledEPvNS1_10TraceGroup1eE";
    constexpr char kDefaultObject[] = "_ZN4ruxa5trace2v212TraceBackend21getDefaultTraceObjectEv";
    // The embedded backend opens its sink when it is first asked: it may be another program's.
    setenv("RUXA_TRACE_SINK", "file:/dev/null", 1);
    SharedObject part(kTraceLibrary);
    if (!part.has(kIsEnabled) || !part.has(kDefaultObject)) {
        return; // `checkParts` says it
    }
    auto* const defaultObject =
        part.function<decltype(TraceBackend::getDefaultTraceObject)>(kDefaultObject);
    if (part.function<decltype(TraceBackend::isTraceGroupEnabled)>(kIsEnabled)(
            defaultObject(), static_cast<ruxa::trace::v2::TraceGroup::e>(0))) {
        diagnosis.ok("traces", "group 0 (failures) is on");
    } else {
        diagnosis.warn("traces", "group 0 (failures) is off", "lost alarms leave no sign",
                       "switch it on (RUXA_TRACE_GROUPS, or this platform's way)");
    }
}

void checkVariables(Diagnosis& diagnosis) {
    constexpr char kUnmapped[] = "no load module is found, and so no mapping";
    constexpr char kUnnamed[] = "alarms that do not name their system and computer are refused";
    const struct {
        const char* name;
        const char* without; ///< what becomes of alarms
        const char* odd;     ///< a pattern found in values that do the harm
        const char* harm;
    } kVariables[] = {{common::kProductNumberVariable, kUnmapped, R"(\s)", "white space counts"},
                      {common::kRevisionVariable, kUnmapped, R"(\s)", "white space counts"},
                      {"SYSTEM_UUID", kUnnamed,
                       "^(?![0-9a-fA-F]{8}(-[0-9a-fA-F]{4}){3}-[0-9a-fA-F]{12}$)",
                       "systems that have no UUID share their correlation UUIDs"},
                      {"COMPUTE_NAME", kUnnamed, R"(["\\])",
                       "no receiver can decode the correlation with a quote or backslash in it"}};
    for (const auto& [name, without, odd, harm] : kVariables) {
        const std::string value = common::environment(name);
        if (value.empty()) {
            diagnosis.fail(name, "not set, or set to nothing", without, "set it");
        } else if (std::regex_search(value, std::regex(odd))) {
            diagnosis.warn(name, inQuotes(value), harm, "correct it");
        } else {
            diagnosis.ok(name, value);
        }
    }
}

void checkCorrelationService(Diagnosis& diagnosis) {
    constexpr char kGetApi[] = "_ZN4ruxa4zum22v16getAPIEv";
    SharedObject part(kCorrelationLibrary);
    if (!part.has(kGetApi)) {
        return; // `checkParts` says it
    }
    auto* const api = part.function<decltype(ruxa::zum2::v1::getAPI)>(kGetApi)();
    std::string uuid;
    if (api != nullptr && api->getDerivedCorrelationUUID(1, uuid) && !uuid.empty()) {
        diagnosis.ok("correlation", "event 1 is " + uuid);
    } else {
        diagnosis.fail("correlation",
                       api == nullptr ? "the service does not run"
                                      : "the service gives event 1 no correlation UUID",
                       "alarms with event ids are refused", "start it, or look into its log");
    }
}

void checkLoadModule(Diagnosis& diagnosis, const Discovery& discovery, const Inventory& inventory) {
    for (const Finding& each : inventory.findings) {
        if (each.costsTheFile()) {
            diagnosis.fail("mapping files", positionText(each.position) + ": " + each.message,
                           "its alarms are lost", "correct the file");
        }
    }
    for (const std::string& problem : discovery.problems) {
        diagnosis.fail("load modules", problem, "alarms are lost",
                       "correct what the load-module handler reads");
    }
    if (const std::string whyNone = discovery.whyNoMappingFile(); !whyNone.empty()) {
        diagnosis.fail("load module", whyNone, "each alarm is dropped",
                       "correct ZBN_NO and ZBN_REV, or what the load-module handler reads");
    } else {
        diagnosis.ok("load module", quoted(discovery.identity) + ", with " +
                                        counted(inventory.mappings.size(), "mapping") + " in " +
                                        counted(discovery.mappingFiles.size(), "file"));
    }
}

bool checkNtfService(Diagnosis& diagnosis) {
    if (!SharedObject(kNtfLibrary).isLoaded()) {
        return true; // `checkParts` says it
    }
    constexpr char kService[] = "NTF service";
    constexpr char kNames[] = "NTF names";
    constexpr char kEventTime[] = "event time";
    try {
        const auto [apart, eventTime] = await(allocate);
        diagnosis.ok(kService, "opens a session and allocates a notification");
        const std::string names = "the two of a notification lie " + std::to_string(apart) +
                                  " bytes apart, and one takes " + std::to_string(sizeof(SaNameT));
        // A client library built with the stock length of 256 gives names less room than the
        // library takes them to have, which then writes past their memory.
        if (apart < sizeof(SaNameT)) { // they cannot be nearer than one of them is long
            diagnosis.fail(kNames, names, "alarms overrun the memory of programs",
                           "use a libSaNtf.so.0 that is built with SA_MAX_NAME_LENGTH 600");
        } else {
            diagnosis.note(kNames, "not disproved: " + names,
                           "ask who built libSaNtf.so.0: was SA_MAX_NAME_LENGTH 600?");
        }
        // Without the build option the library sends whatever the service has left in the field.
        if (eventTime == static_cast<SaTimeT>(SA_TIME_UNKNOWN)) {
            diagnosis.ok(kEventTime, "allocated as SA_TIME_UNKNOWN, which is sent with or without "
                                     "the build option RUXA_DOLQ_EVENT_TIME_UNKNOWN");
        } else {
            diagnosis.note(kEventTime,
                           "allocated as " + (eventTime ? std::to_string(*eventTime) : "nothing") +
                               ", which is sent unless the library is built with "
                               "RUXA_DOLQ_EVENT_TIME_UNKNOWN: that cannot be seen from outside",
                           "ask who built the library, or trust the time of reception alone");
        }
    } catch (const GivenUp& error) {
        diagnosis.fail(kService, error.what(), "programs hang with each alarm",
                       "start the service, or look into its log");
        return false;
    } catch (const CommandError& error) {
        diagnosis.fail(kService, error.what(), "each alarm is dropped",
                       "start the service, or put the libSaNtf.so.0 of the running one first in "
                       "the loader path");
    }
    return true;
}

void checkParts(Diagnosis& diagnosis) {
    for (const auto& [name, soname] : kParts) {
        SharedObject part(soname);
        // Loading the library looks up all that it calls in the others.
        if (soname == kDolqLibrary ? part.has(kGetFactory) : part.isLoaded()) {
            diagnosis.ok(name, part.file());
        } else {
            diagnosis.fail(name, part.error(), "no program that is linked with the library starts",
                           "install it, or correct the loader path");
        }
    }
    SharedObject service(kNtfLibrary);
    for (const char* const name :
         {"saNtfAlarmNotificationFilterAllocate", "saNtfNotificationReadInitialize",
          "saNtfNotificationReadNext", "saNtfPtrValGet"}) {
        if (service.isLoaded() && !service.has(name)) {
            diagnosis.warn("NTF reading", service.error(), "alarms are sent, but not listed",
                           "use a libSaNtf.so.0 with the consumer's interface");
            break;
        }
    }
}

} // namespace dolqctl
