#pragma once

#include <memory>

namespace spdlog {
class logger;
}

namespace platform::trace {

/// Opens what `RUXA_TRACE_SINK` names. The logger puts the time, the process id and the thread id
/// before each message, hands it over as one line in one write, and lets no failure out. It takes
/// no lock: one message at a time.
std::unique_ptr<spdlog::logger> openSink();

} // namespace platform::trace
