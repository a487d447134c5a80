#include "Operations.h"

#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <stdexcept>
#include <string>

#include <ruxa/zum2/v1/CorrelationApi.h>

#include "DirectClient.h"
#include "ruxa/fm/dolq/v1/FmiFactory.h"

namespace bench {

namespace {

constexpr std::uint32_t kTableSize = 50;
constexpr std::uint32_t kFaultId = kTableSize;
constexpr std::uint32_t kMinorType = 0x8C0001;
constexpr std::uint32_t kEventIds[] = {4711, 4712};
constexpr std::uint32_t kSeverity = ruxa::fm::fmi::v1::PerceivedSeverityMajor;
constexpr std::uint32_t kGroup = ruxa::fm::fmi::v1::ProgramGroupLrat;

#define SYSTEM "0b5f7c52-6e0c-4b8e-9a43-2f1d8c7e6a90"
#define COMPUTE "compute-1"
#define UUID_1 "7d1e9a04-53c2-5f0b-8c6e-1b2f4a9d3e77"
#define UUID_2 "c26b8f11-0d47-5a3c-9e85-6f7a2d4b1c08"
#define IDENTITY "CI={\"C\": [{\"I\": \"" SYSTEM "\",\"n\": \"" COMPUTE "\"}],"

// What the client gives the library.
const std::string kObject = "managedElement=1,equipment=1,board=3";
const std::string kFaultName = "BoardOverheated";
const std::string kText = "The board's temperature is above its limit";
const std::vector<std::string> kInfo = {"temperature=91, limit=85", "sensor=U17, fan=2 of 3"};
const std::string kSystem = SYSTEM;
const std::string kCompute = COMPUTE;
const std::string kUuid = UUID_1;
const std::vector<std::string> kUuids = {UUID_1, UUID_2};
const std::vector<std::uint32_t> kEvents(std::begin(kEventIds), std::end(kEventIds));
const std::vector<std::uint32_t> kNoEvents;

// The combined raises take the identity from the environment, set before any thread reads it.
[[maybe_unused]] const int kIdentitySet =
    setenv("SYSTEM_UUID", SYSTEM, 1) | setenv("COMPUTE_NAME", COMPUTE, 1);

// What the direct client has at hand.
constexpr char kPrimaryInfo[] = IDENTITY "\"P\": \"" UUID_1 "\"}";
constexpr char kSecondaryInfo[] = IDENTITY "\"S\": [\"" UUID_1 "\",\"" UUID_2 "\"]}";
constexpr char kGroupName[] = "lratPgGrp";

/// A client with event ids has to ask the correlation service as well, and to write the text.
std::string derived(std::uint32_t eventId) {
    std::string uuid;
    ruxa::zum2::v1::getAPI()->getDerivedCorrelationUUID(eventId, uuid);
    return uuid;
}

SaAisErrorT send(SaNtfHandleT session, const char* correlation, const char* programGroup) {
    const char* const info[] = {correlation, kInfo[0].c_str(), kInfo[1].c_str()};
    const DirectAlarm alarm = {kObject.c_str(),
                               SA_NTF_SEVERITY_MAJOR,
                               kMinorType >> 16,
                               kMinorType & 0xFFFF,
                               kText.c_str(),
                               info,
                               static_cast<SaUint16T>(std::size(info)),
                               programGroup};
    return sendDirectly(session, &alarm);
}

SaAisErrorT sendPrimaryOfId(SaNtfHandleT session, const char* programGroup) {
    char info[256];
    std::snprintf(info, sizeof info, IDENTITY "\"P\": \"%s\"}", derived(kEventIds[0]).c_str());
    return send(session, info, programGroup);
}

SaAisErrorT sendSecondaryOfIds(SaNtfHandleT session, const char* programGroup) {
    char info[256];
    std::snprintf(info, sizeof info, IDENTITY "\"S\": [\"%s\",\"%s\"]}",
                  derived(kEventIds[0]).c_str(), derived(kEventIds[1]).c_str());
    return send(session, info, programGroup);
}

SaAisErrorT sendCease(SaNtfHandleT session) {
    const DirectAlarm alarm = {kObject.c_str(),
                               SA_NTF_SEVERITY_CLEARED,
                               kMinorType >> 16,
                               kMinorType & 0xFFFF,
                               "",
                               nullptr,
                               0,
                               nullptr};
    return sendDirectly(session, &alarm);
}

} // namespace

const std::vector<Operation>& operations() {
    static const std::vector<Operation> kOperations = {
        {"raisePrimaryAlarm/uuid",
         [](FaultManagementI& adapter) {
             adapter.raisePrimaryAlarm(kObject, kFaultId, kFaultName, kText, kInfo, kSeverity,
                                       kUuid, kSystem, kCompute);
         },
         [](SaNtfHandleT session) { return send(session, kPrimaryInfo, nullptr); }},
        {"raisePrimaryAlarm/uuid/group",
         [](FaultManagementI& adapter) {
             adapter.raisePrimaryAlarm(kObject, kFaultId, kFaultName, kText, kInfo, kSeverity,
                                       kUuid, kSystem, kCompute, kGroup);
         },
         [](SaNtfHandleT session) { return send(session, kPrimaryInfo, kGroupName); }},
        {"raisePrimaryAlarm/id",
         [](FaultManagementI& adapter) {
             adapter.raisePrimaryAlarm(kObject, kFaultId, kFaultName, kText, kInfo, kSeverity,
                                       kEventIds[0], kSystem, kCompute);
         },
         [](SaNtfHandleT session) { return sendPrimaryOfId(session, nullptr); }},
        {"raisePrimaryAlarm/id/group",
         [](FaultManagementI& adapter) {
             adapter.raisePrimaryAlarm(kObject, kFaultId, kFaultName, kText, kInfo, kSeverity,
                                       kEventIds[0], kSystem, kCompute, kGroup);
         },
         [](SaNtfHandleT session) { return sendPrimaryOfId(session, kGroupName); }},
        {"raiseSecondaryAlarm/uuids",
         [](FaultManagementI& adapter) {
             adapter.raiseSecondaryAlarm(kObject, kFaultId, kFaultName, kText, kInfo, kSeverity,
                                         kSystem, kCompute, kUuids);
         },
         [](SaNtfHandleT session) { return send(session, kSecondaryInfo, nullptr); }},
        {"raiseSecondaryAlarm/uuids/group",
         [](FaultManagementI& adapter) {
             adapter.raiseSecondaryAlarm(kObject, kFaultId, kFaultName, kText, kInfo, kSeverity,
                                         kSystem, kCompute, kUuids, kGroup);
         },
         [](SaNtfHandleT session) { return send(session, kSecondaryInfo, kGroupName); }},
        {"raiseSecondaryAlarm/ids",
         [](FaultManagementI& adapter) {
             adapter.raiseSecondaryAlarm(kObject, kFaultId, kFaultName, kText, kInfo, kSeverity,
                                         kSystem, kCompute, kEvents);
         },
         [](SaNtfHandleT session) { return sendSecondaryOfIds(session, nullptr); }},
        {"raiseSecondaryAlarm/ids/group",
         [](FaultManagementI& adapter) {
             adapter.raiseSecondaryAlarm(kObject, kFaultId, kFaultName, kText, kInfo, kSeverity,
                                         kSystem, kCompute, kEvents, kGroup);
         },
         [](SaNtfHandleT session) { return sendSecondaryOfIds(session, kGroupName); }},
        {"raiseAlarm/primary",
         [](FaultManagementI& adapter) {
             adapter.raiseAlarm(kObject, kFaultId, kFaultName, kText, kInfo, kSeverity,
                                kEventIds[0], kNoEvents);
         },
         [](SaNtfHandleT session) { return sendPrimaryOfId(session, nullptr); }},
        {"raiseAlarm/secondary/group",
         [](FaultManagementI& adapter) {
             adapter.raiseAlarm(kObject, kFaultId, kFaultName, kText, kInfo, kSeverity, 0, kEvents,
                                kGroup);
         },
         [](SaNtfHandleT session) { return sendSecondaryOfIds(session, kGroupName); }},
        {"ceaseAlarm",
         [](FaultManagementI& adapter) { adapter.ceaseAlarm(kObject, kFaultId, kFaultName); },
         sendCease},
    };
    return kOperations;
}

const Operation& primaryAlarm() { return operations().front(); }

std::unique_ptr<FaultManagementI> makeAdapter() {
    auto* const factory = ruxa::fm::dolq::v1::getFmiFactory();
    for (std::uint32_t faultId = 1; faultId <= kTableSize; ++faultId) {
        factory->getConfiguration()->setMapping(faultId, kMinorType, "board");
    }
    return std::unique_ptr<FaultManagementI>(factory->createFaultManagement());
}

DirectSession::DirectSession() {
    SaVersionT version = {'A', 1, 1};
    if (saNtfInitialize(&m_handle, nullptr, &version) != SA_AIS_OK) {
        throw std::runtime_error("the NTF service refuses a session");
    }
}

} // namespace bench
