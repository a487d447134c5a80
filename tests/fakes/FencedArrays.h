#pragma once

namespace fenced_arrays {

/// While one lives, each array that this thread makes with `new[]` ends where memory ends that may
/// be read: whoever reads behind it, in whatever library, dies of SIGSEGV.
class Fence {
public:
    Fence();
    ~Fence();
    Fence(const Fence&) = delete;
    Fence& operator=(const Fence&) = delete;
};

} // namespace fenced_arrays
