#ifndef BENCH_DIRECT_CLIENT_H
#define BENCH_DIRECT_CLIENT_H

#include <saNtf.h>

#ifdef __cplusplus
extern "C" {
#endif

/* What the library is measured against: the same notification, made by hand with the service's own
 * calls from texts that are ready. All texts are borrowed; `programGroup` is null for none. */
typedef struct DirectAlarm {
    const char* object;
    SaNtfSeverityT severity;
    SaUint16T majorId;
    SaUint16T minorId;
    const char* text;
    const char* const* info;
    SaUint16T infoCount;
    const char* programGroup;
} DirectAlarm;

/* Returns the first result that is not SA_AIS_OK, or SA_AIS_OK. */
SaAisErrorT sendDirectly(SaNtfHandleT session, const DirectAlarm* alarm);

#ifdef __cplusplus
}
#endif

#endif
