// From a client's call to one alarm for the session.
//
// Each operation traces its arguments first, whatever becomes of the alarm, so that an operator
// sees every call. Then come the questions that can refuse the alarm, from the outside in: is there
// a correlation (primary alarms do without one, secondary alarms do not), who reports it, and which
// alarm is the fault. Each refusal leaves one trace and ends the call; nothing has been asked of
// the notification service by then. What remains is one NotificationData.

#include "adapter/dolqAdapterImpl.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include <ruxa/zum2/v1/CorrelationApi.h>

#include "adapter/CorrelationInfo.h"
#include "adapter/MinorType.h"
#include "adapter/MoClass.h"
#include "common/AlarmNames.h"
#include "common/Environment.h"
#include "trace/Drop.h"

namespace dolq {

namespace {

constexpr char kTraceUnit[] = "dolqAdapterImpl";

// In a trace, an empty entry could not be told from none.
const std::string kEmptyString = "<empty string>";

/// The perceived severity of ITU-T X.733 as the notification service numbers it, indexed by the
/// client's code. No client code stands for "cleared": a cease sends that.
constexpr SaNtfSeverityT kSeverityOfCode[] = {SA_NTF_SEVERITY_WARNING, SA_NTF_SEVERITY_MINOR,
                                              SA_NTF_SEVERITY_MAJOR, SA_NTF_SEVERITY_CRITICAL,
                                              SA_NTF_SEVERITY_INDETERMINATE};

} // namespace

AdapterImpl::AdapterImpl(const std::shared_ptr<NtfSessionI>& session, MappingI* mapping)
    : m_session(session), m_map(mapping) {}

// Operators filter traces by their exact texts. So these stay as they are: leading blanks ("Minor
// type not found" has one for a raise and none for a cease), "Initiated" beside "initiated",
// "retreived" and "occured".

// The operations of a client, one after the other as the interface declares them. -----------------
//
// Each is spelt out, because its traced text names the arguments that it has and no others.

void AdapterImpl::raiseAlarm(const std::string& notificationObject, std::uint32_t faultId,
                             const std::string& faultIdName, const std::string& additionalText,
                             const std::vector<std::string>& additionalInfo,
                             std::uint32_t perceivedSeverity, std::uint32_t eventId,
                             const std::vector<std::uint32_t>& correlatedEvents) {
    const AlarmProbe probe(notificationObject, faultId);
    raiseAlarmImpl(notificationObject, faultId, faultIdName, additionalText, additionalInfo,
                   perceivedSeverity, eventId, correlatedEvents, kNoProgramGroup);
}

void AdapterImpl::ceaseAlarm(const std::string& notificationObject, std::uint32_t faultId,
                             const std::string& faultIdName) {
    // Receivers know the alarm that ends by its object and its class id, so nothing else is needed:
    // no system identity, no correlation, no texts.
    const AlarmProbe probe(notificationObject, faultId);
    DOLQ_TRACE(m_traceObject, kFlow,
               " Cease Alarm initiated: notificationObject:%s, faultId:%u, faultIdName:%s",
               notificationObject.c_str(), faultId, faultIdName.c_str());
    const std::string moClass = parseMoClass(notificationObject);
    std::uint32_t minorType = 0;
    if (!m_map->getMinorType(faultId, minorType, moClass)) {
        DOLQ_DROP(lostFault("no mapping", notificationObject, faultId), m_traceObject, kFailure,
                  "Minor type not found. notificationObject:%s, faultId:%u",
                  notificationObject.c_str(), faultId);
        return;
    }
    m_session->sendNotification(NotificationData(notificationObject, SA_NTF_SEVERITY_CLEARED, "",
                                                 {}, majorIdOf(minorType), minorIdOf(minorType),
                                                 kNoProgramGroup));
}

void AdapterImpl::raisePrimaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                    const std::string& faultIdName,
                                    const std::string& additionalText,
                                    const std::vector<std::string>& additionalInfo,
                                    std::uint32_t perceivedSeverity, std::uint32_t eventId,
                                    const std::string& systemUUID, const std::string& computeName) {
    const AlarmProbe probe(notificationObject, faultId);
    DOLQ_TRACE(
        m_traceObject, kFlow,
        "Raise Primary Alarm Initiated: notificationObject:%s, faultId:%u, faultIdName:%s, additionalText:%s, additionalInfo:%s, perceivedSeverity:%u, eventId:%u, systemUUID:%s, computeName:%s",
        notificationObject.c_str(), faultId, faultIdName.c_str(), additionalText.c_str(),
        listText(additionalInfo).c_str(), perceivedSeverity, eventId, systemUUID.c_str(),
        computeName.c_str());
    raisePrimaryAlarmForEventId(notificationObject, faultId, faultIdName, additionalText,
                                additionalInfo, perceivedSeverity, eventId, systemUUID, computeName,
                                kNoProgramGroup);
}

