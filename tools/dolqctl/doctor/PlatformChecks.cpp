#include <chrono>
#include <cstddef>
#include <cstdint>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>

#include <malloc.h>
#include <ruxa/zum2/v1/CorrelationApi.h>
#include <saNtf.h>
#include <unistd.h>

#include "Diagnosis.h"
#include "Output.h"
#include "SharedObject.h"
#include "common/AisNames.h"
#include "common/Environment.h"
#include "platform/ntf/FaultSchedule.h"
#include "platform/ntf/log/LogPath.h"

// A sanitizer's allocator can tell by itself; without one these are null. The names are its own.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {
[[gnu::weak]] int __sanitizer_get_ownership(const volatile void* block);
[[gnu::weak]] std::size_t __sanitizer_get_allocated_size(const volatile void* block);
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace dolqctl {

namespace {

/// The size of a block that malloc gave; 0 for other memory, of which malloc cannot be asked.
std::size_t sizeOfBlock(SaNameT* name) {
    if (__sanitizer_get_ownership != nullptr) {
        return __sanitizer_get_ownership(name) != 0 ? __sanitizer_get_allocated_size(name) : 0;
    }
    static const char ofThisProgram = '\0'; // whose memory lies below malloc's
    const auto address = reinterpret_cast<std::uintptr_t>(name);
    const auto end = reinterpret_cast<std::uintptr_t>(sbrk(0));
    const bool isOnHeap = address % alignof(std::max_align_t) == 0 && address < end &&
                          address > reinterpret_cast<std::uintptr_t>(&ofThisProgram);
    // Inside of a block this reads the block's content in place of a size.
    const std::size_t size = isOnHeap ? malloc_usable_size(name) : 0;
    return size < end - address ? size : 0;
}

/// A client library built with the stock length of 256 gives the names of a notification less room
/// than the library takes them to have, which then writes past their memory.
void checkNames(Diagnosis& diagnosis, const SaNtfNotificationHeaderT& header) {
    constexpr char kCheck[] = "NTF names";
    const std::string length = std::to_string(SA_MAX_NAME_LENGTH);
    const auto one = reinterpret_cast<std::uintptr_t>(header.notificationObject);
    const auto other = reinterpret_cast<std::uintptr_t>(header.notifyingObject);
    const std::size_t size = sizeOfBlock(header.notificationObject); // and of the other alike
    // Whatever the memory is: two names cannot be nearer than one of them is long.
    if ((one > other ? one - other : other - one) < sizeof(SaNameT) ||
        (size != 0 && size < sizeof(SaNameT))) {
        diagnosis.fail(kCheck, "less room than " + length + " bytes",
                       "alarms overrun memory: use one built with SA_MAX_NAME_LENGTH " + length);
    } else if (size != 0) {
        diagnosis.ok(kCheck, "room for " + length + " bytes");
    } else {
        diagnosis.warn(kCheck, "it is unknown whether there is room for " + length + " bytes",
                       "ask who built the library whether SA_MAX_NAME_LENGTH was " + length);
    }
}

/// Without the build option the library sends whatever the service has left in the field.
void checkEventTime(Diagnosis& diagnosis, const SaTimeT* time) {
    constexpr char kCheck[] = "event time";
    const std::string left = time != nullptr ? std::to_string(*time) : "nothing";
    if (SharedObject(kDolqLibrary).contains("RUXA_DOLQ_EVENT_TIME_UNKNOWN=1") ||
        (time != nullptr && *time == static_cast<SaTimeT>(SA_TIME_UNKNOWN))) {
        diagnosis.ok(kCheck, "left open (SA_TIME_UNKNOWN) for the service to set");
    } else {
        diagnosis.warn(kCheck,
                       "the service allocates it as " + left +
                           ", which is sent, unless the library or the service replaces it",
                       "build the library with -DRUXA_DOLQ_EVENT_TIME_UNKNOWN=ON, or trust the "
                       "time of reception alone");
    }
}

/// Whether `call` gives a `handle`, otherwise a failure. The library repeats a call for ever while
/// the service is busy; a doctor gives up.
template <typename Call>
bool ask(Diagnosis& diagnosis, const char* check, const SaUint64T& handle, const char* advice,
         Call call) {
    using namespace std::chrono_literals;
    std::promise<void> answered;
    const std::string soFar = diagnosis.observations().front().text();
    const auto teller = std::async(std::launch::async, [&, end = answered.get_future()] {
        if (end.wait_for(1s) == std::future_status::timeout) {
            tell("asking the service: " + std::string(check) + "... So far: " + soFar);
        }
    });
    SaAisErrorT answer = call(); // here: other threads' memory is not that of `sizeOfBlock`
    for (int times = 1; answer == SA_AIS_ERR_TRY_AGAIN && times < 100; ++times) {
        std::this_thread::sleep_for(100ms);
        answer = call();
    }
    answered.set_value();
    if (answer == SA_AIS_OK && handle != 0) {
        return true;
    }
    diagnosis.fail(check,
                   "the service answers " + common::aisText(answer) +
                       (answer == SA_AIS_OK ? ", but gives none" : ""),
                   answer == SA_AIS_ERR_TRY_AGAIN
                       ? "wait, or start the service: it is busy, and programs hang so long"
                       : advice);
    return false;
}

void checkSession(Diagnosis& diagnosis, SharedObject& ntf) {
    constexpr char kSession[] = "NTF session";
    constexpr SaUint16T kEmptyText = 1; // its NUL
    auto* const initialize = ntf.function<decltype(saNtfInitialize)>("saNtfInitialize");
    auto* const allocate =
        ntf.function<decltype(saNtfAlarmNotificationAllocate)>("saNtfAlarmNotificationAllocate");
    SaNtfHandleT session = 0;
    SaNtfAlarmNotificationT alarm{};
    if (!ask(diagnosis, kSession, session,
             "start it, or put the libSaNtf.so.0 of the running one first in the loader path", [&] {
                 SaVersionT version = {'A', 1, 1};
                 return initialize(&session, nullptr, &version);
             })) {
        return;
    }
    diagnosis.ok(kSession, "opens");
    if (ask(diagnosis, "NTF notification", alarm.notificationHandle,
            "look into the service's own log: it allocates no notification", [&] {
                return allocate(session, &alarm, 0, kEmptyText, 0, 0, 0, 0,
                                SA_NTF_ALLOC_SYSTEM_LIMIT);
            })) {
        checkNames(diagnosis, alarm.notificationHeader);
        checkEventTime(diagnosis, alarm.notificationHeader.eventTime);
        ntf.function<decltype(saNtfNotificationFree)>("saNtfNotificationFree")(
            alarm.notificationHandle);
    }
    ntf.function<decltype(saNtfFinalize)>("saNtfFinalize")(session);
}

/// The embedded service reads it as here.
void checkFaults(Diagnosis& diagnosis, const std::string& schedule) {
    constexpr char kCheck[] = "fault schedule";
    constexpr char kAdvice[] = "unset it: it is for trying an application out";
    const std::string finding = "RUXA_NTF_FAULTS is '" + schedule + "': the service refuses ";
    try {
        if (platform::ntf::FaultSchedule(schedule).refusesAlarms() ||
            schedule.find("TRY_AGAIN") != schedule.npos) {
            diagnosis.fail(kCheck, finding + "calls that alarms need, or keeps them waiting",
                           kAdvice);
        } else {
            diagnosis.warn(kCheck, finding + "no call that alarms need, but may delay it", kAdvice);
        }
    } catch (const std::invalid_argument& mistake) {
        diagnosis.warn(kCheck, std::string("no faults are made: ") + mistake.what(), kAdvice);
    }
}

} // namespace

void checkLibrary(Diagnosis& diagnosis) {
    if (SharedObject library(kDolqLibrary); library.has(kGetFactory)) {
        diagnosis.ok("library", library.file());
    } else {
        diagnosis.fail("library", library.error(),
                       "replace it, or what it needs: no program can start");
    }
}

void checkCorrelationService(Diagnosis& diagnosis) {
    constexpr char kCheck[] = "correlation service";
    constexpr char kGetApi[] = "_ZN4ruxa4zum22v16getAPIEv";
    SharedObject library(kCorrelationLibrary);
    if (!library.has(kGetApi)) {
        diagnosis.fail(kCheck, library.error(), "install it, or correct the loader path");
        return;
    }
    auto* const api = library.function<decltype(ruxa::zum2::v1::getAPI)>(kGetApi)();
    std::string uuid;
    if (api == nullptr) {
        diagnosis.fail(kCheck, library.file() + ": it does not run",
                       "start it: alarms with event ids are refused without it");
    } else if (!api->getDerivedCorrelationUUID(1, uuid) || uuid.empty()) {
        diagnosis.warn(kCheck, library.file() + ": it gives event 1 no correlation UUID",
                       "look into its log: secondary alarms are refused");
    } else {
        diagnosis.ok(kCheck, library.file() + ": event 1 is " + uuid);
    }
}

void checkNtfService(Diagnosis& diagnosis) {
    constexpr char kCheck[] = "NTF library";
    SharedObject ntf(kNtfLibrary);
    for (const char* const call :
         {"saNtfInitialize", "saNtfFinalize", "saNtfAlarmNotificationAllocate",
          "saNtfPtrValAllocate", "saNtfNotificationSend", "saNtfNotificationFree"}) {
        if (!ntf.has(call)) {
            diagnosis.fail(kCheck, ntf.error(),
                           "put the libSaNtf.so.0 of the running service first in the loader path");
            return;
        }
    }
    // No other service knows the variable.
    const bool isEmbedded = ntf.contains("RUXA_NTF_LOG");
    diagnosis.ok(kCheck, ntf.file() + (isEmbedded ? ": the embedded service" : ""));
    if (isEmbedded) {
        if (const std::string faults = common::environment("RUXA_NTF_FAULTS"); !faults.empty()) {
            checkFaults(diagnosis, faults);
        }
        checkNotificationLog(diagnosis);
        if (platform::ntf::notificationLogPath().empty()) {
            return; // nor is there a session
        }
    }
    checkSession(diagnosis, ntf);
}

} // namespace dolqctl
