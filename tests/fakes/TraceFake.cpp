#include <cstdarg>
#include <cstdio>

#include <ruxa/trace/v2/TraceBackend.h>

#include "FakePlatform.h"

namespace ruxa::trace::v2 {

namespace {

char g_defaultObject;
thread_local std::string g_text;

} // namespace

void* TraceBackend::getDefaultTraceObject() {
    const PlatformCode here;
    platform().record("getDefaultTraceObject");
    return &g_defaultObject;
}

std::string TraceBackend::getTraceObjectPrefix() { return "prefix."; }

void* TraceBackend::registerTraceObject(const std::string& name) {
    platform().called("registerTraceObject");
    platform().record("registerTraceObject " + name); // the last that can fail
    const PlatformCode here;
    const std::lock_guard<std::mutex> lock(platform().mutex);
    auto* const handle = new char; // one address for each registration
    platform().traceObjects[handle] = name;
    return handle;
}

void TraceBackend::deregisterTraceObject(void* traceObject) {
    const PlatformCode here;
    const std::lock_guard<std::mutex> lock(platform().mutex);
    const auto found = platform().traceObjects.find(traceObject);
    if (found == platform().traceObjects.end()) {
        platform().events.emplace_back("deregisterTraceObject of an unknown handle");
        return;
    }
    platform().events.push_back("deregisterTraceObject " + found->second);
    platform().traceObjects.erase(found);
    delete static_cast<char*>(traceObject);
    platform().called("deregisterTraceObject");
}

bool TraceBackend::isTraceGroupEnabled(void* traceObject, TraceGroup::e group) {
    const std::lock_guard<std::mutex> lock(platform().mutex);
    platform().misusedTraceObjects += platform().traceObjects.count(traceObject) == 0 ? 1 : 0;
    return platform().enabledGroups.count(group) != 0;
}

const char* TraceBackend::formatStr(const char* format, ...) {
    platform().called("formatStr");
    ++platform().formattedTexts;
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string text(static_cast<std::size_t>(length), '\0'); // may fail, as a real backend may
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    va_end(arguments);
    const PlatformCode here;
    g_text = text;
    return g_text.c_str();
}

void TraceBackend::Trace(void* traceObject, TraceGroup::e group, const char* file, unsigned int,
                         const char* text) {
    const bool known = [&] {
        const std::lock_guard<std::mutex> lock(platform().mutex);
        return platform().traceObjects.count(traceObject) != 0;
    }();
    platform().record(std::to_string(group) + ' ' + file + '|' +
                      (known ? text : "through an unregistered trace object"));
}

} // namespace ruxa::trace::v2
