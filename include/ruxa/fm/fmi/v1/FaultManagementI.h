#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ruxa::fm::fmi::v1 {

/// How bad a fault is (perceived severity, ITU-T X.733). A code outside these is sent as
/// indeterminate. There is no code for "cleared": that is what `ceaseAlarm` is for.
enum PerceivedSeverity : std::uint32_t {
    PerceivedSeverityWarning = 0,
    PerceivedSeverityMinor = 1,
    PerceivedSeverityMajor = 2,
    PerceivedSeverityCritical = 3,
    PerceivedSeverityIndeterminate = 4
};

/// The program group of an alarm; it travels as the alarm's proposed repair action. A code outside
/// these means none.
enum ProgramGroup : std::uint32_t {
    ProgramGroupGrat = 0, ///< "gratPgGrp"
    ProgramGroupWrat = 1, ///< "wratPgGrp"
    ProgramGroupLrat = 2, ///< "lratPgGrp"
    ProgramGroupNr = 3,   ///< "nrPgGrp"
    ProgramGroupNone = 4
};

/// Raises and ceases alarms through the SA Forum Notification Service. A call does its whole work
/// on the caller's thread, copies what it needs before it returns, and blocks while the service is
/// busy. Nothing is reported back: a refused or lost alarm leaves a trace message. Only memory
/// exhaustion and exceptions of platform libraries are thrown. Takes no lock.
///
/// Parameters, wherever they occur:
/// - `notificationObject`: distinguished name of the object in fault, attribute=value pairs joined
/// by
///   commas, e.g. "managedElement=1,board=3"; at most 599 bytes are sent. The attribute of its last
///   pair, white space removed, is the managed object class ("board").
/// - `faultId`: with the class it selects the alarm in the load module's mapping table; without a
///   mapping the alarm is dropped.
/// - `faultIdName`: the fault's name, for the trace only; it is never sent.
/// - `additionalText`, `additionalInfo`: free UTF-8 texts. Empty entries are left out; a text is
/// cut
///   at 65534 bytes, a list at 65535 entries. The service may set lower limits.
/// - `perceivedSeverity`: a `PerceivedSeverity` code.
/// - `programGroup`: a `ProgramGroup` code. Operations without it send none.
/// - `systemUUID`, `computeName`: identity of the reporting system. Both empty: taken from the
///   environment variables `SYSTEM_UUID` and `COMPUTE_NAME` at each call. Only one of them empty,
///   or nothing in the environment: the alarm is refused.
/// - `eventId`, `correlatedEvents`, `correlatedEvents32Bit`: 32-bit event ids, which the
/// correlation
///   service turns into correlation UUIDs. 0 means no event.
/// - `correlatedEvent128Bit`, `correlatedEvents128Bit`: correlation UUIDs as text, sent as they
/// are.
class FaultManagementI {
public:
    virtual ~FaultManagementI() = default;

    /// Raises a secondary alarm when `correlatedEvents` begins with an event other than 0, and a
    /// primary alarm caused by `eventId` otherwise. The identity always comes from the environment.
    virtual void raiseAlarm(const std::string& notificationObject, std::uint32_t faultId,
                            const std::string& faultIdName, const std::string& additionalText,
                            const std::vector<std::string>& additionalInfo,
                            std::uint32_t perceivedSeverity, std::uint32_t eventId,
                            const std::vector<std::uint32_t>& correlatedEvents) = 0;

    /// Ceases the alarm: sent with severity cleared, without texts, correlation or program group.
    virtual void ceaseAlarm(const std::string& notificationObject, std::uint32_t faultId,
                            const std::string& faultIdName) = 0;

    /// Raises an alarm caused by event `eventId`. It is sent without a correlation UUID when
    /// `eventId` is 0, and not at all when the node has no correlation service.
    virtual void raisePrimaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                   const std::string& faultIdName,
                                   const std::string& additionalText,
                                   const std::vector<std::string>& additionalInfo,
                                   std::uint32_t perceivedSeverity, std::uint32_t eventId,
                                   const std::string& systemUUID,
                                   const std::string& computeName) = 0;

    /// The same with a program group.
    virtual void raisePrimaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                   const std::string& faultIdName,
                                   const std::string& additionalText,
                                   const std::vector<std::string>& additionalInfo,
                                   std::uint32_t perceivedSeverity, std::uint32_t eventId,
                                   const std::string& systemUUID, const std::string& computeName,
                                   std::uint32_t programGroup) = 0;

    /// Raises an alarm whose correlation UUID is `correlatedEvent128Bit`, even when that is empty.
    virtual void
    raisePrimaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                      const std::string& faultIdName, const std::string& additionalText,
                      const std::vector<std::string>& additionalInfo,
                      std::uint32_t perceivedSeverity, const std::string& correlatedEvent128Bit,
                      const std::string& systemUUID, const std::string& computeName) = 0;

    /// The same with a program group.
    virtual void raisePrimaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                   const std::string& faultIdName,
                                   const std::string& additionalText,
                                   const std::vector<std::string>& additionalInfo,
                                   std::uint32_t perceivedSeverity,
                                   const std::string& correlatedEvent128Bit,
                                   const std::string& systemUUID, const std::string& computeName,
                                   std::uint32_t programGroup) = 0;

    /// Raises an alarm that events elsewhere led to. Events that are 0 or that have no correlation
    /// UUID are left out; when none remains, the alarm is refused.
    virtual void raiseSecondaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                     const std::string& faultIdName,
                                     const std::string& additionalText,
                                     const std::vector<std::string>& additionalInfo,
                                     std::uint32_t perceivedSeverity, const std::string& systemUUID,
                                     const std::string& computeName,
                                     const std::vector<std::uint32_t>& correlatedEvents32Bit) = 0;

    /// The same with a program group.
    virtual void raiseSecondaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                     const std::string& faultIdName,
                                     const std::string& additionalText,
                                     const std::vector<std::string>& additionalInfo,
                                     std::uint32_t perceivedSeverity, const std::string& systemUUID,
                                     const std::string& computeName,
                                     const std::vector<std::uint32_t>& correlatedEvents32Bit,
                                     std::uint32_t programGroup) = 0;

    /// Raises an alarm with the correlation UUIDs `correlatedEvents128Bit`; refused without any.
    virtual void raiseSecondaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                     const std::string& faultIdName,
                                     const std::string& additionalText,
                                     const std::vector<std::string>& additionalInfo,
                                     std::uint32_t perceivedSeverity, const std::string& systemUUID,
                                     const std::string& computeName,
                                     const std::vector<std::string>& correlatedEvents128Bit) = 0;

    /// The combined raise above with a program group.
    virtual void raiseAlarm(const std::string& notificationObject, std::uint32_t faultId,
                            const std::string& faultIdName, const std::string& additionalText,
                            const std::vector<std::string>& additionalInfo,
                            std::uint32_t perceivedSeverity, std::uint32_t eventId,
                            const std::vector<std::uint32_t>& correlatedEvents,
                            std::uint32_t programGroup) = 0;

    /// The 128-bit secondary alarm above with a program group.
    virtual void raiseSecondaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                     const std::string& faultIdName,
                                     const std::string& additionalText,
                                     const std::vector<std::string>& additionalInfo,
                                     std::uint32_t perceivedSeverity, const std::string& systemUUID,
                                     const std::string& computeName,
                                     const std::vector<std::string>& correlatedEvents128Bit,
                                     std::uint32_t programGroup) = 0;
};

} // namespace ruxa::fm::fmi::v1
