#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "adapter/NtfSessionI.h"
#include "ntf/NtfI.h"
#include "trace/TraceObject.h"

namespace dolq {

/// One session with the notification service, open from construction to destruction. A session that
/// the service refuses is not tried again, and drops its alarms. A call for which the service is
/// too busy (SA_AIS_ERR_TRY_AGAIN) is made again every 100 ms, without end. Takes no lock:
/// concurrent alarms share the handle of the session, and each has a notification of its own.
class NtfSessionImpl final : public NtfSessionI {
public:
    explicit NtfSessionImpl(std::shared_ptr<NtfI> ntf);
    ~NtfSessionImpl() override;

    NtfSessionImpl(const NtfSessionImpl&) = delete;
    NtfSessionImpl& operator=(const NtfSessionImpl&) = delete;

    void sendNotification(const NotificationData& data) override;

private:
    class AllocatedAlarm;

    // The service's calls, repeated while it is busy. A call for handle 0 is not made: it answers
    // SA_AIS_ERR_BAD_HANDLE.
    SaAisErrorT initializeSession(SaNtfHandleT* handle, SaVersionT* version);
    SaAisErrorT finalizeSession(SaNtfHandleT handle);
    SaAisErrorT allocateAlarm(SaNtfHandleT handle, SaNtfAlarmNotificationT* notification,
                              std::uint16_t lengthAdditionalText, std::uint16_t numAdditionalInfo,
                              std::uint16_t numProposedRepairActions);
    SaAisErrorT sendAlarm(SaNtfNotificationHandleT handle);
    SaAisErrorT freeAlarm(SaNtfNotificationHandleT handle);

    /// Fills in a notification that was allocated for `data`. The event time and the ids that the
    /// service gives stay as they are.
    SaAisErrorT populateAlarm(SaNtfAlarmNotificationT& notification, const NotificationData& data);
    /// Allocates a string value of `size` bytes and copies as much of `text` and a NUL into it.
    SaAisErrorT fillValue(SaNtfNotificationHandleT handle, const std::string& text,
                          std::uint16_t size, SaNtfValueT& value);

    /// Traces a field that is longer than a notification can carry.
    void traceCut(const char* field, std::size_t length, std::size_t sent) const;

    std::shared_ptr<NtfI> m_ntf;
    SaNtfHandleT m_ntfHandle = 0; // 0: no session
    TraceObject m_traceObject{"DolqTraceLU"};
};

/// A new session with the notification service of the process.
std::shared_ptr<NtfSessionI> openSession();

} // namespace dolq
