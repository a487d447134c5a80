// The texts that tracing makes: a message, and the line that is written of it.
#pragma once

#include <cstdarg>
#include <string>

#include <ruxa/trace/v2/TraceBackend.h>

namespace platform::trace {

/// The message that `format` and its arguments make: valid until the thread makes the next one or
/// ends. It outlives `thread_local` and static objects, whose destructors may trace.
[[gnu::format(printf, 1, 0)]] const char* formatted(const char* format, std::va_list arguments);

/// "time pid tid object group origin text": of now, this process and this thread.
std::string lineOf(const std::string& object, ruxa::trace::v2::TraceGroup::e group,
                   const std::string& origin, const std::string& text);

} // namespace platform::trace
