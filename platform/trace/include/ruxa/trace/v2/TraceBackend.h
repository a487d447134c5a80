#pragma once

#include <string>

namespace ruxa::trace::v2 {

/// The groups a trace message can belong to. Each is switched on and off by itself.
struct TraceGroup {
    enum e {
        FAILURE = 0, ///< failures and refusals
        GROUP1 = 1,
        GROUP2 = 2,
        GROUP3 = 3,
        FLOW = 4, ///< the flow of public operations, one line a call
        GROUP5 = 5,
        GROUP6 = 6,
        GROUP7 = 7,
        DETAIL = 8 ///< details
    };
};

/// The node's trace backend: the one place that every diagnostic goes to.
/// All operations may be called from any thread at any time.
class [[gnu::visibility("default")]] TraceBackend {
public:
    /// The trace object of whoever has registered none; never null, never to be released.
    static void* getDefaultTraceObject();

    /// The text that the names of this process's trace objects begin with.
    static std::string getTraceObjectPrefix();

    /// A new handle, never null, for a trace object called `name`. One name may be registered many
    /// times; each call gives a handle of its own. Give it back with `deregisterTraceObject`.
    static void* registerTraceObject(const std::string& name);

    /// Releases a handle that `registerTraceObject` returned. It must not be used afterwards.
    static void deregisterTraceObject(void* traceObject);

    /// Whether messages of `group` would be recorded for `traceObject`. Costs a few nanoseconds.
    static bool isTraceGroupEnabled(void* traceObject, TraceGroup::e group);

    /// The text of a printf format and its arguments, of any length. The backend keeps the storage:
    /// it holds until the same thread calls `formatStr` again.
    [[gnu::format(printf, 1, 2)]] static const char* formatStr(const char* format, ...);

    /// Records one message. `file` and `line` say where it comes from.
    static void Trace(void* traceObject, TraceGroup::e group, const char* file, unsigned int line,
                      const char* text);
};

} // namespace ruxa::trace::v2
