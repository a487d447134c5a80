#pragma once

#include <cstdlib>

namespace dolqctl {

/// For commands that report themselves what the library's reader traces: traces are seen only by
/// who asks for them. Before the first trace, for the backend reads its environment once.
inline void quietTraces() { setenv("RUXA_TRACE_GROUPS", "none", 0); }

} // namespace dolqctl
