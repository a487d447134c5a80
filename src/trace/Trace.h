#pragma once

#include "ruxa/trace/v2/TraceBackend.h"
#include "trace/TraceObject.h"

namespace dolq {

// The groups by number: what they are called is up to the platform's backend. The first carries
// failures and refusals, the second the calls with their arguments, the third details.
constexpr auto kFailure = static_cast<ruxa::trace::v2::TraceGroup::e>(0);
constexpr auto kFlow = static_cast<ruxa::trace::v2::TraceGroup::e>(4);
constexpr auto kDetail = static_cast<ruxa::trace::v2::TraceGroup::e>(8);

/// Never called: its attribute makes the compiler check formats, which `formatStr` of a platform's
/// backend need not declare.
[[gnu::format(printf, 1, 2)]] int checkedFormat(const char* format, ...);

} // namespace dolq

/// One trace message. Behind the group come a printf format and its arguments, which are evaluated
/// only if the group is on. A macro, because it passes on the line and does not evaluate arguments
/// in vain. Each source file that traces names itself in `kTraceUnit`.
#define DOLQ_TRACE(traceObject, group, ...)                                                        \
    do {                                                                                           \
        using DolqBackend = ::ruxa::trace::v2::TraceBackend;                                       \
        if (DolqBackend::isTraceGroupEnabled((traceObject).get(), (group))) {                      \
            static_cast<void>(sizeof(::dolq::checkedFormat(__VA_ARGS__)));                         \
            DolqBackend::Trace((traceObject).get(), (group), kTraceUnit, __LINE__,                 \
                               DolqBackend::formatStr(__VA_ARGS__));                               \
        }                                                                                          \
    } while (false)
