// An NTF client library with what real ones do that the embedded one does not: DOUBLE=stock gives
// names of 256 bytes, packed gives the least room for names of 600 and leaves the event time as it
// is, empty gives no notification, refusing opens no session, blocking does not answer.
//
// READINGS says what readings give, one behind the other, separated by ";", the last one again and
// again: alarms as ID/SEVERITY/VENDOR/SECONDS/OBJECT, "full" for one with all fields, and codes of
// ReadNext, 6 for "try again"; "late" is one that comes after the client library's time-out. Where
// FILTER is set, a reading needs this object in its filter.

#include <cstdlib>
#include <sstream>
#include <string>

#include <saNtf.h>
#include <unistd.h>

namespace {

std::string chosen() { return std::getenv("DOUBLE"); }

void setName(SaNameT& name, const std::string& text) {
    name.length = static_cast<SaUint16T>(text.size());
    text.copy(reinterpret_cast<char*>(name.value), text.size());
}

/// An alarm and the memory that its pointers lead to.
struct Received {
    SaNtfEventTypeT eventType = SA_NTF_ALARM_EQUIPMENT;
    SaNameT object{};
    SaNameT notifyingObject{};
    SaNtfClassIdT classId{0, 1, 1};
    SaTimeT eventTime = 0;
    SaNtfIdentifierT id = 0;
    SaNtfIdentifierT correlated[2] = {41, 42};
    char text[5] = {'W', 'a', 'r', 'm', 0};
    SaNtfAdditionalInfoT info[2] = {{7, SA_NTF_VALUE_STRING, {}}, {0, SA_NTF_VALUE_UINT32, {}}};
    SaNtfProbableCauseT cause = SA_NTF_ADAPTER_ERROR;
    SaNtfSpecificProblemT problem{0, {}, SA_NTF_VALUE_DOUBLE, {}};
    SaNtfSeverityT severity{};
    SaNtfSeverityTrendT trend = SA_NTF_TREND_LESS_SEVERE;
    SaNtfThresholdInformationT threshold{};
    SaNtfAttributeT attribute{0, SA_NTF_VALUE_STRING, {}};
    SaNtfProposedRepairActionT action{0, SA_NTF_VALUE_BINARY, {}};
} received, allocated;

SaNameT filterName;
int readings = 0;
std::istringstream script;

std::string filterText() { return {reinterpret_cast<char*>(filterName.value), filterName.length}; }

SaNtfAlarmNotificationT describe(Received& of, bool isFull) {
    const SaUint16T one = isFull ? 1 : 0;
    const SaUint16T two = isFull ? 2 : 0;
    const SaUint16T length = isFull ? sizeof(of.text) : 0;
    return {1,
            {&of.eventType, &of.object, &of.notifyingObject, &of.classId, &of.eventTime, two,
             length, two, &of.id, of.correlated, isFull ? of.text : nullptr, of.info},
            one,
            one,
            one,
            &of.cause,
            &of.problem,
            &of.severity,
            &of.trend,
            &of.threshold,
            &of.attribute,
            &of.action};
}

alignas(16) unsigned char packed[4096];

} // namespace

SaAisErrorT saNtfInitialize(SaNtfHandleT* handle, const SaNtfCallbacksT*, SaVersionT*) {
    while (chosen() == "blocking") {
        ::pause();
    }
    *handle = 1;
    return chosen() == "refusing" ? SA_AIS_ERR_UNAVAILABLE : SA_AIS_OK;
}

SaAisErrorT saNtfAlarmNotificationAllocate(SaNtfHandleT, SaNtfAlarmNotificationT* notification,
                                           SaUint16T, SaUint16T, SaUint16T, SaUint16T, SaUint16T,
                                           SaUint16T, SaInt16T) {
    if (chosen() == "real") {
        *notification = describe(allocated, true);
        return SA_AIS_OK;
    }
    SaNtfNotificationHeaderT& header = notification->notificationHeader;
    notification->notificationHandle = chosen() == "empty" ? 0 : 1;
    static SaTimeT eventTime;
    eventTime = chosen() == "stock" ? static_cast<SaTimeT>(SA_TIME_UNKNOWN) : 94321;
    header.eventTime = &eventTime;
    header.notificationObject = reinterpret_cast<SaNameT*>(packed);
    header.notifyingObject = reinterpret_cast<SaNameT*>(packed + (chosen() == "stock" ? 272 : 608));
    return SA_AIS_OK;
}

