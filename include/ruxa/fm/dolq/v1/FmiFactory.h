#pragma once

// Where an application of the first generation begins:
//
//   ruxa::fm::fmi::v1::FaultManagementI* alarms =
//       ruxa::fm::dolq::v1::getFmiFactory()->createFaultManagement();
//   alarms->ceaseAlarm("managedElement=1,Board=3", 4102, "BoardOverheated");
//   delete alarms;
//   ruxa::fm::dolq::v1::freeFmiFactory();

#include "ruxa/fm/dolq/v1/ConfigurationI.h"
#include "ruxa/fm/fmi/v1/FaultManagementI.h"

/// The first generation: an adapter is a plain pointer that the client owns, and the client may
/// change the mappings.
namespace ruxa::fm::dolq::v1 {

/// Makes alarm interfaces over one thread's fault-to-alarm table, which the client may change.
/// Takes no lock: use it on the thread that asked for it.
class FmiFactory {
public:
    /// `freeFmiFactory` destroys the factory. A client never does.
    virtual ~FmiFactory() = default;

    /// Makes an adapter with a session of its own with the notification service. The caller owns it
    /// and deletes it before the factory is freed. Blocks while the service answers "try again",
    /// without limit. An adapter is returned even if the service refuses the session: it then drops
    /// every alarm with a trace, and does not ask again. Throws only when memory is exhausted or a
    /// platform library throws. A session costs time and memory in the service, so make few
    /// adapters and keep them.
    virtual fmi::v1::FaultManagementI* createFaultManagement() = 0;

    /// Returns the factory's table: always the same object, never null, owned by the factory.
    virtual ConfigurationI* getConfiguration() = 0;
};

/// Returns the calling thread's factory, which is never null. The library owns it, and it is valid
/// until `freeFmiFactory` is called on the same thread. Other threads get factories of their own.
///
/// The first call on a thread finds the load module's alarm mapping files (environment variables
/// `ZBN_NO`, `ZBN_REV`; the node's load-module handler) and reads them. What is missing or wrong
/// there is traced, and the table then holds what could be read, at worst nothing. Throws only when
/// memory is exhausted or a platform library throws. The factory is stored before the reading: when
/// the exception comes from there, the next call returns it with the mappings read so far, and
/// `freeFmiFactory` lets the call after it begin anew.
[[gnu::visibility("default")]] FmiFactory* getFmiFactory();

/// Frees the calling thread's factory, if there is one, with its table. Destroy its adapters first,
/// for they point at the table. The factory of a thread that ends without this call stays allocated
/// for the life of the process.
[[gnu::visibility("default")]] void freeFmiFactory();

} // namespace ruxa::fm::dolq::v1
