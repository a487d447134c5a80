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
#include "platform/ntf/AlarmReading.h"
#include "platform/ntf/FaultSchedule.h"
#include "platform/ntf/Fields.h"
#include "platform/ntf/HandleTable.h"
#include "platform/ntf/LogPath.h"
#include "platform/ntf/NotificationId.h"

namespace {

using namespace platform::ntf;

constexpr SaVersionT kSupportedVersion = {'A', 1, 1};

// Never destroyed: threads may still call while the process ends.
alignas(HandleTable) std::byte handlesMemory[sizeof(HandleTable)];
HandleTable& handles = *new (handlesMemory) HandleTable;

/// Every call enters here: no exception reaches a C caller, but for the unwinding of a thread that
/// is cancelled, which must not be held up.
template <typename Call> SaAisErrorT enter(Call call) {
    try {
        return call();
    } catch (const std::bad_alloc&) {
        return SA_AIS_ERR_NO_MEMORY;
    } catch (const std::exception&) {
        return SA_AIS_ERR_LIBRARY;
    }
}

/// A call for which a scheduled fault comes first.
template <typename Call> SaAisErrorT enter(ServiceCall name, Call call) {
    return enter([&] {
        FaultSchedule* const faults = scheduledFaults();
        const SaAisErrorT refused = faults != nullptr ? faults->answerTo(name) : SA_AIS_OK;
        return refused != SA_AIS_OK ? refused : call();
    });
}

/// Gives the object a handle and describes it to the caller, or does neither.
template <typename Kind, typename Description>
SaAisErrorT handOut(SaNtfHandleT owner, const std::shared_ptr<Kind>& object, SaUint64T& handle,
                    Description& description) {
    const SaUint64T added = handles.add(owner, object);
    if (added == 0) {
        return SA_AIS_ERR_BAD_HANDLE;
    }
    object->describe(description);
    handle = added;
    return SA_AIS_OK;
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
        return handOut(ntfHandle, allocated, notification->notificationHandle, *notification);
    });
}

SaAisErrorT saNtfPtrValAllocate(SaNtfNotificationHandleT notificationHandle, SaUint16T dataSize,
                                void** dataPtr, SaNtfValueT* value) {
    return enter(ServiceCall::Value, [&] {
        if (dataSize == 0 || dataPtr == nullptr || value == nullptr) {
            return SA_AIS_ERR_INVALID_PARAM;
        }
        const auto entry = handles.find<AlarmNotification>(notificationHandle);
        if (!entry.object) {
            return SA_AIS_ERR_BAD_HANDLE;
        }
        void* const data = entry.object->allocateValue(dataSize, *value);
        if (data == nullptr) {
            return SA_AIS_ERR_NO_SPACE;
        }
        *dataPtr = data;
        return SA_AIS_OK;
    });
}

SaAisErrorT saNtfNotificationSend(SaNtfNotificationHandleT notificationHandle) {
    return enter(ServiceCall::Send, [&] {
        const auto entry = handles.find<AlarmNotification>(notificationHandle);
        if (!entry.object) {
            return SA_AIS_ERR_BAD_HANDLE;
        }
        if (!entry.object->isValid()) {
            return SA_AIS_ERR_INVALID_PARAM;
        }
        entry.object->setId(nextNotificationId());
        return append(*entry.log, entry.object->toLine());
    });
}

SaAisErrorT saNtfNotificationFree(SaNtfNotificationHandleT notificationHandle) {
    return enter(ServiceCall::Free, [&] {
        return handles.remove<AlarmNotification>(notificationHandle) ? SA_AIS_OK
                                                                     : SA_AIS_ERR_BAD_HANDLE;
    });
}

SaAisErrorT saNtfAlarmNotificationFilterAllocate(
    SaNtfHandleT ntfHandle, SaNtfAlarmNotificationFilterT* notificationFilter,
    SaUint16T numEventTypes, SaUint16T numNotificationObjects, SaUint16T numNotifyingObjects,
    SaUint16T numNotificationClassIds, SaUint16T numProbableCauses,
    SaUint16T numPerceivedSeverities, SaUint16T numTrends) {
    return enter([&] {
        if (notificationFilter == nullptr) {
            return SA_AIS_ERR_INVALID_PARAM;
        }
        if (numEventTypes + numNotifyingObjects + numNotificationClassIds + numProbableCauses +
                numPerceivedSeverities + numTrends !=
            0) {
            return SA_AIS_ERR_NOT_SUPPORTED;
        }
        const auto filter = std::make_shared<AlarmFilter>(numNotificationObjects);
        return handOut(ntfHandle, filter, notificationFilter->notificationFilterHandle,
                       *notificationFilter);
    });
}

