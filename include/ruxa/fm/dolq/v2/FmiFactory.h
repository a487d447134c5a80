#pragma once

// Where an application begins:
//
//   auto alarms = ruxa::fm::dolq::v2::getFmiFactory()->createFaultManagement();
//   alarms->ceaseAlarm("managedElement=1,Board=3", 4102, "BoardOverheated");
//   alarms.reset();
//   ruxa::fm::dolq::v2::freeFmiFactory();

#include <memory>

#include "ruxa/fm/fmi/v1/FaultManagementI.h"

/// The second generation: an adapter is a shared pointer, and the mappings are fixed. It shares
/// nothing with the first: a thread that uses both has two factories with a table each.
namespace ruxa::fm::dolq::v2 {

/// Makes alarm interfaces over one thread's fault-to-alarm table, which is fixed once read. Takes
/// no lock: use it on the thread that asked for it.
class FmiFactory {
public:
    /// `freeFmiFactory` destroys the factory. A client never does.
    virtual ~FmiFactory() = default;

    /// Makes an adapter with a session of its own with the notification service. Drop the last
    /// pointer to it before the factory is freed. Blocks while the service answers "try again",
    /// without limit. An adapter is returned even if the service refuses the session: it then drops
    /// every alarm with a trace, and does not ask again. Throws only when memory is exhausted or a
    /// platform library throws. A session costs time and memory in the service, so make few
    /// adapters and keep them.
    virtual std::shared_ptr<fmi::v1::FaultManagementI> createFaultManagement() = 0;
};

/// Returns the calling thread's factory, which is never null. The library owns it, and it is valid
/// until `freeFmiFactory` is called on the same thread. Other threads get factories of their own.
///
/// The first call on a thread finds the load module's alarm mapping files (environment variables
/// `ZBN_NO`, `ZBN_REV`; the node's load-module handler) and reads them. What is missing or wrong
/// there is traced, and the table then holds what could be read, at worst nothing. Throws only when
/// memory is exhausted or a platform library throws; there is no factory then, and the next call
/// begins anew.
[[gnu::visibility("default")]] FmiFactory* getFmiFactory();

/// Frees the calling thread's factory, if there is one, with its table. Destroy its adapters first,
/// for they point at the table. The factory of a thread that ends without this call stays allocated
/// for the life of the process.
[[gnu::visibility("default")]] void freeFmiFactory();

} // namespace ruxa::fm::dolq::v2
