#include <string>

#include <gtest/gtest.h>
#include <ruxa/zum2/v1/CorrelationApi.h>

#include "support/FailingMalloc.h"
#include "support/SetUserId.h"
#include "support/TestSupport.h"

namespace {

using ruxa::zum2::v1::getAPI;

constexpr char kSystem[] = "0f4c2a1e-9b7d-4c3a-8e21-5d6f7a8b9c0d";

constexpr char kThis[] = "c382ac6d-3e17-5d88-b4f9-27e447ac7a8b";
constexpr char kCommon[] = "4a6f3bdb-6132-59ae-aee1-7732b3de0f0b";

TEST(CorrelationApi, DerivesTheUuidOfTheEventWithinTheSystem) {
    const struct {
        const char* systemUuid; // null: SYSTEM_UUID is not set
        std::uint32_t eventId;
        const char* expected; // python3: uuid.uuid5(uuid.UUID(namespace), "event:<eventId>")
    } rows[] = {
        {kSystem, 4711, kThis},
        {"0F4C2A1E-9B7D-4C3A-8E21-5D6F7A8B9C0D", 4711, kThis},
        {"ffffffff-ffff-4fff-bfff-ffffffffffff", 4711, "767130df-d956-5e95-a4a3-62c2691a309f"},
        {kSystem, 1, "c7e6760b-ed66-5836-ba96-d8ce4da868f3"},
        {kSystem, 4294967295, "2be91ab4-219d-58f1-aa1b-e927688194a9"},
        {nullptr, 4711, kCommon},
        {"", 4711, kCommon},
        {"system-1", 4711, kCommon},
        {"0f4c2a1e-9b7d-4c3a-8e21-5d6f7a8b9c0d0", 4711, kCommon},
        {"0f4c2a1e-9b7d-4c3a-8e21-5d6f7a8b9c0g", 4711, kCommon},
    };
    for (const auto& row : rows) {
        const ScopedEnvironment system("SYSTEM_UUID", row.systemUuid);
        std::string uuid = "old";
        EXPECT_TRUE(getAPI()->getDerivedCorrelationUUID(row.eventId, uuid));
        EXPECT_EQ(uuid, row.expected);
    }
    const ScopedEnvironment system("SYSTEM_UUID", kSystem);
    runsWithOthersRights = true;
    std::string uuid;
    EXPECT_TRUE(getAPI()->getDerivedCorrelationUUID(4711, uuid));
    EXPECT_EQ(uuid, kCommon);
    runsWithOthersRights = false;
}

TEST(CorrelationApi, WithoutAnEventOrMemoryThereIsNoUuidAndTheTextIsLeftAlone) {
    std::string uuid = "old";
    EXPECT_FALSE(getAPI()->getDerivedCorrelationUUID(0, uuid));
    EXPECT_EQ(uuid, "old");
    bool derived = false;
    const auto derive = [&] { derived = getAPI()->getDerivedCorrelationUUID(1, uuid); };
    EXPECT_TRUE(withFailingMalloc(1, derive));
    EXPECT_FALSE(derived);
    EXPECT_EQ(uuid, "old");
}

} // namespace
