#pragma once

/// SA Forum AIS: the types and result codes that every service shares (x86-64 layout).
/// Names are at most SA_MAX_NAME_LENGTH bytes: client and service must be built with one value.

#define SA_MAX_NAME_LENGTH 600

/* Lets `strings` show which length any object file or library was built with. */
#if defined(__has_attribute)
#if __has_attribute(retain)
#define SA_AIS_KEEP_ __attribute__((used, retain))
#endif
#endif
#ifndef SA_AIS_KEEP_
#define SA_AIS_KEEP_ __attribute__((used))
#endif
SA_AIS_KEEP_ static const char saMaxNameLengthText_[] = "SA_MAX_NAME_LENGTH = 600";

#ifdef __cplusplus
extern "C" {
#endif

typedef char SaInt8T;
typedef short SaInt16T;
typedef int SaInt32T;
typedef long long SaInt64T;
typedef unsigned char SaUint8T;
typedef unsigned short SaUint16T;
typedef unsigned int SaUint32T;
typedef unsigned long long SaUint64T;
typedef float SaFloatT;
typedef double SaDoubleT;
typedef char* SaStringT;
typedef SaUint64T SaSizeT;

/// Nanoseconds since 1970-01-01 00:00 UTC.
typedef SaInt64T SaTimeT;
#define SA_TIME_UNKNOWN (-0x7FFFFFFFFFFFFFFFLL - 1)

/// `length` bytes of `value` are the name; it needs no NUL.
typedef struct {
    SaUint16T length;
    SaUint8T value[SA_MAX_NAME_LENGTH];
} SaNameT;

typedef struct {
    SaUint8T releaseCode; ///< an upper-case letter
    SaUint8T majorVersion;
    SaUint8T minorVersion;
} SaVersionT;

typedef enum {
    SA_AIS_OK = 1,
    SA_AIS_ERR_LIBRARY = 2,
    SA_AIS_ERR_VERSION = 3,
    SA_AIS_ERR_INIT = 4,
    SA_AIS_ERR_TIMEOUT = 5,
    SA_AIS_ERR_TRY_AGAIN = 6,
    SA_AIS_ERR_INVALID_PARAM = 7,
    SA_AIS_ERR_NO_MEMORY = 8,
    SA_AIS_ERR_BAD_HANDLE = 9,
    SA_AIS_ERR_BUSY = 10,
    SA_AIS_ERR_ACCESS = 11,
    SA_AIS_ERR_NOT_EXIST = 12,
    SA_AIS_ERR_NAME_TOO_LONG = 13,
    SA_AIS_ERR_EXIST = 14,
    SA_AIS_ERR_NO_SPACE = 15,
    SA_AIS_ERR_INTERRUPT = 16,
    SA_AIS_ERR_NAME_NOT_FOUND = 17,
    SA_AIS_ERR_NO_RESOURCES = 18,
    SA_AIS_ERR_NOT_SUPPORTED = 19,
    SA_AIS_ERR_BAD_OPERATION = 20,
    SA_AIS_ERR_FAILED_OPERATION = 21,
    SA_AIS_ERR_MESSAGE_ERROR = 22,
    SA_AIS_ERR_QUEUE_FULL = 23,
    SA_AIS_ERR_QUEUE_NOT_AVAILABLE = 24,
    SA_AIS_ERR_BAD_FLAGS = 25,
    SA_AIS_ERR_TOO_BIG = 26,
    SA_AIS_ERR_NO_SECTIONS = 27,
    SA_AIS_ERR_NO_OP = 28,
    SA_AIS_ERR_REPAIR_PENDING = 29,
    SA_AIS_ERR_NO_BINDINGS = 30,
    SA_AIS_ERR_UNAVAILABLE = 31,
    SA_AIS_ERR_CAMPAIGN_ERROR_DETECTED = 32,
    SA_AIS_ERR_CAMPAIGN_PROC_FAILED = 33,
    SA_AIS_ERR_CAMPAIGN_CANCELED = 34,
    SA_AIS_ERR_CAMPAIGN_FAILED = 35,
    SA_AIS_ERR_CAMPAIGN_SUSPENDED = 36,
    SA_AIS_ERR_CAMPAIGN_SUSPENDING = 37,
    SA_AIS_ERR_ACCESS_DENIED = 38,
    SA_AIS_ERR_NOT_READY = 39,
    SA_AIS_ERR_DEPLOYMENT = 40
} SaAisErrorT;

#ifdef __cplusplus
}
#endif
