#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// The alarm interface, which both generations of factories hand out.
namespace ruxa::fm::fmi::v1 {

/// How bad a fault is (perceived severity, ITU-T X.733). A code outside these is sent as
/// indeterminate. There is no code for "cleared": that is what `ceaseAlarm` is for.
enum PerceivedSeverity : std::uint32_t {
    PerceivedSeverityWarning = 0,      ///< a potential fault, which does not affect the service yet
    PerceivedSeverityMinor = 1,        ///< the service is not affected; correct it to prevent worse
    PerceivedSeverityMajor = 2,        ///< the service is affected: correct it urgently
    PerceivedSeverityCritical = 3,     ///< the service is lost: correct it immediately
    PerceivedSeverityIndeterminate = 4 ///< the severity cannot be determined
};

/// The program group of an alarm; it travels as the alarm's proposed repair action. A code outside
/// these means none.
enum ProgramGroup : std::uint32_t {
    ProgramGroupGrat = 0, ///< "gratPgGrp"
    ProgramGroupWrat = 1, ///< "wratPgGrp"
    ProgramGroupLrat = 2, ///< "lratPgGrp"
    ProgramGroupNr = 3,   ///< "nrPgGrp"
    ProgramGroupNone = 4  ///< no program group: the alarm has no proposed repair action
};

/// Raises and ceases alarms through the SA Forum Notification Service, one notification per
/// call. A factory makes it; who owns it depends on the factory's generation.
///
/// A call does its whole work on the caller's thread and keeps nothing of what it was given. It
/// blocks for as long as the service answers "try again", without limit. A thread can be cancelled
/// (pthread_cancel) before the service is called and while it waits for it, never in a destructor:
/// its alarm is then lost, and nothing else.
///
/// Nothing is reported back: a refused or lost alarm leaves a trace message. Only memory exhaustion
/// and exceptions of platform libraries are thrown.
///
/// Takes no lock. Several threads may call at the same time if the mappings of its factory are not
/// changed meanwhile; it may not be destroyed while a call runs.
///
/// Parameters, wherever they occur:
/// - `notificationObject`: which object is faulty, by its distinguished name, for instance
///   "managedElement=1,Board=3". Up to 599 bytes are sent, the rest is cut. What stands before the
///   equals sign of its last pair, without white space, is the managed object class ("Board").
///   Commas cannot be escaped: a value ends at the first one.
/// - `faultId`: any 32-bit number. With the class it selects the alarm in the mapping table;
///   without a mapping the alarm is dropped.
/// - `faultIdName`: the fault's name, for the trace only; it is never sent.
/// - `additionalText`: free UTF-8 text without NUL bytes, may be empty, cut at 65534 bytes.
/// - `additionalInfo`: free UTF-8 texts, sent in this order behind the correlation. Empty entries
///   are left out, each text is cut at 65534 bytes, the list at 65535 entries. The service allows
///   less: OpenSAF refuses an alarm whose entries have more than 32767 bytes together, the
///   correlation and a NUL byte for each included.
/// - `perceivedSeverity`: a `PerceivedSeverity` code.
/// - `programGroup`: a `ProgramGroup` code. Operations without it send none.
/// - `systemUUID`, `computeName`: identity of the reporting system, sent as it is. Both empty:
///   taken from the environment variables `SYSTEM_UUID` and `COMPUTE_NAME` at each call. Only one
///   of them empty, or nothing in the environment: the alarm is refused.
/// - `eventId`, `correlatedEvents`, `correlatedEvents32Bit`: 32-bit event ids, which the
///   correlation service turns into correlation UUIDs. 0 means no event.
/// - `correlatedEvent128Bit`, `correlatedEvents128Bit`: correlation UUIDs as text, sent as they
///   are; their form is not checked.
class FaultManagementI {
public:
    /// Closes the session with the notification service. Alarms that it raised stay raised. To be
    /// destroyed before its factory is freed.
    virtual ~FaultManagementI() = default;

