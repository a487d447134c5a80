#include <chrono>
#include <thread>

#include <saNtf.h>

#include "Diagnosis.h"
#include "NameRoom.h"
#include "common/AisNames.h"

namespace dolqctl {

namespace {

constexpr char kSession[] = "NTF session";
constexpr char kNames[] = "NTF names";

/// The library repeats a call for ever while the service is busy; a doctor gives up.
template <typename Call> SaAisErrorT whileBusy(Call call) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds kPause(100);
    constexpr std::chrono::seconds kPatience(10);
    const Clock::time_point end = Clock::now() + kPatience;
    SaAisErrorT answer = call();
    while (answer == SA_AIS_ERR_TRY_AGAIN && Clock::now() < end) {
        std::this_thread::sleep_for(kPause);
        answer = call();
    }
    return answer;
}

SaNtfHandleT openSession(Diagnosis& diagnosis) {
    const auto begin = std::chrono::steady_clock::now();
    SaNtfHandleT handle = 0;
    const SaAisErrorT answer = whileBusy([&] {
        SaVersionT version = {'A', 1, 1};
        return saNtfInitialize(&handle, nullptr, &version);
    });
    const std::chrono::duration<double, std::milli> duration =
        std::chrono::steady_clock::now() - begin;
    if (answer == SA_AIS_OK) {
        diagnosis.ok(kSession, "opens");
    } else if (answer == SA_AIS_ERR_TRY_AGAIN) {
        diagnosis.fail(kSession, "the service is busy: it answers " + common::aisText(answer),
                       "wait or start the service: programs hang while it answers this");
    } else {
        diagnosis.fail(kSession, "does not open: the service answers " + common::aisText(answer),
                       "start the notification service, or make libSaNtf.so.0 of the running one "
                       "the first in the loader path");
    }
    diagnosis.took(duration.count());
    return answer == SA_AIS_OK ? handle : 0;
}

void checkNames(Diagnosis& diagnosis, SaNtfHandleT handle) {
    constexpr SaUint16T kEmptyText = 1; // its NUL
    SaNtfAlarmNotificationT notification{};
    const SaAisErrorT answer = whileBusy([&] {
        return saNtfAlarmNotificationAllocate(handle, &notification, 0, kEmptyText, 0, 0, 0, 0,
                                              SA_NTF_ALLOC_SYSTEM_LIMIT);
    });
    if (answer != SA_AIS_OK) {
        diagnosis.fail(
            kNames, "the service allocates no notification: it answers " + common::aisText(answer),
            "see the service's own log");
        return;
    }
    const SaNtfNotificationHeaderT& header = notification.notificationHeader;
    const std::string length = std::to_string(SA_MAX_NAME_LENGTH);
    switch (roomOf(header.notificationObject, header.notifyingObject)) {
    case NameRoom::Enough:
        diagnosis.ok(kNames, "have room for " + length + " bytes");
        break;
    case NameRoom::TooSmall:
        diagnosis.fail(kNames, "have less room than " + length + " bytes",
                       "load an NTF client library built with SA_MAX_NAME_LENGTH " + length +
                           ": with this one every alarm writes past its memory");
        break;
    case NameRoom::Unknown:
        diagnosis.warn(kNames, "whether they have room for " + length + " bytes cannot be told",
                       "find out whether the NTF client library was built with "
                       "SA_MAX_NAME_LENGTH " +
                           length);
        break;
    }
    static_cast<void>(saNtfNotificationFree(notification.notificationHandle));
}

} // namespace

void diagnoseNtf(Diagnosis& diagnosis) {
    diagnosis.ok("NTF library", "is " + fileOf(&saNtfInitialize));
    if (const SaNtfHandleT handle = openSession(diagnosis); handle != 0) {
        checkNames(diagnosis, handle);
        static_cast<void>(saNtfFinalize(handle));
    }
}

} // namespace dolqctl
