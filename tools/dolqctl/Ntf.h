#pragma once

#include <functional>
#include <string>

#include <saNtf.h>

#include "SharedObject.h"
#include "Waiting.h"

namespace dolqctl {

/// What the notification service refuses: "saNtfInitialize answers 2 (SA_AIS_ERR_LIBRARY): ..."
class NtfError : public CommandError {
public:
    NtfError(const std::string& call, SaAisErrorT answer);
};

/// A session with the notification service that programs here are given. Calls throw GivenUp when
/// the waiting is over.
class Ntf {
public:
    /// Opens it. Throws NtfError, and CommandError when the service's library cannot be loaded.
    explicit Ntf(Waiting& waiting);
    /// Closes it; what was allocated in it ends.
    ~Ntf();
    Ntf(const Ntf&) = delete;
    Ntf& operator=(const Ntf&) = delete;

    SaNtfHandleT handle() const { return m_handle; }

    /// A notification like those of the library, the session's. Throws NtfError.
    SaNtfAlarmNotificationT allocateAlarm();

    /// A function of the service. Throws CommandError when it has none of that name.
    template <typename Function> Function* function(const char* name) {
        return m_service.function<Function>(name);
    }

    /// As Waiting::call; throws NtfError for answers other than SA_AIS_OK and `alsoFine`.
    SaAisErrorT call(const char* name, const std::function<SaAisErrorT()>& call,
                     SaAisErrorT alsoFine = SA_AIS_OK);

private:
    Waiting& m_waiting;
    SharedObject m_service{kNtfLibrary};
    SaNtfHandleT m_handle = 0;
};

} // namespace dolqctl
