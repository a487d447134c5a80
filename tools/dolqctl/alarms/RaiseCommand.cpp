// `raise` and `cease`: through the library, as an application would.
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include <ruxa/fm/dolq/v2/FmiFactory.h>
#include <saNtf.h>

#include "Commands.h"
#include "Library.h"
#include "Output.h"
#include "alarms/AlarmLog.h"
#include "common/AisNames.h"
#include "common/AlarmNames.h"
#include "common/Environment.h"
#include "mappings/Discovery.h"

namespace {

/// The latest call of the notification service. The traces tell the reason of a failure, but not
/// the outcome: several failure traces go with alarms that are sent all the same.
struct {
    const char* name = "";
    SaAisErrorT answer = SA_AIS_OK;
} latestCall;

/// "saNtfNotificationSend answers 18 (SA_AIS_ERR_NO_RESOURCES), errorCode:12 in traces: ..."
std::string latestCallText() {
    std::ostringstream text;
    const std::string_view meaning = common::aisMeaning(latestCall.answer);
    text << latestCall.name << " answers " << common::aisText(latestCall.answer);
    if (latestCall.answer >= 10) { // otherwise both are the same
        text << ", errorCode:" << std::hex << latestCall.answer << " in traces";
    }
    text << (meaning.empty() ? "" : ": ") << meaning;
    return text.str();
}

SaNtfAlarmNotificationT* allocated = nullptr; // the library's, until it is sent
std::string handedOver; // to the service: "alarm 2/17 (major) on ..."; empty before

template <typename... Arguments> SaAisErrorT passOn(const char* name, Arguments... arguments) {
    auto* const call =
        dolqctl::Library(dolqctl::kNtfLibrary).function<SaAisErrorT(Arguments...)>(name);
    const SaAisErrorT answer = call(arguments...);
    if (answer == SA_AIS_ERR_TRY_AGAIN && latestCall.answer != answer) {
        dolqctl::tell("busy: " + std::string(name) + " answers " + common::aisText(answer) +
                      ".\nThe library goes on asking; Ctrl-C gives up.");
    }
    latestCall = {name, answer};
    return answer;
}

/// "alarm 2/17 (major) on Shelf=1,Port=3"
std::string describe(const SaNtfAlarmNotificationT& alarm) {
    const SaNtfNotificationHeaderT& header = alarm.notificationHeader;
    const SaNameT& object = *header.notificationObject;
    const std::string what = std::to_string(header.notificationClassId->majorId) + '/' +
                             std::to_string(header.notificationClassId->minorId);
    const auto severity = static_cast<std::uint32_t>(*alarm.perceivedSeverity);
    return (severity == SA_NTF_SEVERITY_CLEARED
                ? "the cease of alarm " + what
                : "alarm " + what + " (" + common::nameOf(severity, common::kSeverityNames) + ')') +
           " on " + dolqctl::inQuotes({reinterpret_cast<const char*>(object.value), object.length});
}

} // namespace

// A program's function takes precedence over a library's of the same name, so the library's calls
// of the service come through here.

[[gnu::visibility("default")]] SaAisErrorT
saNtfInitialize(SaNtfHandleT* handle, const SaNtfCallbacksT* callbacks, SaVersionT* version) {
    return passOn("saNtfInitialize", handle, callbacks, version);
}

[[gnu::visibility("default")]] SaAisErrorT
saNtfAlarmNotificationAllocate(SaNtfHandleT handle, SaNtfAlarmNotificationT* notification,
                               SaUint16T correlated, SaUint16T text, SaUint16T info,
                               SaUint16T problems, SaUint16T attributes, SaUint16T actions,
                               SaInt16T size) {
    allocated = notification;
    return passOn("saNtfAlarmNotificationAllocate", handle, notification, correlated, text, info,
                  problems, attributes, actions, size);
}

[[gnu::visibility("default")]] SaAisErrorT saNtfPtrValAllocate(SaNtfNotificationHandleT handle,
                                                               SaUint16T size, void** block,
                                                               SaNtfValueT* value) {
    return passOn("saNtfPtrValAllocate", handle, size, block, value);
}

[[gnu::visibility("default")]] SaAisErrorT saNtfNotificationSend(SaNtfNotificationHandleT handle) {
    const SaAisErrorT answer = passOn("saNtfNotificationSend", handle);
    handedOver = describe(*allocated);
    const SaNtfIdentifierT* const id = allocated->notificationHeader.notificationId;
    if (answer == SA_AIS_OK && id != nullptr && *id != 0) {
        handedOver += ", notification " + std::to_string(*id);
    }
    return answer;
}

