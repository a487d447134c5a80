#pragma once

#include <memory>

#include "adapter/NtfSessionI.h"

namespace dolq {

/// A session of its own with the NTF client library, open when the service grants it: what each
/// adapter of either generation is built on.
std::shared_ptr<NtfSessionI> makeNtfSession();

} // namespace dolq
