#pragma once

// The interface through which an application raises and ceases alarms. An adapter that implements
// it comes from a factory: ruxa/fm/dolq/v2/FmiFactory.h, or v1 for applications that set mappings
// themselves. Needs C++17.

#include <cstdint>
#include <string>
#include <vector>

/// The alarm interface, which both generations of factories hand out.
namespace ruxa::fm::fmi::v1 {

/// How bad a fault is: the perceived severity of ITU-T X.733. Any other code is sent as
/// indeterminate. There is no code for "cleared": `ceaseAlarm` sends that.
enum PerceivedSeverity : std::uint32_t {
    PerceivedSeverityWarning = 0,      ///< a potential fault, which does not affect the service yet
    PerceivedSeverityMinor = 1,        ///< the service is not affected; correct it to prevent worse
    PerceivedSeverityMajor = 2,        ///< the service is affected: correct it urgently
    PerceivedSeverityCritical = 3,     ///< the service is lost: correct it immediately
    PerceivedSeverityIndeterminate = 4 ///< the severity cannot be determined
};

/// The program group of an alarm. Its name is sent as the alarm's proposed repair action. Any other
/// code means none.
enum ProgramGroup : std::uint32_t {
    ProgramGroupGrat = 0, ///< "gratPgGrp"
    ProgramGroupWrat = 1, ///< "wratPgGrp"
    ProgramGroupLrat = 2, ///< "lratPgGrp"
    ProgramGroupNr = 3,   ///< "nrPgGrp"
    ProgramGroupNone = 4  ///< no program group: the alarm has no proposed repair action
};

/// Raises and ceases alarms through the SA Forum Notification Service. Each call sends one
/// notification, or none. An adapter comes from a factory, and who owns it depends on the factory's
/// generation.
///
/// A call does its whole work on the caller's thread and keeps nothing that it is given. It blocks
/// for as long as the service answers "try again", without limit.
///
/// Nothing is reported back: an alarm that is refused or lost leaves a trace message. The only
/// exceptions are those of memory exhaustion and those of platform libraries.
///
/// An adapter takes no lock. Several threads may call it at the same time, provided that nobody
/// changes the mappings of its factory or the process's environment meanwhile. It must not be
/// destroyed while a call runs. After `fork`, the child makes adapters of its own. No call may come
/// from a signal handler.
///
/// A thread that is cancelled (pthread_cancel, deferred) ends in a pause between two attempts to
/// reach a busy service. Its alarm is then lost unless the service has it already; no memory and no
/// lock stays behind. While the service is not busy, a call runs to its end and the cancellation
/// stays pending, as far as the platform's trace backend and correlation service let it. The same
/// holds for `createFaultManagement`. The library's other operations always run to their end, if
/// the trace backend lets them. A destructor of the client that ceases an alarm must disable
/// cancellation (pthread_setcancelstate), for a cancellation within a destructor ends the process.
///
/// Parameters, wherever they occur:
/// - `notificationObject`: the faulty object's distinguished name, for instance
///   "managedElement=1,Board=3". It is cut to 599 bytes. The attribute of its last pair, without
///   white space, is the managed object class ("Board"). Commas cannot be escaped: a value ends at
///   the first one.
/// - `faultId`: any 32-bit number. With the class it selects the alarm in the mapping table. An
///   alarm without a mapping is dropped.
/// - `faultIdName`: the fault's name. It appears in traces and is never sent.
/// - `additionalText`: free UTF-8 text without NUL bytes. It may be empty, and is cut to 65534
///   bytes.
/// - `additionalInfo`: free UTF-8 texts, sent in this order after the correlation. Empty entries
///   are left out, each text is cut to 65534 bytes, and the list to 65535 entries. The service
///   allows less: OpenSAF has room for 32767 bytes in all, for the entries, the correlation and the
///   program group, each with a NUL byte. An alarm with an entry that finds no room is dropped.
/// - `perceivedSeverity`: a `PerceivedSeverity` code.
/// - `programGroup`: a `ProgramGroup` code. Operations without this parameter send none.
/// - `systemUUID`, `computeName`: the identity of the reporting system, sent as it is given. If
///   both are empty, the environment variables `SYSTEM_UUID` and `COMPUTE_NAME` are read at each
///   call. If one alone is empty, or a variable is missing or empty, the alarm is refused.
/// - `eventId`, `correlatedEvents`, `correlatedEvents32Bit`: 32-bit event ids, from which the
///   correlation service derives correlation UUIDs. 0 means no event.
/// - `correlatedEvent128Bit`, `correlatedEvents128Bit`: correlation UUIDs as text, sent as they are
///   given. Their form is not checked.
class FaultManagementI {
public:
    /// Closes the session with the notification service; the alarms that were raised through it
    /// stay raised. Destroy an adapter before its factory is freed.
    virtual ~FaultManagementI() = default;

