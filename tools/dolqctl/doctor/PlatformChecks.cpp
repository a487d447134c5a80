#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>

#include <malloc.h>
#include <ruxa/zum2/v1/CorrelationApi.h>
#include <saNtf.h>
#include <unistd.h>

#include "Library.h"
#include "common/AisNames.h"
#include "common/Environment.h"
#include "doctor/Diagnosis.h"
#include "platform/ntf/log/LogPath.h"

// A sanitizer's allocator can tell by itself; without one these are null. The names are its own.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {
[[gnu::weak]] int __sanitizer_get_ownership(const volatile void* block);
[[gnu::weak]] std::size_t __sanitizer_get_allocated_size(const volatile void* block);
extern const char _end; // of this program, behind which malloc's memory begins
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace dolqctl {

namespace {

/// The size of a block that malloc gave; 0 for other memory, of which malloc cannot be asked.
std::size_t sizeOfBlock(SaNameT* name) {
    if (__sanitizer_get_ownership != nullptr) {
        return __sanitizer_get_ownership(name) != 0 ? __sanitizer_get_allocated_size(name) : 0;
    }
    constexpr std::uintptr_t kAlignment = alignof(std::max_align_t);
    const auto address = reinterpret_cast<std::uintptr_t>(name);
    const auto heapEnd = reinterpret_cast<std::uintptr_t>(sbrk(0));
    if (address % kAlignment != 0 || address <= reinterpret_cast<std::uintptr_t>(&_end) ||
        address >= heapEnd) {
        return 0;
    }
    // Inside of a block this reads the block's content in place of a size.
    const std::size_t size = malloc_usable_size(name);
    return size >= kAlignment && size < heapEnd - address ? size : 0;
}

/// A client library built with the stock length of 256 gives the names of a notification less room
/// than the library takes them to have, which then writes past their memory.
void checkNames(Diagnosis& diagnosis, const SaNtfNotificationHeaderT& header) {
    constexpr char kCheck[] = "NTF names";
    const std::string length = std::to_string(SA_MAX_NAME_LENGTH);
    const auto one = reinterpret_cast<std::uintptr_t>(header.notificationObject);
    const auto other = reinterpret_cast<std::uintptr_t>(header.notifyingObject);
    const auto first = sizeOfBlock(header.notificationObject);
    const auto second = sizeOfBlock(header.notifyingObject);
    // Whatever the memory is: two names cannot be nearer than one of them is long.
    if ((one > other ? one - other : other - one) < sizeof(SaNameT) ||
        (first != 0 && first < sizeof(SaNameT)) || (second != 0 && second < sizeof(SaNameT))) {
        diagnosis.fail(kCheck, "less room than " + length + " bytes",
                       "use an NTF client library built with SA_MAX_NAME_LENGTH " + length +
                           ": with this one every alarm overruns the memory of its program");
    } else if (first != 0 && second != 0) {
        diagnosis.ok(kCheck, "room for " + length + " bytes");
    } else {
        diagnosis.warn(kCheck, "it is unknown whether there is room for " + length + " bytes",
                       "ask whoever built the NTF client library whether it was built with "
                       "SA_MAX_NAME_LENGTH " +
                           length);
    }
}

/// Without the build option the library sends whatever the service has left in the field.
void checkEventTime(Diagnosis& diagnosis, const SaTimeT* time) {
    const Library library(kDolqLibrary);
    if (library.contains("RUXA_DOLQ_EVENT_TIME_UNKNOWN=1") ||
        (time != nullptr && *time == SA_TIME_UNKNOWN)) {
        diagnosis.ok("event time", "left open (SA_TIME_UNKNOWN) for the service to set");
        return;
    }
    diagnosis.warn("event time",
                   "the service allocates it as " +
                       (time != nullptr ? std::to_string(*time) : "nothing") +
                       (library.contains("RUXA_DOLQ_EVENT_TIME_UNKNOWN=0")
                            ? ", and the library sends it so, unless the service replaces that"
                            : ", and it is unknown whether the library replaces that"),
                   "build the library with -DRUXA_DOLQ_EVENT_TIME_UNKNOWN=ON, or trust the time of "
                   "reception alone");
}

/// The library repeats a call for ever while the service is busy; a doctor gives up.
template <typename Call> SaAisErrorT whileBusy(Call call) {
    using namespace std::chrono;
    for (const auto end = steady_clock::now() + seconds(10);;) {
        const SaAisErrorT answer = call();
        if (answer != SA_AIS_ERR_TRY_AGAIN || steady_clock::now() >= end) {
            return answer;
        }
        std::this_thread::sleep_for(milliseconds(100));
    }
}

/// 0: none.
SaNtfHandleT openSession(Diagnosis& diagnosis, Library& ntf) {
    constexpr char kCheck[] = "NTF session";
    SaNtfHandleT handle = 0;
    const SaAisErrorT answer = whileBusy([&] {
        SaVersionT version = {'A', 1, 1};
        return ntf.function<decltype(saNtfInitialize)>("saNtfInitialize")(&handle, nullptr,
                                                                          &version);
    });
    if (answer == SA_AIS_OK) {
        diagnosis.ok(kCheck, "opens");
        return handle;
    }
    diagnosis.fail(kCheck, "the service answers " + common::aisText(answer),
                   answer == SA_AIS_ERR_TRY_AGAIN
                       ? "wait, or start the service: it is busy, and programs hang so long"
                       : "start the notification service, or put the libSaNtf.so.0 of the running "
                         "one first in the loader path");
    return 0;
}

void checkNotification(Diagnosis& diagnosis, Library& ntf, SaNtfHandleT handle) {
    constexpr SaUint16T kEmptyText = 1; // its NUL
    auto* const allocate =
        ntf.function<decltype(saNtfAlarmNotificationAllocate)>("saNtfAlarmNotificationAllocate");
    SaNtfAlarmNotificationT notification{};
    const SaAisErrorT answer = whileBusy([&] {
        return allocate(handle, &notification, 0, kEmptyText, 0, 0, 0, 0,
                        SA_NTF_ALLOC_SYSTEM_LIMIT);
    });
    if (answer != SA_AIS_OK) {
        diagnosis.fail("NTF notification", "the service answers " + common::aisText(answer),
                       "look into the service's own log: it allocates no notification");
        return;
    }
    checkNames(diagnosis, notification.notificationHeader);
    checkEventTime(diagnosis, notification.notificationHeader.eventTime);
    ntf.function<decltype(saNtfNotificationFree)>("saNtfNotificationFree")(
        notification.notificationHandle);
}

} // namespace

void checkLibrary(Diagnosis& diagnosis) {
    if (const Library library(kDolqLibrary); library.isLoaded()) {
        diagnosis.ok("library", library.file());
    } else {
        diagnosis.fail("library", library.error(),
                       "install or replace the file that this names: no program that uses the "
                       "library starts");
    }
}

void checkCorrelationService(Diagnosis& diagnosis) {
    constexpr char kCheck[] = "correlation service";
    constexpr char kGetApi[] = "_ZN4ruxa4zum22v16getAPIEv";
    Library library(kCorrelationLibrary);
    if (!library.has(kGetApi)) {
        diagnosis.fail(kCheck, library.error(),
                       "install the platform's own, or correct the loader path");
        return;
    }
    auto* const api = library.function<decltype(ruxa::zum2::v1::getAPI)>(kGetApi)();
    std::string uuid;
    if (api == nullptr) {
        diagnosis.fail(kCheck, library.file() + ": it does not run",
                       "start it: alarms with event ids are refused without it");
    } else if (!api->getDerivedCorrelationUUID(1, uuid) || uuid.empty()) {
        diagnosis.warn(kCheck, library.file() + ": it gives event 1 no correlation UUID",
                       "look into its own log: primary alarms go out without correlation, "
                       "secondary ones are refused");
    } else {
        diagnosis.ok(kCheck, library.file() + ": event 1 is " + uuid);
    }
}

void checkNtfService(Diagnosis& diagnosis) {
    constexpr char kCheck[] = "NTF library";
    Library ntf(kNtfLibrary);
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
            diagnosis.fail("fault schedule",
                           "RUXA_NTF_FAULTS is '" + faults +
                               "': the service refuses or delays the calls that this names",
                           "unset it: it is for trying an application out");
        }
        checkNotificationLog(diagnosis);
        if (platform::ntf::notificationLogPath().empty()) {
            return; // nor is there a session
        }
    }
    if (const SaNtfHandleT handle = openSession(diagnosis, ntf); handle != 0) {
        checkNotification(diagnosis, ntf, handle);
        ntf.function<decltype(saNtfFinalize)>("saNtfFinalize")(handle);
    }
}

} // namespace dolqctl