void AdapterImpl::raisePrimaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                    const std::string& faultIdName,
                                    const std::string& additionalText,
                                    const std::vector<std::string>& additionalInfo,
                                    std::uint32_t perceivedSeverity, std::uint32_t eventId,
                                    const std::string& systemUUID, const std::string& computeName,
                                    std::uint32_t programGroup) {
    const AlarmProbe probe(notificationObject, faultId);
    const std::string group = programGroupName(programGroup);
    DOLQ_TRACE(
        m_traceObject, kFlow,
        "Raise Primary Alarm Initiated: notificationObject:%s, faultId:%u, faultIdName:%s, additionalText:%s, additionalInfo:%s, perceivedSeverity:%u, eventId:%u, systemUUID:%s, computeName:%s, programGroup:%s",
        notificationObject.c_str(), faultId, faultIdName.c_str(), additionalText.c_str(),
        listText(additionalInfo).c_str(), perceivedSeverity, eventId, systemUUID.c_str(),
        computeName.c_str(), group.c_str());
    raisePrimaryAlarmForEventId(notificationObject, faultId, faultIdName, additionalText,
                                additionalInfo, perceivedSeverity, eventId, systemUUID, computeName,
                                group);
}

void AdapterImpl::raisePrimaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                    const std::string& faultIdName,
                                    const std::string& additionalText,
                                    const std::vector<std::string>& additionalInfo,
                                    std::uint32_t perceivedSeverity,
                                    const std::string& correlatedEvent128Bit,
                                    const std::string& systemUUID, const std::string& computeName) {
    const AlarmProbe probe(notificationObject, faultId);
    DOLQ_TRACE(
        m_traceObject, kFlow,
        "Raise Primary Alarm initiated: notificationObject:%s, faultId:%u, faultIdName:%s, additionalText:%s, additionalInfo:%s, perceivedSeverity:%u, correlatedEvent128Bit:%s, systemUUID:%s, computeName:%s",
        notificationObject.c_str(), faultId, faultIdName.c_str(), additionalText.c_str(),
        listText(additionalInfo).c_str(), perceivedSeverity, correlatedEvent128Bit.c_str(),
        systemUUID.c_str(), computeName.c_str());
    raisePrimaryAlarmImpl(notificationObject, faultId, faultIdName, additionalText, additionalInfo,
                          perceivedSeverity, correlatedEvent128Bit, systemUUID, computeName,
                          kNoProgramGroup);
}

void AdapterImpl::raisePrimaryAlarm(
    const std::string& notificationObject, std::uint32_t faultId, const std::string& faultIdName,
    const std::string& additionalText, const std::vector<std::string>& additionalInfo,
    std::uint32_t perceivedSeverity, const std::string& correlatedEvent128Bit,
    const std::string& systemUUID, const std::string& computeName, std::uint32_t programGroup) {
    const AlarmProbe probe(notificationObject, faultId);
    const std::string group = programGroupName(programGroup);
    DOLQ_TRACE(
        m_traceObject, kFlow,
        "Raise Primary Alarm initiated: notificationObject:%s, faultId:%u, faultIdName:%s, additionalText:%s, additionalInfo:%s, perceivedSeverity:%u, correlatedEvent128Bit:%s, systemUUID:%s, computeName:%s, programGroup:%s",
        notificationObject.c_str(), faultId, faultIdName.c_str(), additionalText.c_str(),
        listText(additionalInfo).c_str(), perceivedSeverity, correlatedEvent128Bit.c_str(),
        systemUUID.c_str(), computeName.c_str(), group.c_str());
    raisePrimaryAlarmImpl(notificationObject, faultId, faultIdName, additionalText, additionalInfo,
                          perceivedSeverity, correlatedEvent128Bit, systemUUID, computeName, group);
}