namespace dolqctl {

namespace {

using ruxa::fm::fmi::v1::FaultManagementI;

constexpr std::uint32_t kNoProgramGroup = std::size(common::kProgramGroupNames) - 1;

/// As a word of a command line.
std::string quoted(const std::string& word) {
    return "'" + std::regex_replace(printable(word), std::regex("'"), R"('\'')") + "'";
}

/// What explains why there is no alarm. In this shell's environment, not that of --product.
std::string explainCommand(const CeaseArguments& arguments) {
    const auto& [productNumber, revision] = arguments.identity;
    const bool isGiven = productNumber != common::environment("ZBN_NO") ||
                         revision != common::environment("ZBN_REV");
    return "dolqctl explain --fault " + std::to_string(arguments.faultId) + " --object " +
           quoted(arguments.object) +
           (isGiven ? " --product " + quoted(productNumber) + " --revision " + quoted(revision)
                    : "");
}

/// Calls `operation` on an adapter of the library, and tells what came of it and what to do next.
int send(const CeaseArguments& arguments, Output& output,
         const std::function<void(FaultManagementI&)>& operation) {
    using namespace ruxa::fm::dolq::v2;
    std::string next = explainCommand(arguments);
    // Before the library and the trace backend read them.
    setenv("ZBN_NO", arguments.identity.productNumber.c_str(), 1);
    setenv("ZBN_REV", arguments.identity.revision.c_str(), 1);
    setenv("RUXA_TRACE_GROUPS", arguments.verbose ? "0,4,8" : "0,4", 0);
    Library library(kDolqLibrary);
    auto* const getFactory =
        library.function<FmiFactory*()>("_ZN4ruxa2fm4dolq2v213getFmiFactoryEv");
    auto* const freeFactory = library.function<void()>("_ZN4ruxa2fm4dolq2v214freeFmiFactoryEv");
    operation(*getFactory()->createFaultManagement());
    freeFactory();

    const std::string reader =
        otherService().empty() ? "dolqctl alarms" : "the service's own reader, for OpenSAF ntfread";
    const bool isSent = !handedOver.empty() && latestCall.answer == SA_AIS_OK;
    if (isSent) {
        output.line(output.styled(Style::Good, "Sent: ") + handedOver);
        next = reader;
    } else if (latestCall.answer == SA_AIS_OK) {
        output.line(output.styled(Style::Bad, "Not sent: ") +
                    "the library dropped it, for the reason in its traces of group 0");
    } else {
        const bool isUnknown = latestCall.answer == SA_AIS_ERR_TIMEOUT && !handedOver.empty();
        output.line(output.styled(Style::Bad, isUnknown ? "Perhaps sent: " : "Not sent: ") +
                    (handedOver.empty() ? "" : handedOver + "; ") + latestCallText());
        next = isUnknown ? reader : "dolqctl doctor";
    }
    output.line("Next: " + next);
    return isSent ? kFine : kFindings;
}

} // namespace

int runRaise(const RaiseArguments& arguments, Output& output) {
    return send(arguments, output, [&](FaultManagementI& alarms) {
        const auto raiseFor = [&](const auto& events) {
            using Event = typename std::decay_t<decltype(events)>::value_type;
            if (events.size() > 1) {
                alarms.raiseSecondaryAlarm(arguments.object, arguments.faultId, {}, arguments.text,
                                           arguments.info, arguments.severity, arguments.systemUuid,
                                           arguments.computeName, events,
                                           arguments.programGroup.value_or(kNoProgramGroup));
            } else {
                alarms.raisePrimaryAlarm(arguments.object, arguments.faultId, {}, arguments.text,
                                         arguments.info, arguments.severity,
                                         events.empty() ? Event() : events.front(),
                                         arguments.systemUuid, arguments.computeName,
                                         arguments.programGroup.value_or(kNoProgramGroup));
            }
        };
        arguments.eventUuids.empty() ? raiseFor(arguments.eventIds)
                                     : raiseFor(arguments.eventUuids);
    });
}

int runCease(const CeaseArguments& arguments, Output& output) {
    return send(arguments, output, [&](FaultManagementI& alarms) {
        alarms.ceaseAlarm(arguments.object, arguments.faultId, {});
    });
}

} // namespace dolqctl
