// `raise` and `cease`: through the library, as an application would.
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <future>
#include <iostream>
#include <iterator>
#include <mutex>
#include <optional>
#include <string>
#include <type_traits>

#include <ruxa/fm/dolq/v2/FmiFactory.h>
#include <saNtf.h>

#include "Commands.h"
#include "Output.h"
#include "SharedObject.h"
#include "alarms/AlarmLog.h"
#include "common/AisNames.h"
#include "common/AlarmNames.h"

namespace {

constexpr char kInitialize[] = "saNtfInitialize";
constexpr char kSend[] = "saNtfNotificationSend";

/// What the library asks of the service, on a thread of its own: when the user gives up, this tells
/// what came of the alarm. The traces tell the reason of a failure, but not the outcome: several
/// failure traces go with alarms that are sent all the same.
struct {
    std::mutex mutex; // kept when the user has given up: no further call begins
    std::string call = "the service";
    std::optional<SaAisErrorT> answer; // to this call; none while it runs
    std::string alarm;                 // handed over with `kSend`: "alarm 2/17 (major) on ..."
} latest;

volatile std::sig_atomic_t givenUp = 0; // by this signal

/// "saNtfNotificationSend answers 5 (SA_AIS_ERR_TIMEOUT): no answer came in time"
std::string answerText() {
    if (!latest.answer) {
        return latest.call + " has not answered";
    }
    const std::string meaning(common::aisMeaning(*latest.answer));
    return latest.call + " answers " + common::aisText(*latest.answer) +
           (meaning.empty() ? "" : ": " + meaning);
}

template <typename... Arguments> SaAisErrorT passOn(const char* name, Arguments... arguments) {
    using Call = SaAisErrorT(Arguments...);
    auto* const call = dolqctl::SharedObject(dolqctl::kNtfLibrary).function<Call>(name);
    std::unique_lock<std::mutex> lock(latest.mutex);
    latest.call = name;
    latest.answer.reset();
    lock.unlock();
    const SaAisErrorT answer = call(arguments...);
    lock.lock();
    latest.answer = answer;
    return answer;
}

const SaNtfAlarmNotificationT* allocated = nullptr; // the library's, until it is sent

} // namespace

// A program's function takes precedence over a library's of the same name, so the library's calls
// of the service come through here.
#pragma GCC visibility push(default)

SaAisErrorT saNtfInitialize(SaNtfHandleT* handle, const SaNtfCallbacksT* callbacks,
                            SaVersionT* version) {
    return passOn(kInitialize, handle, callbacks, version);
}

SaAisErrorT saNtfAlarmNotificationAllocate(SaNtfHandleT handle,
                                           SaNtfAlarmNotificationT* notification,
                                           SaUint16T correlated, SaUint16T text, SaUint16T info,
                                           SaUint16T problems, SaUint16T attributes,
                                           SaUint16T actions, SaInt16T size) {
    allocated = notification;
    return passOn("saNtfAlarmNotificationAllocate", handle, notification, correlated, text, info,
                  problems, attributes, actions, size);
}

SaAisErrorT saNtfPtrValAllocate(SaNtfNotificationHandleT handle, SaUint16T size, void** block,
                                SaNtfValueT* value) {
    return passOn("saNtfPtrValAllocate", handle, size, block, value);
}

SaAisErrorT saNtfNotificationSend(SaNtfNotificationHandleT handle) {
    const SaNtfNotificationHeaderT& header = allocated->notificationHeader;
    const SaNameT& object = *header.notificationObject;
    latest.alarm = "alarm " + std::to_string(header.notificationClassId->majorId) + '/' +
                   std::to_string(header.notificationClassId->minorId) + " (" +
                   common::nameOf(*allocated->perceivedSeverity, common::kSeverityNames) + ") on " +
                   dolqctl::inQuotes({reinterpret_cast<const char*>(object.value), object.length});
    const SaAisErrorT answer = passOn(kSend, handle);
    if (answer == SA_AIS_OK && header.notificationId != nullptr && *header.notificationId != 0) {
        const std::lock_guard<std::mutex> lock(latest.mutex);
        latest.alarm += ", notification " + std::to_string(*header.notificationId);
    }
    return answer;
}

#pragma GCC visibility pop

