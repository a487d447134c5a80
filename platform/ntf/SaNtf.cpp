// The calls of the NTF client interface: check the arguments, find the handle, pass on.

#include <cerrno>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include <saNtf.h>

#include "common/AppendLine.h"
#include "common/Escape.h"
#include "common/ReportOnce.h"
#include "platform/ntf/AlarmNotification.h"
#include "platform/ntf/FaultSchedule.h"
#include "platform/ntf/HandleTable.h"
#include "platform/ntf/log/AlarmRecord.h"
#include "platform/ntf/log/LogPath.h"

namespace {

using namespace platform::ntf;

constexpr SaVersionT kSupportedVersion = {'A', 1, 1};

// Never destroyed: threads may still call while the process ends.
alignas(HandleTable) std::byte handlesMemory[sizeof(HandleTable)];
HandleTable& handles = *new (handlesMemory) HandleTable;

/// Every call enters here: a scheduled fault comes first, and no exception reaches a C caller, but
/// for the unwinding of a thread that is cancelled, which must not be held up.
template <typename Call> SaAisErrorT enter(ServiceCall name, Call call) {
    try {
        if (FaultSchedule* const faults = scheduledFaults()) {
            if (const SaAisErrorT refused = faults->answerTo(name); refused != SA_AIS_OK) {
                return refused;
            }
        }
        return call();
    } catch (const std::bad_alloc&) {
        return SA_AIS_ERR_NO_MEMORY;
    } catch (const std::exception&) {
        return SA_AIS_ERR_LIBRARY;
    }
}

/// Appends the line, or says why it cannot.
SaAisErrorT append(const std::filesystem::path& log, std::string line) {
    const int error = common::appendLine(log, std::move(line));
    if (error == 0) {
        return SA_AIS_OK;
    }
    common::reportOnce("ruxa-ntf: no alarm can be written to '" +
                       common::escapedText(log.string()) + "': " + common::appendFailure(error) +
                       '\n');
    const bool isFull = error == ENOSPC || error == EDQUOT || error == EFBIG;
    return isFull ? SA_AIS_ERR_NO_RESOURCES : SA_AIS_ERR_LIBRARY;
}

} // namespace

SaAisErrorT saNtfInitialize(SaNtfHandleT* ntfHandle, const SaNtfCallbacksT* /*callbacks*/,
                            SaVersionT* version) {
    return enter(ServiceCall::Initialize, [&] {
        if (ntfHandle == nullptr || version == nullptr) {
            return SA_AIS_ERR_INVALID_PARAM;
        }
        const SaVersionT asked = *version;
        *version = kSupportedVersion;
        if (asked.releaseCode != kSupportedVersion.releaseCode ||
            asked.majorVersion != kSupportedVersion.majorVersion) {
            return SA_AIS_ERR_VERSION;
        }
        std::filesystem::path path = notificationLogPath();
        if (path.empty()) {
            common::reportOnce(
                "ruxa-ntf: no alarm can be sent: set RUXA_NTF_LOG to the path of a "
                "notification log (XDG_STATE_HOME and HOME do not say where one could "
                "be)\n");
            return SA_AIS_ERR_LIBRARY;
        }
        *ntfHandle = handles.open(std::make_shared<const std::filesystem::path>(std::move(path)));
        return SA_AIS_OK;
    });
}

SaAisErrorT saNtfFinalize(SaNtfHandleT ntfHandle) {
    return enter(ServiceCall::Finalize,
                 [&] { return handles.close(ntfHandle) ? SA_AIS_OK : SA_AIS_ERR_BAD_HANDLE; });
}

