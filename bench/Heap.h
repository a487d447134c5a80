#pragma once

#include <cstddef>

namespace bench {

/// What the calling thread takes from the heap, by `new` or `malloc`, while it counts. For programs
/// that hold Heap.cpp.
struct Heap {
    bool counting = false;
    std::size_t allocations = 0;  ///< a block that is resized counts again
    std::ptrdiff_t bytes = 0;     ///< taken less given back, as the allocator rounds them
    std::ptrdiff_t peakBytes = 0; ///< the most that `bytes` has been
};

Heap& heap();

} // namespace bench