void AdapterImpl::raiseSecondaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                      const std::string& faultIdName,
                                      const std::string& additionalText,
                                      const std::vector<std::string>& additionalInfo,
                                      std::uint32_t perceivedSeverity,
                                      const std::string& systemUUID, const std::string& computeName,
                                      const std::vector<std::uint32_t>& correlatedEvents32Bit) {
    const AlarmProbe probe(notificationObject, faultId);
    DOLQ_TRACE(
        m_traceObject, kFlow,
        "Raise Secondary Alarm Initiated: notificationObject:%s, faultId:%u, faultIdName:%s, additionalText:%s, additionalInfo:%s, perceivedSeverity:%u, systemUUID:%s, computeName:%s, correlatedEvents32Bit:%s",
        notificationObject.c_str(), faultId, faultIdName.c_str(), additionalText.c_str(),
        listText(additionalInfo).c_str(), perceivedSeverity, systemUUID.c_str(),
        computeName.c_str(), listText(correlatedEvents32Bit).c_str());
    raiseSecondaryAlarmForEvents32Bit(notificationObject, faultId, faultIdName, additionalText,
                                      additionalInfo, perceivedSeverity, systemUUID, computeName,
                                      correlatedEvents32Bit, kNoProgramGroup);
}

void AdapterImpl::raiseSecondaryAlarm(
    const std::string& notificationObject, std::uint32_t faultId, const std::string& faultIdName,
    const std::string& additionalText, const std::vector<std::string>& additionalInfo,
    std::uint32_t perceivedSeverity, const std::string& systemUUID, const std::string& computeName,
    const std::vector<std::uint32_t>& correlatedEvents32Bit, std::uint32_t programGroup) {
    const AlarmProbe probe(notificationObject, faultId);
    const std::string group = programGroupName(programGroup);
    DOLQ_TRACE(
        m_traceObject, kFlow,
        "Raise Secondary Alarm Initiated: notificationObject:%s, faultId:%u, faultIdName:%s, additionalText:%s, additionalInfo:%s, perceivedSeverity:%u, systemUUID:%s, computeName:%s, correlatedEvents32Bit:%s, programGroup:%s",
        notificationObject.c_str(), faultId, faultIdName.c_str(), additionalText.c_str(),
        listText(additionalInfo).c_str(), perceivedSeverity, systemUUID.c_str(),
        computeName.c_str(), listText(correlatedEvents32Bit).c_str(), group.c_str());
    raiseSecondaryAlarmForEvents32Bit(notificationObject, faultId, faultIdName, additionalText,
                                      additionalInfo, perceivedSeverity, systemUUID, computeName,
                                      correlatedEvents32Bit, group);
}

void AdapterImpl::raiseSecondaryAlarm(const std::string& notificationObject, std::uint32_t faultId,
                                      const std::string& faultIdName,
                                      const std::string& additionalText,
                                      const std::vector<std::string>& additionalInfo,
                                      std::uint32_t perceivedSeverity,
                                      const std::string& systemUUID, const std::string& computeName,
                                      const std::vector<std::string>& correlatedEvents128Bit) {
    const AlarmProbe probe(notificationObject, faultId);
    DOLQ_TRACE(
        m_traceObject, kFlow,
        "Raise Secondary Alarm Initiated: notificationObject:%s, faultId:%u, faultIdName:%s, additionalText:%s, additionalInfo:%s, perceivedSeverity:%u, systemUUID:%s, computeName:%s, correlatedEvents128Bit:%s",
        notificationObject.c_str(), faultId, faultIdName.c_str(), additionalText.c_str(),
        listText(additionalInfo).c_str(), perceivedSeverity, systemUUID.c_str(),
        computeName.c_str(), listText(correlatedEvents128Bit).c_str());
    raiseSecondaryAlarmImpl(notificationObject, faultId, faultIdName, additionalText,
                            additionalInfo, perceivedSeverity, systemUUID, computeName,
                            correlatedEvents128Bit, kNoProgramGroup);
}

