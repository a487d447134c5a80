#include <cstdio>
#include <new>

#include <ruxa/zum2/v1/CorrelationApi.h>
#include <uuid/uuid.h>

#include "common/Environment.h"

namespace ruxa::zum2::v1 {

namespace {

/// The namespace of systems that have no UUID of their own. It must never change: the processes of
/// such a system agree on an event's UUID only as long as they share it.
constexpr char kCommonNamespace[] = "3d62c8cf-a42b-431b-aa61-e0a12f7393d0";

void readNamespace(uuid_t& systemNamespace) {
    if (uuid_parse(common::trustedEnvironment("SYSTEM_UUID"), systemNamespace) != 0) {
        uuid_parse(kCommonNamespace, systemNamespace);
    }
}

class DerivedUuids final : public CorrelationApi {
public:
    bool getDerivedCorrelationUUID(std::uint32_t eventId, std::string& correlationUUID) override {
        if (eventId == 0) {
            return false;
        }
        uuid_t systemNamespace;
        readNamespace(systemNamespace);
        char name[sizeof "event:4294967295"];
        const int length = std::snprintf(name, sizeof name, "event:%u", eventId);
        uuid_t derived;
        uuid_generate_sha1(derived, systemNamespace, name, static_cast<std::size_t>(length));
        char text[UUID_STR_LEN];
        uuid_unparse_lower(derived, text);
        try {
            correlationUUID = text;
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }
};

/// Never destroyed: other libraries raise alarms from their static destructors.
alignas(DerivedUuids) unsigned char storage[sizeof(DerivedUuids)];
CorrelationApi* const kApi = new (storage) DerivedUuids;

} // namespace

CorrelationApi* getAPI() { return kApi; }

} // namespace ruxa::zum2::v1
