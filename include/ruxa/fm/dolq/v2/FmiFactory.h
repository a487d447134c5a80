#pragma once

#include <memory>

#include "ruxa/fm/fmi/v1/FaultManagementI.h"

namespace ruxa::fm::dolq::v2 {

/// Makes alarm interfaces over one thread's fault-to-alarm table, which is fixed once read. Second
/// generation: adapters are shared pointers.
class FmiFactory {
public:
    virtual ~FmiFactory() = default;

    /// A new adapter with a notification session of its own; drop the last pointer to it before the
    /// factory is freed. Blocks while the notification service is busy. An adapter is returned even
    /// when the service refuses the session; it then drops every alarm, with a trace.
    virtual std::shared_ptr<fmi::v1::FaultManagementI> createFaultManagement() = 0;
};

/// The calling thread's factory, never null, owned by the library. The first call on a thread reads
/// the load module's mapping files (environment variables `ZBN_NO`, `ZBN_REV`). Throws only on
/// memory exhaustion or when a platform library throws.
[[gnu::visibility("default")]] FmiFactory* getFmiFactory();

/// Frees the calling thread's factory, if any, with its table. Destroy its adapters first. A thread
/// that ends without this call leaves its factory allocated.
[[gnu::visibility("default")]] void freeFmiFactory();

} // namespace ruxa::fm::dolq::v2