void AdapterImpl::raiseAlarm(const std::string& notificationObject, std::uint32_t faultId,
                             const std::string& faultIdName, const std::string& additionalText,
                             const std::vector<std::string>& additionalInfo,
                             std::uint32_t perceivedSeverity, std::uint32_t eventId,
                             const std::vector<std::uint32_t>& correlatedEvents,
                             std::uint32_t programGroup) {
    const AlarmProbe probe(notificationObject, faultId);
    raiseAlarmImpl(notificationObject, faultId, faultIdName, additionalText, additionalInfo,
                   perceivedSeverity, eventId, correlatedEvents, programGroupName(programGroup));
}

void AdapterImpl::raiseSecondaryAlarm(
    const std::string& notificationObject, std::uint32_t faultId, const std::string& faultIdName,
    const std::string& additionalText, const std::vector<std::string>& additionalInfo,
    std::uint32_t perceivedSeverity, const std::string& systemUUID, const std::string& computeName,
    const std::vector<std::string>& correlatedEvents128Bit, std::uint32_t programGroup) {
    const AlarmProbe probe(notificationObject, faultId);
    const std::string group = programGroupName(programGroup);
    DOLQ_TRACE(
        m_traceObject, kFlow,
        "Raise Secondary Alarm Initiated: notificationObject:%s, faultId:%u, faultIdName:%s, additionalText:%s, additionalInfo:%s, perceivedSeverity:%u, systemUUID:%s, computeName:%s, correlatedEvents128Bit:%s, programGroup:%s",
        notificationObject.c_str(), faultId, faultIdName.c_str(), additionalText.c_str(),
        listText(additionalInfo).c_str(), perceivedSeverity, systemUUID.c_str(),
        computeName.c_str(), listText(correlatedEvents128Bit).c_str(), group.c_str());
    raiseSecondaryAlarmImpl(notificationObject, faultId, faultIdName, additionalText,
                            additionalInfo, perceivedSeverity, systemUUID, computeName,
                            correlatedEvents128Bit, group);
}

// From an operation to the common send path: correlation and system identity. ---------------------
//
// Event ids become correlation UUIDs here, so that the functions behind work on UUIDs alone. The
// service's interface is asked for once for each alarm and not kept: it may change between two.

void AdapterImpl::raiseAlarmImpl(const std::string& notificationObject, std::uint32_t faultId,
                                 const std::string& faultIdName, const std::string& additionalText,
                                 const std::vector<std::string>& additionalInfo,
                                 std::uint32_t perceivedSeverity, std::uint32_t eventId,
                                 const std::vector<std::uint32_t>& correlatedEvents,
                                 const std::string& programGroupName) {
    DOLQ_TRACE(
        m_traceObject, kFlow,
        " Raise Alarm initiated: notificationObject:%s, faultId:%u, faultIdName:%s, additionalText:%s, additionalInfo:%s, perceivedSeverity:%u, eventId:%u, correlatedEvents:%s, programGroup:%s",
        notificationObject.c_str(), faultId, faultIdName.c_str(), additionalText.c_str(),
        listText(additionalInfo).c_str(), perceivedSeverity, eventId,
        listText(correlatedEvents).c_str(), programGroupName.c_str());
    // The first event alone decides. What stands behind a leading 0 is not looked at.
    if (correlatedEvents.empty() || correlatedEvents.front() == 0) {
        raisePrimaryAlarmForEventId(notificationObject, faultId, faultIdName, additionalText,
                                    additionalInfo, perceivedSeverity, eventId, "", "",
                                    programGroupName);
    } else {
        raiseSecondaryAlarmForEvents32Bit(notificationObject, faultId, faultIdName, additionalText,
                                          additionalInfo, perceivedSeverity, "", "",
                                          correlatedEvents, programGroupName);
    }
}

