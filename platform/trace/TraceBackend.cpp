#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <mutex>
#include <new>
#include <unordered_map>

#include <pthread.h>
#include <ruxa/trace/v2/TraceBackend.h>
#include <syslog.h>

#include "common/Environment.h"
#include "common/Escape.h"
#include "common/TraceGroups.h"
#include "common/Undisturbed.h"
#include "platform/trace/Sink.h"
#include "platform/trace/TraceText.h"

namespace ruxa::trace::v2 {

namespace {

using common::Undisturbed;
using platform::trace::lineOf;
using platform::trace::Sink;

constexpr char kGroupsVariable[] = "RUXA_TRACE_GROUPS";
constexpr char kSinkVariable[] = "RUXA_TRACE_SINK";
constexpr std::uint32_t kDefaultGroups = 1u << 0;

constexpr std::uintptr_t kDefaultObject = 1;

void* handleOf(std::uintptr_t number) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a handle is never dereferenced.
    return reinterpret_cast<void*>(number);
}

/// Messages lost since one got through.
std::atomic<unsigned long> lost{0};

/// Guards the making of the backend and all that changes in it; never held while a line is written.
/// The handlers of fork are there from loading on: a process forked while another thread traces, be
/// it for the first time, gets the mutex unlocked and the backend whole.
std::mutex mutex;
[[maybe_unused]] const int kForkHandlers =
    pthread_atfork([] { mutex.lock(); }, [] { mutex.unlock(); },
                   [] {
                       mutex.unlock();
                       lost = 0; // the parent tells
                   });

std::string chosenPrefix() {
    const char* const prefix = common::trustedEnvironment("RUXA_TRACE_PREFIX", nullptr);
    return prefix != nullptr ? prefix : std::string(program_invocation_short_name) + ".";
}

struct Backend {
    Backend(std::uint32_t enabled, const std::string& sinkChoice, std::string& refusal)
        : groups(enabled), sink(sinkChoice, refusal) {}

    const std::uint32_t groups; // bit n for group n
    Sink sink;
    const std::string prefix = chosenPrefix();
    /// The name, escaped, of each handle.
    std::unordered_map<void*, std::string> objects{
        {handleOf(kDefaultObject), common::escapedWord(prefix + "default")}};
    /// Counted on, never reused: a released handle is recognised, not taken for another object's.
    std::uintptr_t lastObject = kDefaultObject;
};

std::atomic<Backend*> instance{nullptr};

/// A text for the operator about the value of an environment variable.
std::string notUsed(const char* variable, const std::string& value, const std::string& reason,
                    const char* used) {
    return std::string(variable) + "=\"" + common::escapedText(value) +
           "\" is not used: " + common::escapedText(reason) + ". Tracing uses " + used +
           " instead.";
}

Backend& createBackend() {
    const Undisturbed undisturbed;
    const std::string groups = common::trustedEnvironment(kGroupsVariable, "0");
    const std::string sink = common::trustedEnvironment(kSinkVariable, "stderr");
    const auto enabled = common::parseTraceGroups(groups);
    std::string refusal;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (instance != nullptr) {
            return *instance;
        }
        // Never deleted: other libraries trace from their static destructors.
        instance = new Backend(enabled.value_or(kDefaultGroups), sink, refusal);
    }
    if (!enabled) {
        instance.load()->sink.tell(
            notUsed(kGroupsVariable, groups,
                    "it must be all, none, or numbers from 0 to 8 joined by commas", "group 0"));
    }
    if (!refusal.empty()) {
        instance.load()->sink.tell(notUsed(kSinkVariable, sink, refusal, "stderr"));
    }
    return *instance;
}

/// Made at its first use, so that a program can still choose the settings when it starts.
Backend& backend() {
    Backend* const existing = instance.load(std::memory_order_acquire);
    return existing != nullptr ? *existing : createBackend();
}

std::string nameOf(Backend& own, void* traceObject) {
    const std::lock_guard<std::mutex> lock(mutex);
    const auto object = own.objects.find(traceObject);
    return object != own.objects.end() ? object->second : "(unregistered)";
}

/// Only syslog tells its receivers how grave a message is.
int priorityOf(TraceGroup::e group) {
    switch (group) {
    case TraceGroup::FAILURE:
        return LOG_ERR;
    case TraceGroup::FLOW:
        return LOG_INFO;
    default:
        return LOG_DEBUG;
    }
}

/// How many messages nobody has heard of yet. What is left of it is told another time.
struct Untold {
    unsigned long count = lost.exchange(0);
    ~Untold() { lost += count; }
};

void record(Backend& own, const std::string& object, TraceGroup::e group, const std::string& origin,
            const std::string& text) {
    Untold untold;
    if (untold.count != 0 &&
        own.sink.write(LOG_ERR,
                       lineOf(nameOf(own, handleOf(kDefaultObject)), TraceGroup::FAILURE,
                              "ruxa-trace:0", "messages lost: " + std::to_string(untold.count)))) {
        untold.count = 0;
    }
    if (untold.count != 0 ||
        !own.sink.write(priorityOf(group), lineOf(object, group, origin, text))) {
        ++untold.count;
    }
}

} // namespace

void* TraceBackend::getDefaultTraceObject() { return handleOf(kDefaultObject); }

std::string TraceBackend::getTraceObjectPrefix() { return backend().prefix; }

void* TraceBackend::registerTraceObject(const std::string& name) {
    Backend& own = backend();
    const std::lock_guard<std::mutex> lock(mutex);
    void* const handle = handleOf(own.lastObject + 1);
    own.objects.emplace(handle, common::escapedWord(name));
    ++own.lastObject;
    return handle;
}

void TraceBackend::deregisterTraceObject(void* traceObject) {
    if (traceObject == getDefaultTraceObject()) {
        return;
    }
    if (Backend* const own = instance) {
        const std::lock_guard<std::mutex> lock(mutex);
        own->objects.erase(traceObject);
    }
}

bool TraceBackend::isTraceGroupEnabled(void* /*traceObject*/, TraceGroup::e group) {
    const auto number = static_cast<unsigned>(group);
    try {
        return number < 32 && ((backend().groups >> number) & 1u) != 0;
    } catch (const std::bad_alloc&) {
        return true; // `Trace` tries again, and counts
    }
}

const char* TraceBackend::formatStr(const char* format, ...) {
    if (format == nullptr) {
        return "(no format)";
    }
    std::va_list arguments;
    va_start(arguments, format);
    const char* text = "(no memory for the text)";
    try {
        text = platform::trace::formatted(format, arguments);
    } catch (const std::bad_alloc&) {
        // `text` says it.
    }
    va_end(arguments);
    return text;
}

void TraceBackend::Trace(void* traceObject, TraceGroup::e group, const char* file,
                         unsigned int line, const char* text) {
    try {
        const Undisturbed undisturbed;
        Backend& own = backend();
        if (isTraceGroupEnabled(traceObject, group)) {
            const std::string origin =
                common::escapedWord(file != nullptr ? file : "") + ":" + std::to_string(line);
            record(own, nameOf(own, traceObject), group, origin,
                   common::escapedText(text != nullptr ? text : "(no text)"));
        }
    } catch (const std::bad_alloc&) {
        ++lost;
    }
}

} // namespace ruxa::trace::v2
