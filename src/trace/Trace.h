#pragma once

#include "ruxa/trace/v2/TraceBackend.h"
#include "trace/TraceObject.h"

namespace dolq {

// The groups by number: what a platform's backend calls them is its own business.
constexpr auto kFailure = static_cast<ruxa::trace::v2::TraceGroup::e>(0);
constexpr auto kFlow = static_cast<ruxa::trace::v2::TraceGroup::e>(4);
constexpr auto kDetail = static_cast<ruxa::trace::v2::TraceGroup::e>(8);

/// Only named, never called: lets the compiler check what a platform's `formatStr` may not.
[[gnu::format(printf, 1, 2)]] int checkedFormat(const char* format, ...);

} // namespace dolq

/// One trace message. The arguments behind the group are a printf format and what it shows; they
/// are evaluated only if the group is on. A source file that traces names itself in `kTraceUnit`.
#define DOLQ_TRACE(traceObject, group, ...)                                                        \
    do {                                                                                           \
        using DolqBackend = ::ruxa::trace::v2::TraceBackend;                                       \
        if (DolqBackend::isTraceGroupEnabled((traceObject).get(), (group))) {                      \
            static_cast<void>(sizeof(::dolq::checkedFormat(__VA_ARGS__)));                         \
            DolqBackend::Trace((traceObject).get(), (group), kTraceUnit, __LINE__,                 \
                               DolqBackend::formatStr(__VA_ARGS__));                               \
        }                                                                                          \
    } while (false)
