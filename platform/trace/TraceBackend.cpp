#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <system_error>
#include <unordered_map>

#include <pthread.h>
#include <ruxa/trace/v2/TraceBackend.h>
#include <spdlog/logger.h>

#include "common/Escape.h"
#include "platform/trace/Settings.h"
#include "platform/trace/Sink.h"
#include "platform/trace/ThreadText.h"

namespace ruxa::trace::v2 {

namespace {

using platform::trace::enabledGroups;
using platform::trace::openSink;
using platform::trace::threadText;
using platform::trace::traceObjectPrefix;

constexpr std::uintptr_t kDefaultObject = 1;

void* handleOf(std::uintptr_t number) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a handle is never dereferenced.
    return reinterpret_cast<void*>(number);
}

/// Guards the making of the backend and all that changes in it. The handlers of fork are there from
/// loading on: a process forked while another thread traces, be it for the first time, gets the
/// mutex unlocked and the backend whole.
std::mutex mutex;
[[maybe_unused]] const int kForkHandlers =
    pthread_atfork([] { mutex.lock(); }, [] { mutex.unlock(); }, [] { mutex.unlock(); });

struct Backend {
    const std::uint32_t groups = enabledGroups();
    const std::string prefix = traceObjectPrefix();
    const std::unique_ptr<spdlog::logger> logger = openSink();
    /// The name, escaped, of each handle.
    std::unordered_map<void*, std::string> objects{
        {handleOf(kDefaultObject), common::escapedWord(prefix + "default")}};
    /// Counted on, never reused: a released handle is recognised, not taken for another object's.
    std::uintptr_t lastObject = kDefaultObject;
};

std::atomic<Backend*> instance{nullptr};

Backend& createBackend() {
    const std::lock_guard<std::mutex> lock(mutex);
    if (instance == nullptr) {
        // Never deleted: other libraries trace from their static destructors.
        instance = new Backend;
    }
    return *instance;
}

/// Made at its first use, so that a program can still choose the settings when it starts.
Backend& backend() {
    Backend* const existing = instance.load(std::memory_order_acquire);
    return existing != nullptr ? *existing : createBackend();
}

/// Only syslog tells its receivers how grave a message is.
spdlog::level::level_enum levelOf(TraceGroup::e group) {
    switch (group) {
    case TraceGroup::FAILURE:
        return spdlog::level::err;
    case TraceGroup::FLOW:
        return spdlog::level::info;
    default:
        return spdlog::level::debug;
    }
}

[[gnu::format(printf, 1, 0)]] std::string formatted(const char* format, std::va_list arguments) {
    std::va_list measured;
    va_copy(measured, arguments);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_copy, which it misses, sets it.
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    const int error = errno;
    va_end(measured);
    if (length < 0) {
        return std::string("(cannot format \"") + format +
               "\": " + std::generic_category().message(error) + ")";
    }
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
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
    Backend& own = backend();
    const std::lock_guard<std::mutex> lock(mutex);
    own.objects.erase(traceObject);
}

bool TraceBackend::isTraceGroupEnabled(void* /*traceObject*/, TraceGroup::e group) {
    const auto number = static_cast<unsigned>(group);
    return number < 32 && ((backend().groups >> number) & 1u) != 0;
}

const char* TraceBackend::formatStr(const char* format, ...) {
    if (format == nullptr) {
        return "(no format)";
    }
    std::va_list arguments;
    va_start(arguments, format);
    const char* text = "(no memory for the text)";
    try {
        // Made before the previous text goes, which may be among the arguments.
        text = (threadText() = formatted(format, arguments)).c_str();
    } catch (const std::bad_alloc&) {
        // `text` says it.
    }
    va_end(arguments);
    return text;
}

void TraceBackend::Trace(void* traceObject, TraceGroup::e group, const char* file,
                         unsigned int line, const char* text) {
    try {
        if (!isTraceGroupEnabled(traceObject, group)) {
            return;
        }
        const std::string origin =
            common::escapedWord(file != nullptr ? file : "") + ":" + std::to_string(line);
        const std::string message = common::escapedText(text != nullptr ? text : "(no text)");
        Backend& own = backend();
        const std::lock_guard<std::mutex> lock(mutex);
        const auto object = own.objects.find(traceObject);
        const std::string& name = object != own.objects.end() ? object->second : "(unregistered)";
        own.logger->log(levelOf(group),
                        name + " " + std::to_string(group) + " " + origin + " " + message);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "ruxa-trace: a message is lost: %s\n", failure.what());
    }
}

} // namespace ruxa::trace::v2
