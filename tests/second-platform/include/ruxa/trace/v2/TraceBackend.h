#pragma once

#include <string>

namespace ruxa::trace::v2 {

/// The same numbers under other names, and fewer of them.
struct TraceGroup {
    enum e { Alarming = 0, Calls = 4, Everything = 8 };
};

class [[gnu::visibility("default")]] TraceBackend {
public:
    static void* getDefaultTraceObject();
    static std::string getTraceObjectPrefix();
    static void* registerTraceObject(const std::string& name);
    static void deregisterTraceObject(void* traceObject);
    static bool isTraceGroupEnabled(void* traceObject, TraceGroup::e group);
    [[gnu::format(printf, 1, 2)]] static const char* formatStr(const char* format, ...);
    static void Trace(void* traceObject, TraceGroup::e group, const char* file, unsigned int line,
                      const char* text);
};

} // namespace ruxa::trace::v2
