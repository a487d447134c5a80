#include <cstdarg>
#include <cstdio>

#include "Record.h"
#include "ruxa/trace/v2/TraceBackend.h"

namespace ruxa::trace::v2 {

namespace {
char g_object;
thread_local std::string g_text;
} // namespace

void* TraceBackend::getDefaultTraceObject() { return &g_object; }

std::string TraceBackend::getTraceObjectPrefix() { return "second."; }

void* TraceBackend::registerTraceObject(const std::string& name) { return new std::string(name); }

void TraceBackend::deregisterTraceObject(void* traceObject) {
    delete static_cast<std::string*>(traceObject);
}

bool TraceBackend::isTraceGroupEnabled(void*, TraceGroup::e group) {
    return group != TraceGroup::Everything;
}

const char* TraceBackend::formatStr(const char* format, ...) {
    char text[512];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    g_text = text;
    return g_text.c_str();
}

void TraceBackend::Trace(void* traceObject, TraceGroup::e group, const char*, unsigned int,
                         const char* text) {
    const std::string start = std::string(text).substr(0, 16);
    record("trace " + std::to_string(group) + ' ' + *static_cast<std::string*>(traceObject) + ' ' +
           start);
}

} // namespace ruxa::trace::v2