SaAisErrorT saNtfNotificationFilterFree(SaNtfNotificationFilterHandleT notificationFilterHandle) {
    return enter([&] {
        return handles.remove<AlarmFilter>(notificationFilterHandle) ? SA_AIS_OK
                                                                     : SA_AIS_ERR_BAD_HANDLE;
    });
}

SaAisErrorT saNtfNotificationReadInitialize(
    SaNtfSearchCriteriaT searchCriteria,
    const SaNtfNotificationTypeFilterHandlesT* notificationFilterHandles,
    SaNtfReadHandleT* readHandle) {
    return enter(ServiceCall::Search, [&] {
        const std::uint32_t mode = codeOf(searchCriteria.searchMode);
        if (notificationFilterHandles == nullptr || readHandle == nullptr ||
            mode < SA_NTF_SEARCH_BEFORE_OR_AT_TIME || mode > SA_NTF_SEARCH_ONLY_FILTER) {
            return SA_AIS_ERR_INVALID_PARAM;
        }
        const SaNtfNotificationTypeFilterHandlesT& filters = *notificationFilterHandles;
        const bool asksForOthers = filters.objectCreateDeleteFilterHandle != 0 ||
                                   filters.attributeChangeFilterHandle != 0 ||
                                   filters.stateChangeFilterHandle != 0 ||
                                   filters.securityAlarmFilterHandle != 0;
        if (mode != SA_NTF_SEARCH_ONLY_FILTER || asksForOthers || filters.alarmFilterHandle == 0) {
            return SA_AIS_ERR_NOT_SUPPORTED;
        }
        const auto entry = handles.find<AlarmFilter>(filters.alarmFilterHandle);
        if (!entry.object) {
            return SA_AIS_ERR_BAD_HANDLE;
        }
        if (!entry.object->isValid()) {
            return SA_AIS_ERR_INVALID_PARAM;
        }
        const SaNtfReadHandleT handle =
            handles.add(entry.owner, std::make_shared<AlarmReading>(entry.log, *entry.object));
        if (handle == 0) {
            return SA_AIS_ERR_BAD_HANDLE;
        }
        *readHandle = handle;
        return SA_AIS_OK;
    });
}

SaAisErrorT saNtfNotificationReadNext(SaNtfReadHandleT readHandle,
                                      SaNtfSearchDirectionT searchDirection,
                                      SaNtfNotificationsT* notification) {
    return enter(ServiceCall::Read, [&] {
        const std::uint32_t direction = codeOf(searchDirection);
        if (notification == nullptr ||
            (direction != SA_NTF_SEARCH_OLDER && direction != SA_NTF_SEARCH_YOUNGER)) {
            return SA_AIS_ERR_INVALID_PARAM;
        }
        const auto entry = handles.find<AlarmReading>(readHandle);
        if (!entry.object) {
            return SA_AIS_ERR_BAD_HANDLE;
        }
        const auto next = entry.object->next();
        if (!next) {
            return SA_AIS_ERR_NOT_EXIST;
        }
        SaNtfAlarmNotificationT& alarm = notification->notification.alarmNotification;
        const SaAisErrorT result = handOut(entry.owner, next, alarm.notificationHandle, alarm);
        if (result == SA_AIS_OK) {
            notification->notificationType = SA_NTF_TYPE_ALARM;
        }
        return result;
    });
}

SaAisErrorT saNtfNotificationReadFinalize(SaNtfReadHandleT readHandle) {
    return enter([&] {
        return handles.remove<AlarmReading>(readHandle) ? SA_AIS_OK : SA_AIS_ERR_BAD_HANDLE;
    });
}

SaAisErrorT saNtfPtrValGet(SaNtfNotificationHandleT notificationHandle, const SaNtfValueT* value,
                           void** dataPtr, SaUint16T* dataSize) {
    return enter([&] {
        if (value == nullptr || dataPtr == nullptr || dataSize == nullptr) {
            return SA_AIS_ERR_INVALID_PARAM;
        }
        const auto entry = handles.find<AlarmNotification>(notificationHandle);
        if (!entry.object) {
            return SA_AIS_ERR_BAD_HANDLE;
        }
        void* const data = entry.object->findValue(value);
        if (data == nullptr) {
            return SA_AIS_ERR_INVALID_PARAM;
        }
        *dataPtr = data;
        *dataSize = value->ptrVal.dataSize;
        return SA_AIS_OK;
    });
}