SaAisErrorT saNtfPtrValAllocate(SaNtfNotificationHandleT, SaUint16T, void**, SaNtfValueT*) {
    return SA_AIS_ERR_UNAVAILABLE;
}
SaAisErrorT saNtfAlarmNotificationFilterAllocate(SaNtfHandleT,
                                                 SaNtfAlarmNotificationFilterT* filter, SaUint16T,
                                                 SaUint16T, SaUint16T, SaUint16T, SaUint16T,
                                                 SaUint16T, SaUint16T) {
    filter->notificationFilterHandle = 1;
    filter->notificationFilterHeader.notificationObjects = &filterName;
    return SA_AIS_OK;
}

SaAisErrorT saNtfNotificationReadInitialize(SaNtfSearchCriteriaT,
                                            const SaNtfNotificationTypeFilterHandlesT*,
                                            SaNtfReadHandleT*) {
    if (filterText() != (std::getenv("FILTER") != nullptr ? std::getenv("FILTER") : filterText())) {
        return SA_AIS_ERR_INVALID_PARAM;
    }
    std::istringstream all(std::getenv("READINGS"));
    std::string reading;
    for (int i = 0; i <= readings && std::getline(all, reading, ';'); ++i) {
        script = std::istringstream(reading);
    }
    ++readings;
    return SA_AIS_OK;
}

SaAisErrorT saNtfNotificationReadNext(SaNtfReadHandleT, SaNtfSearchDirectionT,
                                      SaNtfNotificationsT* notification) {
    std::string word;
    while (script >> word) {
        if (word == "late") {
            ::sleep(6);
            return SA_AIS_ERR_TRY_AGAIN;
        }
        if (word.find('/') == word.npos && word != "full") {
            return static_cast<SaAisErrorT>(std::stoi(word));
        }
        std::istringstream parts(word == "full" ? "9/3/32473/1700000000/Board=3" : word);
        int severity = 0;
        char slash = 0;
        std::string object;
        parts >> received.id >> slash >> severity >> slash >> received.classId.vendorId >> slash >>
            received.eventTime >> slash >> object;
        received.eventTime *= 1'000'000'000;
        received.severity = static_cast<SaNtfSeverityT>(severity);
        setName(received.object, object);
        setName(received.notifyingObject, "node-1");
        if (object.find(filterText()) != object.npos) {
            notification->notification.alarmNotification = describe(received, word == "full");
            return SA_AIS_OK;
        }
    }
    return SA_AIS_ERR_NOT_EXIST;
}

SaAisErrorT saNtfPtrValGet(SaNtfNotificationHandleT, const SaNtfValueT* value, void** data,
                           SaUint16T* size) {
    *data = received.text;
    *size = sizeof(received.text);
    return value == &received.info[0].infoValue ? SA_AIS_OK : SA_AIS_ERR_INVALID_PARAM;
}

SaAisErrorT saNtfNotificationSend(SaNtfNotificationHandleT) {
    return chosen() == "real" ? SA_AIS_OK : SA_AIS_ERR_UNAVAILABLE;
}
SaAisErrorT saNtfNotificationFree(SaNtfNotificationHandleT) { return SA_AIS_OK; }
SaAisErrorT saNtfFinalize(SaNtfHandleT) { return SA_AIS_OK; }

namespace ruxa::zum2::v1 {
void* getAPI(); // of a correlation service that does not run, for which this is taken as well
void* getAPI() { return nullptr; }
} // namespace ruxa::zum2::v1