SaAisErrorT
saNtfAlarmNotificationAllocate(SaNtfHandleT ntfHandle, SaNtfAlarmNotificationT* notification,
                               SaUint16T numCorrelatedNotifications, SaUint16T lengthAdditionalText,
                               SaUint16T numAdditionalInfo, SaUint16T numSpecificProblems,
                               SaUint16T numMonitoredAttributes, SaUint16T numProposedRepairActions,
                               SaInt16T variableDataSize) {
    return enter(ServiceCall::Allocate, [&] {
        if (notification == nullptr) {
            return SA_AIS_ERR_INVALID_PARAM;
        }
        if (variableDataSize < SA_NTF_ALLOC_SYSTEM_LIMIT) {
            return SA_AIS_ERR_TOO_BIG;
        }
        const SaInt16T valueLimit = variableDataSize == SA_NTF_ALLOC_SYSTEM_LIMIT
                                        ? std::numeric_limits<SaInt16T>::max()
                                        : variableDataSize;
        const AlarmCounts counts = {numCorrelatedNotifications, lengthAdditionalText,
                                    numAdditionalInfo,          numSpecificProblems,
                                    numMonitoredAttributes,     numProposedRepairActions};
        const auto allocated =
            std::make_shared<AlarmNotification>(counts, static_cast<std::size_t>(valueLimit));
        const SaNtfNotificationHandleT handle = handles.add(ntfHandle, allocated);
        if (handle == 0) {
            return SA_AIS_ERR_BAD_HANDLE;
        }
        notification->notificationHandle = handle;
        allocated->describe(*notification);
        return SA_AIS_OK;
    });
}

SaAisErrorT saNtfPtrValAllocate(SaNtfNotificationHandleT notificationHandle, SaUint16T dataSize,
                                void** dataPtr, SaNtfValueT* value) {
    return enter(ServiceCall::Value, [&] {
        if (dataSize == 0 || dataPtr == nullptr || value == nullptr) {
            return SA_AIS_ERR_INVALID_PARAM;
        }
        const auto entry = handles.find(notificationHandle);
        if (!entry.notification) {
            return SA_AIS_ERR_BAD_HANDLE;
        }
        void* const data = entry.notification->allocateValue(dataSize, *value);
        if (data == nullptr) {
            return SA_AIS_ERR_NO_SPACE;
        }
        *dataPtr = data;
        return SA_AIS_OK;
    });
}

SaAisErrorT saNtfNotificationSend(SaNtfNotificationHandleT notificationHandle) {
    return enter(ServiceCall::Send, [&] {
        const auto entry = handles.find(notificationHandle);
        if (!entry.notification) {
            return SA_AIS_ERR_BAD_HANDLE;
        }
        AlarmRecord record;
        if (!entry.notification->compose(record)) {
            return SA_AIS_ERR_INVALID_PARAM;
        }
        return append(*entry.log, toLine(record));
    });
}

SaAisErrorT saNtfNotificationFree(SaNtfNotificationHandleT notificationHandle) {
    return enter(ServiceCall::Free, [&] {
        return handles.remove(notificationHandle) ? SA_AIS_OK : SA_AIS_ERR_BAD_HANDLE;
    });
}

// Reading: to come. Each says so in the standard's way.

SaAisErrorT saNtfAlarmNotificationFilterAllocate(SaNtfHandleT, SaNtfAlarmNotificationFilterT*,
                                                 SaUint16T, SaUint16T, SaUint16T, SaUint16T,
                                                 SaUint16T, SaUint16T, SaUint16T) {
    return SA_AIS_ERR_NOT_SUPPORTED;
}

SaAisErrorT saNtfNotificationFilterFree(SaNtfNotificationFilterHandleT) {
    return SA_AIS_ERR_NOT_SUPPORTED;
}

SaAisErrorT saNtfNotificationReadInitialize(SaNtfSearchCriteriaT,
                                            const SaNtfNotificationTypeFilterHandlesT*,
                                            SaNtfReadHandleT*) {
    return SA_AIS_ERR_NOT_SUPPORTED;
}

SaAisErrorT saNtfNotificationReadNext(SaNtfReadHandleT, SaNtfSearchDirectionT,
                                      SaNtfNotificationsT*) {
    return SA_AIS_ERR_NOT_SUPPORTED;
}

SaAisErrorT saNtfNotificationReadFinalize(SaNtfReadHandleT) { return SA_AIS_ERR_NOT_SUPPORTED; }

SaAisErrorT saNtfPtrValGet(SaNtfNotificationHandleT, const SaNtfValueT*, void**, SaUint16T*) {
    return SA_AIS_ERR_NOT_SUPPORTED;
}
