#pragma once

#include <string>

namespace platform::trace {

/// A text of the calling thread's own, released when the thread ends. It outlives the thread's
/// `thread_local` objects and, on the main thread, the static ones: their destructors may trace.
std::string& threadText();

} // namespace platform::trace
