#pragma once

/// The allocator of the whole program, the C library included, which can be made to fail. Under a
/// sanitizer, which has one of its own, what `new` takes.

/// From now on the `position`th allocation (1 is the next) fails, or all from it on; those that are
/// made while `isExempt` holds are left alone.
void startFailingMalloc(long position, bool lasting = false, bool (*isExempt)() = nullptr);

/// Ends that. Whether an allocation has failed.
bool stopFailingMalloc();

/// How many blocks are allocated.
long liveBlocks();

template <typename Work> bool withFailingMalloc(long position, Work work) {
    startFailingMalloc(position);
    work();
    return stopFailingMalloc();
}
