#pragma once

#include <cstdio>

#include "ruxa/trace/v2/TraceBackend.h"
#include "trace/TraceObject.h"

namespace dolq {

// The groups by number: what a platform's backend calls them is its own business.
constexpr auto kFailure = static_cast<ruxa::trace::v2::TraceGroup::e>(0);
constexpr auto kFlow = static_cast<ruxa::trace::v2::TraceGroup::e>(4);
constexpr auto kDetail = static_cast<ruxa::trace::v2::TraceGroup::e>(8);

} // namespace dolq

/// Emits one message through a TraceObject: asks whether the group is on, and only then evaluates
/// and formats the arguments. Each source file that traces defines its `kTraceUnit`.
#define DOLQ_TRACE(object, group, ...)                                                             \
    do {                                                                                           \
        if (::ruxa::trace::v2::TraceBackend::isTraceGroupEnabled((object).get(), (group))) {       \
            static_cast<void>(sizeof(std::printf(__VA_ARGS__))); /* checks the format */           \
            ::ruxa::trace::v2::TraceBackend::Trace(                                                \
                (object).get(), (group), kTraceUnit, __LINE__,                                     \
                ::ruxa::trace::v2::TraceBackend::formatStr(__VA_ARGS__));                          \
        }                                                                                          \
    } while (false)