    /// Raises a secondary alarm if `correlatedEvents` begins with an event other than 0 (`eventId`
    /// is not used then), and otherwise a primary alarm caused by `eventId`. The system's identity
    /// always comes from the environment. The alarm is refused for the reasons for which that
    /// primary or secondary alarm is.
    virtual void raiseAlarm(const std::string& notificationObject, std::uint32_t faultId,
                            const std::string& faultIdName, const std::string& additionalText,
                            const std::vector<std::string>& additionalInfo,
                            std::uint32_t perceivedSeverity, std::uint32_t eventId,
                            const std::vector<std::uint32_t>& correlatedEvents) = 0;

    /// Ceases the alarm of this object and fault: a notification of severity cleared, without
    /// texts, correlation or program group, is sent whether or not the alarm was ever raised. Needs
    /// the mapping, but no identity of the system.
    virtual void ceaseAlarm(const std::string& notificationObject, std::uint32_t faultId,
                            const std::string& faultIdName) = 0;

    /// Raises an alarm caused by the event `eventId`. If `eventId` is 0, the alarm is sent without
    /// a correlation UUID. If the correlation service fails to derive one, the alarm is sent with
    /// whatever the service left, mostly nothing. If the node has no correlation service, the alarm
    /// is refused. Each of these leaves a trace.
    virtual void raisePrimaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                   const std::string& faultIdName,
                                   const std::string& additionalText,
                                   const std::vector<std::string>& additionalInfo,
                                   std::uint32_t perceivedSeverity, std::uint32_t eventId,
                                   const std::string& systemUUID,
                                   const std::string& computeName) = 0;

    /// As above, with a program group.
    virtual void raisePrimaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                   const std::string& faultIdName,
                                   const std::string& additionalText,
                                   const std::vector<std::string>& additionalInfo,
                                   std::uint32_t perceivedSeverity, std::uint32_t eventId,
                                   const std::string& systemUUID, const std::string& computeName,
                                   std::uint32_t programGroup) = 0;

    /// Raises an alarm caused by the event whose correlation UUID is `correlatedEvent128Bit`, which
    /// may be empty.
    virtual void
    raisePrimaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                      const std::string& faultIdName, const std::string& additionalText,
                      const std::vector<std::string>& additionalInfo,
                      std::uint32_t perceivedSeverity, const std::string& correlatedEvent128Bit,
                      const std::string& systemUUID, const std::string& computeName) = 0;

    /// As above, with a program group.
    virtual void raisePrimaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                   const std::string& faultIdName,
                                   const std::string& additionalText,
                                   const std::vector<std::string>& additionalInfo,
                                   std::uint32_t perceivedSeverity,
                                   const std::string& correlatedEvent128Bit,
                                   const std::string& systemUUID, const std::string& computeName,
                                   std::uint32_t programGroup) = 0;

    /// Raises an alarm that is a consequence of events elsewhere. Events that are 0, and events
    /// whose correlation UUID the correlation service fails to derive, are left out. The alarm is
    /// refused if none remains, or if the node has no correlation service. Each of these leaves a
    /// trace.
    ///
    /// Name the type of the list: `{}`, `{0}`, `{"a", "b"}` and, for GCC, any single number fit
    /// this operation and the one for correlation UUIDs alike, so that a call with them is
    /// ambiguous and does not compile. Write `std::vector<std::uint32_t>{4711}` or
    /// `std::vector<std::string>{"a", "b"}`.
    virtual void raiseSecondaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                     const std::string& faultIdName,
                                     const std::string& additionalText,
                                     const std::vector<std::string>& additionalInfo,
                                     std::uint32_t perceivedSeverity, const std::string& systemUUID,
                                     const std::string& computeName,
                                     const std::vector<std::uint32_t>& correlatedEvents32Bit) = 0;

    /// As above, with a program group.
    virtual void raiseSecondaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                     const std::string& faultIdName,
                                     const std::string& additionalText,
                                     const std::vector<std::string>& additionalInfo,
                                     std::uint32_t perceivedSeverity, const std::string& systemUUID,
                                     const std::string& computeName,
                                     const std::vector<std::uint32_t>& correlatedEvents32Bit,
                                     std::uint32_t programGroup) = 0;

    /// Raises an alarm that is a consequence of the events with these correlation UUIDs. An empty
    /// list refuses the alarm; an empty UUID in the list is sent as it is. Name the type of the
    /// list, as for event ids.
    virtual void raiseSecondaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                     const std::string& faultIdName,
                                     const std::string& additionalText,
                                     const std::vector<std::string>& additionalInfo,
                                     std::uint32_t perceivedSeverity, const std::string& systemUUID,
                                     const std::string& computeName,
                                     const std::vector<std::string>& correlatedEvents128Bit) = 0;

    /// The first operation of this interface, with a program group.
    virtual void raiseAlarm(const std::string& notificationObject, std::uint32_t faultId,
                            const std::string& faultIdName, const std::string& additionalText,
                            const std::vector<std::string>& additionalInfo,
                            std::uint32_t perceivedSeverity, std::uint32_t eventId,
                            const std::vector<std::uint32_t>& correlatedEvents,
                            std::uint32_t programGroup) = 0;

    /// The secondary alarm with correlation UUIDs, with a program group.
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
