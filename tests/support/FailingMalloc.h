#pragma once

#include "support/TestSupport.h"

/// The allocator of the whole program, the C library included, which can be made to fail.
/// Sanitizers have one of their own.
constexpr bool kMallocCanFail = !kSanitized;

/// From now on the `position`th allocation (1 is the next) fails, or all from it on.
void startFailingMalloc(long position, bool lasting);

/// Ends that. Whether an allocation has failed.
bool stopFailingMalloc();

/// How many blocks are allocated.
long liveBlocks();

template <typename Work> bool withFailingMalloc(long position, Work work, bool lasting = false) {
    startFailingMalloc(position, lasting);
    work();
    return stopFailingMalloc();
}
