// An NTF client library with what real ones do that the embedded one does not: DOUBLE=stock gives
// names of 256 bytes, packed gives memory that is no block of its own and leaves the event time as
// it is, empty gives no notification, refusing opens no session.

#include <cstdlib>
#include <string>

#include <saNtf.h>

namespace {

std::string chosen() { return std::getenv("DOUBLE"); }

SaNameT* stockName() { return static_cast<SaNameT*>(std::calloc(1, 2 + 256)); }

alignas(16) unsigned char packed[4096];

} // namespace

SaAisErrorT saNtfInitialize(SaNtfHandleT* handle, const SaNtfCallbacksT*, SaVersionT*) {
    *handle = 1;
    return chosen() == "refusing" ? SA_AIS_ERR_UNAVAILABLE : SA_AIS_OK;
}

SaAisErrorT saNtfAlarmNotificationAllocate(SaNtfHandleT, SaNtfAlarmNotificationT* notification,
                                           SaUint16T, SaUint16T, SaUint16T, SaUint16T, SaUint16T,
                                           SaUint16T, SaInt16T) {
    SaNtfNotificationHeaderT& header = notification->notificationHeader;
    notification->notificationHandle = chosen() == "empty" ? 0 : 1;
    static SaTimeT eventTime;
    eventTime = chosen() == "stock" ? SA_TIME_UNKNOWN : 94321;
    header.eventTime = &eventTime;
    if (chosen() == "stock") {
        // Never freed, and far from each other: their distance alone does not tell.
        static SaNameT* const first = stockName();
        static void* const between = std::malloc(4096);
        static SaNameT* const second = stockName();
        header.notificationObject = between != nullptr ? first : nullptr;
        header.notifyingObject = second;
    } else {
        header.notificationObject = reinterpret_cast<SaNameT*>(packed);
        header.notifyingObject = reinterpret_cast<SaNameT*>(packed + 2048);
    }
    return SA_AIS_OK;
}

SaAisErrorT saNtfPtrValAllocate(SaNtfNotificationHandleT, SaUint16T, void**, SaNtfValueT*) {
    return SA_AIS_ERR_UNAVAILABLE;
}
SaAisErrorT saNtfNotificationSend(SaNtfNotificationHandleT) { return SA_AIS_ERR_UNAVAILABLE; }
SaAisErrorT saNtfNotificationFree(SaNtfNotificationHandleT) { return SA_AIS_OK; }
SaAisErrorT saNtfFinalize(SaNtfHandleT) { return SA_AIS_OK; }

namespace ruxa::zum2::v1 {
void* getAPI(); // of a correlation service that does not run, for which this is taken as well
void* getAPI() { return nullptr; }
} // namespace ruxa::zum2::v1