void AdapterImpl::raisePrimaryAlarmForEventId(
    const std::string& notificationObject, std::uint32_t faultId, const std::string& faultIdName,
    const std::string& additionalText, const std::vector<std::string>& additionalInfo,
    std::uint32_t perceivedSeverity, std::uint32_t eventId, const std::string& systemUUID,
    const std::string& computeName, const std::string& programGroupName) {
    std::string correlationUUID; // stays empty for "no event", which is never derived
    if (eventId == 0) {
        DOLQ_TRACE(
            m_traceObject, kFailure,
            "Alarm correlation info incomplete due to eventId is zero. Object:%s, Fault Id: %d",
            notificationObject.c_str(), faultId);
    } else {
        auto* const api = ruxa::zum2::v1::getAPI();
        if (api == nullptr) {
            DOLQ_DROP(lostFault("no correlation service", notificationObject, faultId),
                      m_traceObject, kFailure,
                      "ZumCs getAPI returns a null pointer. Alarm not raised.");
            return;
        }
        if (!api->getDerivedCorrelationUUID(eventId, correlationUUID)) {
            // The alarm is sent all the same: one without its correlation is worth more than none.
            DOLQ_TRACE(m_traceObject, kFailure, "getDerivedCorrelationUUID failed for eventId: %u",
                       eventId);
        }
    }
    raisePrimaryAlarmImpl(notificationObject, faultId, faultIdName, additionalText, additionalInfo,
                          perceivedSeverity, correlationUUID, systemUUID, computeName,
                          programGroupName);
}

void AdapterImpl::raisePrimaryAlarmImpl(
    const std::string& notificationObject, std::uint32_t faultId, const std::string&,
    const std::string& additionalText, const std::vector<std::string>& additionalInfo,
    std::uint32_t perceivedSeverity, const std::string& correlationUUID,
    const std::string& systemUUID, const std::string& computeName,
    const std::string& programGroupName) {
    if (correlationUUID.empty()) {
        DOLQ_TRACE(
            m_traceObject, kFailure,
            "Alarm correlation info incomplete due to correlatedEvent128Bit is empty. Object:%s, Fault Id: %d",
            notificationObject.c_str(), faultId);
    }
    raiseCorrelatedAlarm(notificationObject, faultId, additionalText, additionalInfo,
                         perceivedSeverity, systemUUID, computeName, programGroupName,
                         [&](const std::string& uuid, const std::string& name) {
                             return makePrimaryCorrelationInfo(uuid, name, correlationUUID);
                         });
}

void AdapterImpl::raiseSecondaryAlarmForEvents32Bit(
    const std::string& notificationObject, std::uint32_t faultId, const std::string& faultIdName,
    const std::string& additionalText, const std::vector<std::string>& additionalInfo,
    std::uint32_t perceivedSeverity, const std::string& systemUUID, const std::string& computeName,
    const std::vector<std::uint32_t>& correlatedEvents32Bit, const std::string& programGroupName) {
    std::vector<std::string> correlationUUIDs;
    if (!correlatedEvents32Bit.empty()) {
        auto* const api = ruxa::zum2::v1::getAPI();
        if (api == nullptr) {
            DOLQ_DROP(lostFault("no correlation service", notificationObject, faultId),
                      m_traceObject, kFailure,
                      "ZumCs getAPI call returns a null pointer. Alarm not raised.");
            return;
        }
        for (const std::uint32_t event : correlatedEvents32Bit) {
            if (event == 0) {
                DOLQ_TRACE(
                    m_traceObject, kFailure,
                    "No mapping of zero-valued correlatedEvent32Bit to correlationUUID occured.");
                continue;
            }
            // An event without a UUID costs no other event.
            std::string correlationUUID;
            if (!api->getDerivedCorrelationUUID(event, correlationUUID)) {
                DOLQ_TRACE(m_traceObject, kFailure,
                           "getDerivedCorrelationUUID failed for correlatedEvent32Bit: %u", event);
                continue;
            }
            correlationUUIDs.push_back(std::move(correlationUUID));
        }
    }
    raiseSecondaryAlarmImpl(notificationObject, faultId, faultIdName, additionalText,
                            additionalInfo, perceivedSeverity, systemUUID, computeName,
                            correlationUUIDs, programGroupName);
}

