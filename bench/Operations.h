#pragma once

#include <memory>
#include <vector>

#include <saNtf.h>

#include "ruxa/fm/fmi/v1/FaultManagementI.h"

namespace bench {

using ruxa::fm::fmi::v1::FaultManagementI;

/// One operation of the client interface: a call of it, and the same notification made by hand.
struct Operation {
    const char* name;
    void (*call)(FaultManagementI& adapter);
    SaAisErrorT (*sendDirectly)(SaNtfHandleT session);
};

/// Every operation of the interface. The alarms have an additional text and two entries of
/// additional information; secondary ones are correlated with two events.
const std::vector<Operation>& operations();

/// The primary alarm with a 128-bit event, the usual one.
const Operation& primaryAlarm();

/// An adapter of the calling thread's factory, over a table of 50 mappings of which the alarm's is
/// the last. Destroy it before the factory is freed, on the same thread.
std::unique_ptr<FaultManagementI> makeAdapter();

/// A session of the direct client.
class DirectSession {
public:
    DirectSession();
    ~DirectSession() { saNtfFinalize(m_handle); }
    DirectSession(const DirectSession&) = delete;
    DirectSession& operator=(const DirectSession&) = delete;
    SaNtfHandleT get() const { return m_handle; }

private:
    SaNtfHandleT m_handle = 0;
};

} // namespace bench
