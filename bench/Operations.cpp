#include "Operations.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>

#include <ruxa/zum2/v1/CorrelationApi.h>

#include "ruxa/fm/dolq/v1/FmiFactory.h"

namespace bench {

namespace {

constexpr std::uint32_t kFaultId = 1'000'000;
constexpr std::uint32_t kMinorType = 0x8C0001;
constexpr std::uint32_t kSeverity = ruxa::fm::fmi::v1::PerceivedSeverityMajor;
constexpr std::uint32_t kGroup = ruxa::fm::fmi::v1::ProgramGroupLrat;

#define IDENTITY R"(CI={"C": [{"I": "0b5f7c52-6e0c-4b8e-9a43-2f1d8c7e6a90","n": "compute-1"}],)"

// What the client gives the library.
const std::string kObject = "managedElement=1,equipment=1,board=3";
const std::string kFaultName = "BoardOverheated";
const std::string kText = "The board's temperature is above its limit";
const std::vector<std::string> kInfo = {"temperature=91, limit=85", "sensor=U17, fan=2 of 3"};
const std::string kSystem = "0b5f7c52-6e0c-4b8e-9a43-2f1d8c7e6a90";
const std::string kCompute = "compute-1";
const std::vector<std::string> kUuids = {"7d1e9a04-53c2-5f0b-8c6e-1b2f4a9d3e77",
                                         "c26b8f11-0d47-5a3c-9e85-6f7a2d4b1c08"};
const std::vector<std::uint32_t> kEvents = {4711, 4712};

void copyName(SaNameT& name, const std::string& text) {
    name.length = static_cast<SaUint16T>(text.size());
    std::memcpy(name.value, text.data(), text.size());
    std::memset(name.value + text.size(), 0, sizeof name.value - text.size());
}

SaAisErrorT fillValue(SaNtfNotificationHandleT handle, const char* text, SaNtfValueT& value) {
    const auto size = static_cast<SaUint16T>(std::strlen(text) + 1);
    void* block = nullptr;
    const SaAisErrorT result = saNtfPtrValAllocate(handle, size, &block, &value);
    if (result == SA_AIS_OK) {
        std::memcpy(block, text, size);
    }
    return result;
}

SaAisErrorT fill(SaNtfAlarmNotificationT& notification, SaNtfSeverityT severity, const char* text,
                 const std::vector<const char*>& info, const char* group) {
    SaNtfNotificationHeaderT& header = notification.notificationHeader;
    *notification.perceivedSeverity = severity;
    *notification.probableCause = SA_NTF_UNSPECIFIED_REASON;
    *notification.trend = SA_NTF_TREND_NO_CHANGE;
    notification.thresholdInformation->thresholdId = 255;
    *header.eventType = SA_NTF_ALARM_NOTIFICATIONS_START;
    copyName(*header.notificationObject, kObject);
    copyName(*header.notifyingObject, kObject);
    *header.notificationClassId = {RUXA_DOLQ_VENDOR_ID, kMinorType >> 16, kMinorType & 0xFFFF};
    std::strcpy(header.additionalText, text);
    SaAisErrorT result = SA_AIS_OK;
    if (group != nullptr) {
        SaNtfProposedRepairActionT& action = notification.proposedRepairActions[0];
        action.actionId = 0;
        action.actionValueType = SA_NTF_VALUE_STRING;
        result = fillValue(notification.notificationHandle, group, action.actionValue);
    }
    for (std::size_t i = 0; i < info.size() && result == SA_AIS_OK; ++i) {
        header.additionalInfo[i].infoType = SA_NTF_VALUE_STRING;
        result =
            fillValue(notification.notificationHandle, info[i], header.additionalInfo[i].infoValue);
    }
    return result;
}

SaAisErrorT send(SaNtfHandleT session, SaNtfSeverityT severity, const char* text,
                 const std::vector<const char*>& info, const char* group) {
    SaNtfAlarmNotificationT notification{};
    SaAisErrorT result = saNtfAlarmNotificationAllocate(
        session, &notification, 0, static_cast<SaUint16T>(std::strlen(text) + 1),
        static_cast<SaUint16T>(info.size()), 0, 0, group != nullptr ? 1 : 0,
        SA_NTF_ALLOC_SYSTEM_LIMIT);
    if (result != SA_AIS_OK) {
        return result;
    }
    result = fill(notification, severity, text, info, group);
    if (result == SA_AIS_OK) {
        result = saNtfNotificationSend(notification.notificationHandle);
    }
    const SaAisErrorT freed = saNtfNotificationFree(notification.notificationHandle);
    return result == SA_AIS_OK ? freed : result;
}

SaAisErrorT raise(SaNtfHandleT session, const char* correlation, const char* group = nullptr) {
    return send(session, SA_NTF_SEVERITY_MAJOR, kText.c_str(),
                {correlation, kInfo[0].c_str(), kInfo[1].c_str()}, group);
}

/// A client with event ids has to ask the correlation service as well, and to write the text.
std::string derived(std::uint32_t eventId) {
    std::string uuid;
    ruxa::zum2::v1::getAPI()->getDerivedCorrelationUUID(eventId, uuid);
    return uuid;
}

} // namespace

const std::vector<Operation>& operations() {
    static const std::vector<Operation> kOperations = {
        {"raisePrimaryAlarm/uuid",
         [](FaultManagementI& adapter) {
             adapter.raisePrimaryAlarm(kObject, kFaultId, kFaultName, kText, kInfo, kSeverity,
                                       kUuids[0], kSystem, kCompute);
         },
         [](SaNtfHandleT session) {
             return raise(session, IDENTITY R"("P": "7d1e9a04-53c2-5f0b-8c6e-1b2f4a9d3e77"})");
         }},
        {"raisePrimaryAlarm/id/group",
         [](FaultManagementI& adapter) {
             adapter.raisePrimaryAlarm(kObject, kFaultId, kFaultName, kText, kInfo, kSeverity,
                                       kEvents[0], kSystem, kCompute, kGroup);
         },
         [](SaNtfHandleT session) {
             return raise(session, (IDENTITY "\"P\": \"" + derived(kEvents[0]) + "\"}").c_str(),
                          "lratPgGrp");
         }},
        {"raiseSecondaryAlarm/uuids",
         [](FaultManagementI& adapter) {
             adapter.raiseSecondaryAlarm(kObject, kFaultId, kFaultName, kText, kInfo, kSeverity,
                                         kSystem, kCompute, kUuids);
         },
         [](SaNtfHandleT session) {
             return raise(session, IDENTITY R"("S": ["7d1e9a04-53c2-5f0b-8c6e-1b2f4a9d3e77",)"
                                            R"("c26b8f11-0d47-5a3c-9e85-6f7a2d4b1c08"]})");
         }},
        {"raiseAlarm/secondary", // which takes the identity from the environment
         [](FaultManagementI& adapter) {
             adapter.raiseAlarm(kObject, kFaultId, kFaultName, kText, kInfo, kSeverity, 0, kEvents);
         },
         [](SaNtfHandleT session) {
             return raise(session, (IDENTITY "\"S\": [\"" + derived(kEvents[0]) + "\",\"" +
                                    derived(kEvents[1]) + "\"]}")
                                       .c_str());
         }},
        {"ceaseAlarm",
         [](FaultManagementI& adapter) { adapter.ceaseAlarm(kObject, kFaultId, kFaultName); },
         [](SaNtfHandleT session) {
             return send(session, SA_NTF_SEVERITY_CLEARED, "", {}, nullptr);
         }},
    };
    return kOperations;
}

std::unique_ptr<FaultManagementI> makeAdapter(std::uint32_t mappings) {
    setenv("SYSTEM_UUID", kSystem.c_str(), 1);
    setenv("COMPUTE_NAME", kCompute.c_str(), 1);
    auto* const factory = ruxa::fm::dolq::v1::getFmiFactory();
    for (std::uint32_t i = 1; i <= mappings; ++i) {
        factory->getConfiguration()->setMapping(kFaultId - mappings + i, kMinorType, "board");
    }
    return std::unique_ptr<FaultManagementI>(factory->createFaultManagement());
}

SaNtfHandleT openSession() {
    SaVersionT version = {'A', 1, 1};
    SaNtfHandleT handle = 0;
    if (saNtfInitialize(&handle, nullptr, &version) != SA_AIS_OK) {
        throw std::runtime_error("the NTF service refuses a session");
    }
    return handle;
}

std::string makeLoadModule(int entries) {
    const std::string folder = std::getenv("VELK_MANIFEST_DIR");
    std::ofstream(folder + "/central.xml")
        << R"(<loadModules><loadModule productNumber="CXC1" revision="R1A">)"
        << R"(<file tag="alarm_mapping" path="mapping.xml"/></loadModule></loadModules>)";
    std::ofstream mappings(folder + "/mapping.xml");
    mappings << "<mappings>\n";
    for (int faultId = 1; faultId <= entries; ++faultId) {
        mappings << "    <mapping faultid=\"" << faultId << "\" minor_type_id=\""
                 << 0x8C0000 + faultId << "\" managed_object_class=\"board\"/>\n";
    }
    mappings << "</mappings>\n";
    setenv("ZBN_NO", "CXC1", 1);
    setenv("ZBN_REV", "R1A", 1);
    return folder + "/mapping.xml";
}

} // namespace bench
