#pragma once

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <saNtf.h>

#include "adapter/MappingI.h"
#include "adapter/NtfSessionI.h"
#include "ruxa/fm/fmi/v1/FaultManagementI.h"
#include "trace/TraceObject.h"

namespace dolq {

/// Turns each reported fault into one alarm notification: finds the alarm that the fault is mapped
/// to, encodes the correlation, and hands the result to the session. A call leaves no state behind.
///
/// How the client's terms become those of the standard:
/// - notification object: the notification object and the notifying object
/// - fault id and managed object class, through the mapping: the major and minor id of the
///   notification class id
/// - system UUID, compute name and correlation UUIDs: one text, the first entry of additional
///   information
/// - program group: a proposed repair action
class AdapterImpl final : public ruxa::fm::fmi::v1::FaultManagementI {
public:
    /// `mapping` is borrowed and must outlive the adapter.
    AdapterImpl(const std::shared_ptr<NtfSessionI>& session, MappingI* mapping);
    ~AdapterImpl() override = default;

    AdapterImpl(const AdapterImpl&) = delete;
    AdapterImpl& operator=(const AdapterImpl&) = delete;

    void raiseAlarm(const std::string& notificationObject, std::uint32_t faultId,
                    const std::string& faultIdName, const std::string& additionalText,
                    const std::vector<std::string>& additionalInfo, std::uint32_t perceivedSeverity,
                    std::uint32_t eventId,
                    const std::vector<std::uint32_t>& correlatedEvents) override;
    void ceaseAlarm(const std::string& notificationObject, std::uint32_t faultId,
                    const std::string& faultIdName) override;
    void raisePrimaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                           const std::string& faultIdName, const std::string& additionalText,
                           const std::vector<std::string>& additionalInfo,
                           std::uint32_t perceivedSeverity, std::uint32_t eventId,
                           const std::string& systemUUID, const std::string& computeName) override;
    void raisePrimaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                           const std::string& faultIdName, const std::string& additionalText,
                           const std::vector<std::string>& additionalInfo,
                           std::uint32_t perceivedSeverity, std::uint32_t eventId,
                           const std::string& systemUUID, const std::string& computeName,
                           std::uint32_t programGroup) override;
    void raisePrimaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                           const std::string& faultIdName, const std::string& additionalText,
                           const std::vector<std::string>& additionalInfo,
                           std::uint32_t perceivedSeverity,
                           const std::string& correlatedEvent128Bit, const std::string& systemUUID,
                           const std::string& computeName) override;
    void raisePrimaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                           const std::string& faultIdName, const std::string& additionalText,
                           const std::vector<std::string>& additionalInfo,
                           std::uint32_t perceivedSeverity,
                           const std::string& correlatedEvent128Bit, const std::string& systemUUID,
                           const std::string& computeName, std::uint32_t programGroup) override;
    void raiseSecondaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                             const std::string& faultIdName, const std::string& additionalText,
                             const std::vector<std::string>& additionalInfo,
                             std::uint32_t perceivedSeverity, const std::string& systemUUID,
                             const std::string& computeName,
                             const std::vector<std::uint32_t>& correlatedEvents32Bit) override;
    void raiseSecondaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                             const std::string& faultIdName, const std::string& additionalText,
                             const std::vector<std::string>& additionalInfo,
                             std::uint32_t perceivedSeverity, const std::string& systemUUID,
                             const std::string& computeName,
                             const std::vector<std::uint32_t>& correlatedEvents32Bit,
                             std::uint32_t programGroup) override;
    void raiseSecondaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                             const std::string& faultIdName, const std::string& additionalText,
                             const std::vector<std::string>& additionalInfo,
                             std::uint32_t perceivedSeverity, const std::string& systemUUID,
                             const std::string& computeName,
                             const std::vector<std::string>& correlatedEvents128Bit) override;
    void raiseAlarm(const std::string& notificationObject, std::uint32_t faultId,
                    const std::string& faultIdName, const std::string& additionalText,
                    const std::vector<std::string>& additionalInfo, std::uint32_t perceivedSeverity,
                    std::uint32_t eventId, const std::vector<std::uint32_t>& correlatedEvents,
                    std::uint32_t programGroup) override;
    void raiseSecondaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                             const std::string& faultIdName, const std::string& additionalText,
                             const std::vector<std::string>& additionalInfo,
                             std::uint32_t perceivedSeverity, const std::string& systemUUID,
                             const std::string& computeName,
                             const std::vector<std::string>& correlatedEvents128Bit,
                             std::uint32_t programGroup) override;

