#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <thread>

#include <malloc.h>
#include <saNtf.h>

#include "Library.h"
#include "common/AisNames.h"
#include "doctor/Diagnosis.h"

// A sanitizer's allocator can tell by itself; without one these are null. The names are its own.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {
[[gnu::weak]] int __sanitizer_get_ownership(const volatile void* block);
[[gnu::weak]] std::size_t __sanitizer_get_allocated_size(const volatile void* block);
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace dolqctl {

namespace {

constexpr char kSession[] = "NTF session";
constexpr char kNames[] = "NTF names";

/// The end of the mapping of private, anonymous, writable memory (as the heap is) that `address` is
/// in; 0 for other memory.
std::uintptr_t endOfHeapAround(std::uintptr_t address) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream fields(line);
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        char dash = 0;
        std::string rights, offset, device, inode, name;
        fields >> std::hex >> begin >> dash >> end >> rights >> offset >> device >> inode >> name;
        if (begin <= address && address < end) {
            return rights == "rw-p" && (name.empty() || name == "[heap]") ? end : 0;
        }
    }
    return 0;
}

/// Asking malloc about an address that is not the beginning of a block is undefined, so first it is
/// seen whether the word before it can be the size that glibc keeps there.
bool looksLikeBlock(const void* pointer) {
    constexpr std::size_t kAlignment = 2 * sizeof(std::size_t);
    constexpr std::size_t kFlags = 7;
    constexpr std::size_t kSmallest = 2 * kAlignment;
    const auto address = reinterpret_cast<std::uintptr_t>(pointer);
    const std::uintptr_t end =
        address % kAlignment == 0 ? endOfHeapAround(address - kAlignment) : 0;
    if (end == 0) {
        return false;
    }
    std::size_t size = 0;
    std::memcpy(&size, static_cast<const char*>(pointer) - sizeof(size), sizeof(size));
    size &= ~kFlags;
    return size >= kSmallest && size % kAlignment == 0 &&
           size <= end - (address - kAlignment) - sizeof(size);
}

std::optional<std::size_t> sizeOfBlock(const void* pointer) {
    if (__sanitizer_get_ownership != nullptr) {
        return __sanitizer_get_ownership(pointer) != 0
                   ? std::optional(__sanitizer_get_allocated_size(pointer))
                   : std::nullopt;
    }
    // malloc_usable_size only reads, but is declared otherwise.
    return looksLikeBlock(pointer) ? std::optional(malloc_usable_size(const_cast<void*>(pointer)))
                                   : std::nullopt;
}

/// Whether the service gives the names of a notification the length that this program and the
/// library take them to have. A client library built with the stock length of 256 does not, and a
/// sender would write past its memory.
enum class NameLength {
    Enough,
    TooShort,
    Unknown ///< the memory is no block of the heap of its own
};

/// Of the two names of an allocated notification. Reads and writes nothing in them.
NameLength lengthOf(const SaNameT* notificationObject, const SaNameT* notifyingObject) {
    const auto first = reinterpret_cast<std::uintptr_t>(notificationObject);
    const auto second = reinterpret_cast<std::uintptr_t>(notifyingObject);
    // Whatever the memory is: two names cannot be nearer than one of them is long.
    if ((first > second ? first - second : second - first) < sizeof(SaNameT)) {
        return NameLength::TooShort;
    }
    NameLength length = NameLength::Enough;
    for (const SaNameT* const name : {notificationObject, notifyingObject}) {
        const std::optional<std::size_t> size = sizeOfBlock(name);
        if (!size) {
            length = NameLength::Unknown;
        } else if (*size < sizeof(SaNameT)) {
            return NameLength::TooShort;
        }
    }
    return length;
}

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

/// What the library calls of the service.
struct Service {
    explicit Service(Library& library)
        : initialize(library.function<decltype(saNtfInitialize)>("saNtfInitialize")),
          finalize(library.function<decltype(saNtfFinalize)>("saNtfFinalize")),
          allocate(library.function<decltype(saNtfAlarmNotificationAllocate)>(
              "saNtfAlarmNotificationAllocate")),
          free(library.function<decltype(saNtfNotificationFree)>("saNtfNotificationFree")) {
        for (const char* const call : {"saNtfPtrValAllocate", "saNtfNotificationSend"}) {
            library.function<void()>(call);
        }
    }
    decltype(&saNtfInitialize) initialize;
    decltype(&saNtfFinalize) finalize;
    decltype(&saNtfAlarmNotificationAllocate) allocate;
    decltype(&saNtfNotificationFree) free;
};

SaNtfHandleT openSession(Diagnosis& diagnosis, const Service& service) {
    const auto begin = std::chrono::steady_clock::now();
    SaNtfHandleT handle = 0;
    const SaAisErrorT answer = whileBusy([&] {
        SaVersionT version = {'A', 1, 1};
        return service.initialize(&handle, nullptr, &version);
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

void checkNames(Diagnosis& diagnosis, const Service& service, SaNtfHandleT handle) {
    constexpr SaUint16T kEmptyText = 1; // its NUL
    SaNtfAlarmNotificationT notification{};
    const SaAisErrorT answer = whileBusy([&] {
        return service.allocate(handle, &notification, 0, kEmptyText, 0, 0, 0, 0,
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
    switch (lengthOf(header.notificationObject, header.notifyingObject)) {
    case NameLength::Enough:
        diagnosis.ok(kNames, "have room for " + length + " bytes");
        break;
    case NameLength::TooShort:
        diagnosis.fail(kNames, "have less room than " + length + " bytes",
                       "load an NTF client library built with SA_MAX_NAME_LENGTH " + length +
                           ": with this one every alarm writes past its memory");
        break;
    case NameLength::Unknown:
        diagnosis.warn(kNames, "whether they have room for " + length + " bytes cannot be told",
                       "find out whether the NTF client library was built with "
                       "SA_MAX_NAME_LENGTH " +
                           length);
        break;
    }
    service.free(notification.notificationHandle);
}

} // namespace

void checkNtfService(Diagnosis& diagnosis) {
    constexpr char kCheck[] = "NTF library";
    Library library(kNtfLibrary);
    try {
        const Service service(library);
        diagnosis.ok(kCheck, "is " + library.file());
        if (const SaNtfHandleT handle = openSession(diagnosis, service); handle != 0) {
            checkNames(diagnosis, service, handle);
            service.finalize(handle);
        }
    } catch (const CommandError&) {
        diagnosis.fail(kCheck, "cannot be loaded: " + library.error(),
                       "make libSaNtf.so.0 of the running service the first in the loader path");
    }
}

} // namespace dolqctl