void AdapterImpl::raiseSecondaryAlarmImpl(
    const std::string& notificationObject, std::uint32_t faultId, const std::string&,
    const std::string& additionalText, const std::vector<std::string>& additionalInfo,
    std::uint32_t perceivedSeverity, const std::string& systemUUID, const std::string& computeName,
    const std::vector<std::string>& correlationUUIDs, const std::string& programGroupName) {
    // Unlike a primary alarm, a secondary one means nothing without the events that led to it.
    if (correlationUUIDs.empty()) {
        DOLQ_DROP(
            lostFault("no correlated event", notificationObject, faultId), m_traceObject, kFailure,
            "Alarm not raised due to correlatedEvents128Bit is empty. Object:%s, Fault Id: %d",
            notificationObject.c_str(), faultId);
        return;
    }
    raiseCorrelatedAlarm(notificationObject, faultId, additionalText, additionalInfo,
                         perceivedSeverity, systemUUID, computeName, programGroupName,
                         [&](const std::string& uuid, const std::string& name) {
                             return makeSecondaryCorrelationInfo(uuid, name, correlationUUIDs);
                         });
}

template <typename MakeCorrelationInfo>
void AdapterImpl::raiseCorrelatedAlarm(
    const std::string& notificationObject, std::uint32_t faultId, const std::string& additionalText,
    const std::vector<std::string>& additionalInfo, std::uint32_t perceivedSeverity,
    const std::string& systemUUID, const std::string& computeName,
    const std::string& programGroupName, MakeCorrelationInfo makeCorrelationInfo) {
    // Half an identity is never completed from the environment: the other half could be that of
    // another system. Both variables are read even if the first is missing, so that each missing
    // one is traced.
    const bool fromEnvironment = systemUUID.empty() && computeName.empty();
    const std::string environmentUUID = fromEnvironment ? getSystemUUID() : std::string();
    const std::string environmentName = fromEnvironment ? getComputeName() : std::string();
    const std::string& uuid = fromEnvironment ? environmentUUID : systemUUID;
    const std::string& name = fromEnvironment ? environmentName : computeName;
    if (uuid.empty() || name.empty()) {
        DOLQ_DROP(
            lostFault("no system identity", notificationObject, faultId), m_traceObject, kFailure,
            "Alarm not raised due to either systemUUID or computeName is empty. Object:%s, Fault Id: %d",
            notificationObject.c_str(), faultId);
        return;
    }
    // Receivers look for the correlation info in the first entry.
    std::vector<std::string> list;
    list.reserve(additionalInfo.size() + 1);
    list.push_back(makeCorrelationInfo(uuid, name));
    list.insert(list.end(), additionalInfo.begin(), additionalInfo.end());
    sendNotification(notificationObject, additionalText, list, perceivedSeverity, faultId,
                     programGroupName);
}

std::string AdapterImpl::getSystemUUID() const {
    const char* const value = common::environment("SYSTEM_UUID", nullptr);
    if (value == nullptr) {
        DOLQ_TRACE(m_traceObject, kFailure,
                   "Environment variable systemUUID could not be retreived!");
        return {};
    }
    return value;
}

std::string AdapterImpl::getComputeName() const {
    const char* const value = common::environment("COMPUTE_NAME", nullptr);
    if (value == nullptr) {
        DOLQ_TRACE(m_traceObject, kFailure,
                   "Environment variable computeName could not be retreived!");
        return {};
    }
    return value;
}

// The common send path and its translations. ------------------------------------------------------
//
// A raise comes here with all it needs but the alarm. The client's codes become those of the
// standard only now, so that every trace up to here shows what the client gave.

