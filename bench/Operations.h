#pragma once

#include <memory>
#include <string>
#include <vector>

#include <saNtf.h>

#include "ruxa/fm/fmi/v1/FaultManagementI.h"

namespace bench {

using ruxa::fm::fmi::v1::FaultManagementI;

/// One operation of the client interface: a call of it, and the direct client, which sends the same
/// notification with the service's own calls from texts that are ready.
struct Operation {
    const char* name;
    void (*call)(FaultManagementI& adapter);
    SaAisErrorT (*sendDirectly)(SaNtfHandleT session);
};

/// An operation of each kind. The overloads that are left out differ in a program group, which adds
/// a value, or in how events are given. Raises have a text and two entries of additional
/// information.
const std::vector<Operation>& operations();

/// An adapter of the calling thread's v1 factory, over a table of `mappings` mappings of which the
/// alarm's is the last. Destroy it before the factory is freed, on the same thread.
std::unique_ptr<FaultManagementI> makeAdapter(std::uint32_t mappings = 50);

/// A session of the direct client.
SaNtfHandleT openSession();

/// Makes this program a load module with one mapping file, which it returns: `entries` mappings of
/// the class "board", each of a fault of its own. Both files lie in VELK_MANIFEST_DIR.
std::string makeLoadModule(int entries);

} // namespace bench