    /// Raises a secondary alarm when `correlatedEvents` begins with an event other than 0
    /// (`eventId` is then not used), and a primary alarm caused by `eventId` otherwise. The
    /// identity always comes from the environment. Refused where the operation that it stands for
    /// refuses.
    virtual void raiseAlarm(const std::string& notificationObject, std::uint32_t faultId,
                            const std::string& faultIdName, const std::string& additionalText,
                            const std::vector<std::string>& additionalInfo,
                            std::uint32_t perceivedSeverity, std::uint32_t eventId,
                            const std::vector<std::uint32_t>& correlatedEvents) = 0;

    /// Ceases the alarm of this object and fault: sent with severity cleared, without texts,
    /// correlation or program group, whether or not it was ever raised. Needs the mapping, but no
    /// identity.
    virtual void ceaseAlarm(const std::string& notificationObject, std::uint32_t faultId,
                            const std::string& faultIdName) = 0;

    /// Raises an alarm caused by event `eventId`. It is sent without a correlation UUID when
    /// `eventId` is 0, with whatever the correlation service left of one (mostly nothing) when that
    /// fails to derive it, and not at all when the node has no correlation service. Each of these
    /// leaves a trace.
    virtual void raisePrimaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                   const std::string& faultIdName,
                                   const std::string& additionalText,
                                   const std::vector<std::string>& additionalInfo,
                                   std::uint32_t perceivedSeverity, std::uint32_t eventId,
                                   const std::string& systemUUID,
                                   const std::string& computeName) = 0;

    /// The primary alarm for an event id above, with a program group.
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

    /// The primary alarm with a correlation UUID above, with a program group.
    virtual void raisePrimaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                   const std::string& faultIdName,
                                   const std::string& additionalText,
                                   const std::vector<std::string>& additionalInfo,
                                   std::uint32_t perceivedSeverity,
                                   const std::string& correlatedEvent128Bit,
                                   const std::string& systemUUID, const std::string& computeName,
                                   std::uint32_t programGroup) = 0;

    /// Raises an alarm that events elsewhere led to. Events that are 0, and events whose
    /// correlation UUID the correlation service fails to derive, are left out; when none remains,
    /// or the node has no correlation service, the alarm is refused. Each of these leaves a trace.
    virtual void raiseSecondaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                     const std::string& faultIdName,
                                     const std::string& additionalText,
                                     const std::vector<std::string>& additionalInfo,
                                     std::uint32_t perceivedSeverity, const std::string& systemUUID,
                                     const std::string& computeName,
                                     const std::vector<std::uint32_t>& correlatedEvents32Bit) = 0;

    /// The secondary alarm for event ids above, with a program group.
    virtual void raiseSecondaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                     const std::string& faultIdName,
                                     const std::string& additionalText,
                                     const std::vector<std::string>& additionalInfo,
                                     std::uint32_t perceivedSeverity, const std::string& systemUUID,
                                     const std::string& computeName,
                                     const std::vector<std::uint32_t>& correlatedEvents32Bit,
                                     std::uint32_t programGroup) = 0;

    /// Raises an alarm with the correlation UUIDs `correlatedEvents128Bit`; refused without any. An
    /// empty UUID in the list is sent as it is.
    virtual void raiseSecondaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                     const std::string& faultIdName,
                                     const std::string& additionalText,
                                     const std::vector<std::string>& additionalInfo,
                                     std::uint32_t perceivedSeverity, const std::string& systemUUID,
                                     const std::string& computeName,
                                     const std::vector<std::string>& correlatedEvents128Bit) = 0;

    /// The combined raise at the top, with a program group.
    virtual void raiseAlarm(const std::string& notificationObject, std::uint32_t faultId,
                            const std::string& faultIdName, const std::string& additionalText,
                            const std::vector<std::string>& additionalInfo,
                            std::uint32_t perceivedSeverity, std::uint32_t eventId,
                            const std::vector<std::uint32_t>& correlatedEvents,
                            std::uint32_t programGroup) = 0;

    /// The secondary alarm with correlation UUIDs above, with a program group.
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