void AdapterImpl::sendNotification(const std::string& notificationObject,
                                   const std::string& additionalText,
                                   std::vector<std::string>& additionalInfo,
                                   std::uint32_t perceivedSeverity, std::uint32_t faultId,
                                   const std::string& programGroupName) {
    // First, so that an unknown code is traced even when the alarm has no mapping.
    const std::uint32_t newSeverity = mapPerceivedSeverity(perceivedSeverity);
    const std::string moClass = parseMoClass(notificationObject);
    std::uint32_t minorType = 0;
    if (!m_map->getMinorType(faultId, minorType, moClass)) {
        DOLQ_DROP(lostFault("no mapping", notificationObject, faultId), m_traceObject, kFailure,
                  " Minor type not found. notificationObject:%s, faultId:%u",
                  notificationObject.c_str(), faultId);
        return;
    }
    const std::uint32_t majorId = majorIdOf(minorType);
    const std::uint32_t minorId = minorIdOf(minorType);
    // An empty entry tells an operator nothing, and the service would carry it.
    additionalInfo.erase(std::remove_if(additionalInfo.begin(), additionalInfo.end(),
                                        [](const std::string& entry) { return entry.empty(); }),
                         additionalInfo.end());
    DOLQ_TRACE(
        m_traceObject, kFlow,
        "SendNotification: notificationObject:%s, newSeverity:%u, additionalText:%s, newAdditionalInfoStr:%s, majorId:%u, minorId:%u, mappedPgGrp:%s",
        notificationObject.c_str(), newSeverity, additionalText.c_str(),
        listText(additionalInfo).c_str(), majorId, minorId, programGroupName.c_str());
    NotificationData data(notificationObject, newSeverity, additionalText, {}, majorId, minorId,
                          programGroupName);
    data.additionalInfo = std::move(additionalInfo); // the list was made for this alarm alone
    m_session->sendNotification(data);
}

SaNtfSeverityT AdapterImpl::mapPerceivedSeverity(std::uint32_t perceivedSeverity) const {
    // A code that nobody knows is no reason to lose an alarm.
    if (perceivedSeverity >= std::size(kSeverityOfCode)) {
        DOLQ_TRACE(m_traceObject, kFlow,
                   "Raise Alarm called with unknown perceived severity: perceivedSeverity:%u",
                   perceivedSeverity);
        return SA_NTF_SEVERITY_INDETERMINATE;
    }
    return kSeverityOfCode[perceivedSeverity];
}

std::string AdapterImpl::programGroupName(std::uint32_t programGroup) const {
    // The table ends in the name for "none", which stands for every code beyond, too.
    constexpr std::uint32_t kNone = std::size(common::kProgramGroupNames) - 1;
    const char* const name = common::kProgramGroupNames[std::min(programGroup, kNone)];
    DOLQ_TRACE(m_traceObject, kFlow, " Alarm program group: %s", name);
    return name;
}

std::string AdapterImpl::parseMoClass(const std::string& notificationObject) const {
    MoClass moClass = dolq::parseMoClass(notificationObject);
    if (!moClass.hasComma) {
        DOLQ_TRACE(m_traceObject, kDetail,
                   "ObjClassParser- NotificationObj has no Comma Delimiter: notificationObject:%s",
                   notificationObject.c_str());
    }
    if (!moClass.hasEqual) {
        DOLQ_TRACE(m_traceObject, kDetail,
                   " ObjClassParser- NotificationObj has no Equal Delimiter: notificationObject:%s",
                   notificationObject.c_str());
    }
    return std::move(moClass.name);
}

void AdapterImpl::writeList(const std::vector<std::string>& list, std::stringstream& out) {
    if (list.empty()) {
        out << "Empty";
    }
    const char* separator = "";
    for (const std::string& entry : list) {
        out << separator << (entry.empty() ? kEmptyString : entry);
        separator = ", ";
    }
}

void AdapterImpl::writeList(const std::vector<std::uint32_t>& list, std::stringstream& out) {
    if (list.empty()) {
        out << "Empty";
    }
    const char* separator = "";
    for (const std::uint32_t entry : list) {
        out << separator
            << std::to_string(entry); // digits alone, whatever the global locale groups
        separator = ", ";
    }
}

template <typename T> std::string AdapterImpl::listText(const std::vector<T>& list) {
    std::stringstream out;
    out.exceptions(std::ios_base::badbit); // or it would keep the lack of memory to itself
    writeList(list, out);
    return out.str();
}

} // namespace dolq
