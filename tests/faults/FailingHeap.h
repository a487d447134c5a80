#pragma once

#include <cstddef>

/// The program's heap (operator new, in every library of the process), of which one allocation can
/// be made to fail. For one thread; allocations of the fake platform are left alone.
namespace failing_heap {

/// From now on, the `position`th allocation (1 is the next; 0: none) throws std::bad_alloc, once.
void failAt(std::size_t position);

/// Ends what `failAt` began. True when the allocation was reached, and failed.
bool stop();

/// Blocks allocated between `failAt` and `stop` that nobody has released.
std::size_t leakedBlocks();

/// Whether the allocation that failed was asked for by TinyXML.
bool failedInTinyXml();

/// Releases the leaked blocks.
void releaseLeakedBlocks();

} // namespace failing_heap