private:
    // What a raise goes through, in this order. Each step takes what the one before found out, and
    // ends the call when the alarm is refused.

    /// The combined raise: `correlatedEvents` decides whether the alarm is primary or secondary.
    void raiseAlarmImpl(const std::string& notificationObject, std::uint32_t faultId,
                        const std::string& faultIdName, const std::string& additionalText,
                        const std::vector<std::string>& additionalInfo,
                        std::uint32_t perceivedSeverity, std::uint32_t eventId,
                        const std::vector<std::uint32_t>& correlatedEvents,
                        const std::string& programGroupName);

    /// Derives the correlation UUID of `eventId`, then raises the primary alarm.
    void raisePrimaryAlarmForEventId(const std::string& notificationObject, std::uint32_t faultId,
                                     const std::string& faultIdName,
                                     const std::string& additionalText,
                                     const std::vector<std::string>& additionalInfo,
                                     std::uint32_t perceivedSeverity, std::uint32_t eventId,
                                     const std::string& systemUUID, const std::string& computeName,
                                     const std::string& programGroupName);
    /// A primary alarm is sent without a correlation UUID, too; that is traced.
    void raisePrimaryAlarmImpl(const std::string& notificationObject, std::uint32_t faultId,
                               const std::string& faultIdName, const std::string& additionalText,
                               const std::vector<std::string>& additionalInfo,
                               std::uint32_t perceivedSeverity, const std::string& correlationUUID,
                               const std::string& systemUUID, const std::string& computeName,
                               const std::string& programGroupName);

    /// Derives the correlation UUIDs of the events, then raises the secondary alarm.
    void raiseSecondaryAlarmForEvents32Bit(const std::string& notificationObject,
                                           std::uint32_t faultId, const std::string& faultIdName,
                                           const std::string& additionalText,
                                           const std::vector<std::string>& additionalInfo,
                                           std::uint32_t perceivedSeverity,
                                           const std::string& systemUUID,
                                           const std::string& computeName,
                                           const std::vector<std::uint32_t>& correlatedEvents32Bit,
                                           const std::string& programGroupName);
    /// A secondary alarm is refused without a correlation UUID.
    void raiseSecondaryAlarmImpl(const std::string& notificationObject, std::uint32_t faultId,
                                 const std::string& faultIdName, const std::string& additionalText,
                                 const std::vector<std::string>& additionalInfo,
                                 std::uint32_t perceivedSeverity, const std::string& systemUUID,
                                 const std::string& computeName,
                                 const std::vector<std::string>& correlationUUIDs,
                                 const std::string& programGroupName);

    /// The part that primary and secondary alarms share: decides which system identity is sent,
    /// puts `makeCorrelationInfo(systemUUID, computeName)` in front of the client's entries, and
    /// sends.
    template <typename MakeCorrelationInfo>
    void raiseCorrelatedAlarm(const std::string& notificationObject, std::uint32_t faultId,
                              const std::string& additionalText,
                              const std::vector<std::string>& additionalInfo,
                              std::uint32_t perceivedSeverity, const std::string& systemUUID,
                              const std::string& computeName, const std::string& programGroupName,
                              MakeCorrelationInfo makeCorrelationInfo);

    /// The common send path of every raise. `additionalInfo` is consumed.
    void sendNotification(const std::string& notificationObject, const std::string& additionalText,
                          std::vector<std::string>& additionalInfo, std::uint32_t perceivedSeverity,
                          std::uint32_t faultId, const std::string& programGroupName);

    /// The name that is sent for a client's program group code; traces it.
    std::string programGroupName(std::uint32_t programGroup) const;
    /// The standard's severity for a client's code; traces a code that is unknown.
    SaNtfSeverityT mapPerceivedSeverity(std::uint32_t perceivedSeverity) const;

    /// The managed object class (see MoClass.h), empty if there is none; traces what is missing.
    std::string parseMoClass(const std::string& notificationObject) const;

    /// The environment's value, or empty (with a trace when the variable is not set).
    std::string getSystemUUID() const;
    std::string getComputeName() const;

    /// Write a list as one line for a trace: "a, <empty string>, b", "7, 42", "Empty".
    static void writeList(const std::vector<std::string>& list, std::stringstream& out);
    static void writeList(const std::vector<std::uint32_t>& list, std::stringstream& out);
    template <typename T> static std::string listText(const std::vector<T>& list);

    std::shared_ptr<NtfSessionI> m_session; // this adapter's own
    MappingI* m_map; // borrowed: the factory that made this adapter owns it and outlives it
    TraceObject m_traceObject{"DolqTraceLU"};
};

} // namespace dolq