namespace dolqctl {

namespace {

using ruxa::fm::fmi::v1::FaultManagementI;

/// Returns when `work` has ended or the user gives up; tells after a second what it waits for.
void waitFor(const std::future<void>& work) {
    using namespace std::chrono_literals;
    const auto giveUp = [](int signal) { givenUp = signal; };
    std::signal(SIGINT, giveUp);
    std::signal(SIGTERM, giveUp);
    for (int round = 1; work.wait_for(50ms) == std::future_status::timeout; ++round) {
        std::unique_lock<std::mutex> lock(latest.mutex);
        if (givenUp != 0) {
            lock.release();
            return;
        }
        if (round == 20) {
            tell("waiting for the service" +
                 (latest.answer == SA_AIS_OK ? "" : ": " + answerText()) + ". Ctrl-C gives up.");
        }
    }
}

/// Tells what came of the alarm and what to do next.
int conclude(const CeaseArguments& arguments) {
    constexpr std::size_t kLongest = SA_MAX_NAME_LENGTH - 1;
    const bool isOk = latest.answer == SA_AIS_OK;
    const bool isHandedOver = latest.call == kSend;
    const bool isSent = isHandedOver && isOk;
    const bool isUnknown = isHandedOver && (!latest.answer || latest.answer == SA_AIS_ERR_TIMEOUT);
    const bool isDropped = latest.call == kInitialize && isOk && givenUp == 0;
    const char* const verdict = isSent ? "Sent: " : isUnknown ? "Perhaps sent: " : "Not sent: ";
    std::string text = latest.alarm;
    if (isHandedOver && arguments.object.size() > kLongest) {
        text += ", which is another object: the first " + std::to_string(kLongest) + " of the " +
                std::to_string(arguments.object.size()) + " bytes given";
    }
    if (isDropped) {
        text = "the library dropped it, for the reason in its traces of group 0";
    } else if (!isSent) {
        text += (isHandedOver ? "; " : "") + answerText() +
                (givenUp != 0 ? "; given up"
                 : isOk       ? ", but gives no notification"
                              : "");
    }
    printWrapped(verdict + text, "  ");
    const std::string reader =
        otherService().empty() ? "dolqctl alarms" : "the service's own reader, for OpenSAF ntfread";
    printLine("Next: " +
              (isSent || isUnknown ? reader
               : isDropped
                   ? "dolqctl explain, with the same --object, --fault, --product and --revision"
                   : "dolqctl doctor"));
    if (!std::cout.flush()) {
        tell(verdict + text);
    }
    return isSent ? kFine : kFindings;
}

/// Calls `operation` on an adapter of the library, as an application would.
int send(const CeaseArguments& arguments, const std::function<void(FaultManagementI&)>& operation) {
    using namespace ruxa::fm::dolq::v2;
    // Before the library and the trace backend read them.
    setenv("ZBN_NO", arguments.identity.productNumber.c_str(), 1);
    setenv("ZBN_REV", arguments.identity.revision.c_str(), 1);
    setenv("RUXA_TRACE_GROUPS", "0,4", 0);
    std::signal(SIGXFSZ, SIG_IGN); // a log at its limit is an answer of the service, too
    auto work = std::async(std::launch::async, [&] {
        SharedObject library(kDolqLibrary);
        auto* const getFactory = library.function<FmiFactory*()>(kGetFactory);
        operation(*getFactory()->createFaultManagement());
        library.function<void()>("_ZN4ruxa2fm4dolq2v214freeFmiFactoryEv")();
    });
    waitFor(work);
    if (givenUp != 0) {
        conclude(arguments);
        std::signal(givenUp, SIG_DFL);
        ::raise(givenUp); // the shell sees what ended it
    }
    work.get();
    return conclude(arguments);
}

} // namespace

int runRaise(const RaiseArguments& arguments) {
    return send(arguments, [&](FaultManagementI& alarms) {
        const std::uint32_t group =
            arguments.programGroup.value_or(std::size(common::kProgramGroupNames) - 1); // none
        const auto raiseFor = [&](const auto& events) {
            using Event = typename std::decay_t<decltype(events)>::value_type;
            if (events.size() > 1) {
                alarms.raiseSecondaryAlarm(arguments.object, arguments.faultId, {}, arguments.text,
                                           arguments.info, arguments.severity, arguments.systemUuid,
                                           arguments.computeName, events, group);
            } else {
                alarms.raisePrimaryAlarm(arguments.object, arguments.faultId, {}, arguments.text,
                                         arguments.info, arguments.severity,
                                         events.empty() ? Event() : events.front(),
                                         arguments.systemUuid, arguments.computeName, group);
            }
        };
        arguments.eventUuids.empty() ? raiseFor(arguments.eventIds)
                                     : raiseFor(arguments.eventUuids);
    });
}

int runCease(const CeaseArguments& arguments) {
    return send(arguments, [&](FaultManagementI& alarms) {
        alarms.ceaseAlarm(arguments.object, arguments.faultId, {});
    });
}

} // namespace dolqctl
