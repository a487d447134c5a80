#include <string>

#include <gtest/gtest.h>
#include <ruxa/zum2/v1/CorrelationApi.h>

#include "support/FailingMalloc.h"
#include "support/TestSupport.h"

namespace {

using ruxa::zum2::v1::getAPI;

constexpr char kSystem[] = "0f4c2a1e-9b7d-4c3a-8e21-5d6f7a8b9c0d";

struct Derivation {
    const char* name;
    const char* systemUuid; // null: SYSTEM_UUID is not set
    std::uint32_t eventId;
    const char* expected; // python3: uuid.uuid5(uuid.UUID(namespace), "event:<eventId>")
};

class Correlation : public testing::TestWithParam<Derivation> {};

TEST_P(Correlation, DerivesTheUuidOfTheEventWithinTheSystem) {
    const ScopedEnvironment system("SYSTEM_UUID", GetParam().systemUuid);
    std::string uuid = "old";
    EXPECT_TRUE(getAPI()->getDerivedCorrelationUUID(GetParam().eventId, uuid));
    EXPECT_EQ(uuid, GetParam().expected);
}

constexpr char kCommonOf4711[] = "4a6f3bdb-6132-59ae-aee1-7732b3de0f0b";

INSTANTIATE_TEST_SUITE_P(
    Events, Correlation,
    testing::Values(
        Derivation{"OfThisSystem", kSystem, 4711, "c382ac6d-3e17-5d88-b4f9-27e447ac7a8b"},
        Derivation{"OfThisSystemInCapitals", "0F4C2A1E-9B7D-4C3A-8E21-5D6F7A8B9C0D", 4711,
                   "c382ac6d-3e17-5d88-b4f9-27e447ac7a8b"},
        Derivation{"OfAnotherSystem", "ffffffff-ffff-4fff-bfff-ffffffffffff", 4711,
                   "767130df-d956-5e95-a4a3-62c2691a309f"},
        Derivation{"Smallest", kSystem, 1, "c7e6760b-ed66-5836-ba96-d8ce4da868f3"},
        Derivation{"Largest", kSystem, 4294967295, "2be91ab4-219d-58f1-aa1b-e927688194a9"},
        Derivation{"SystemUnset", nullptr, 4711, kCommonOf4711},
        Derivation{"SystemEmpty", "", 4711, kCommonOf4711},
        Derivation{"SystemIsNoUuid", "system-1", 4711, kCommonOf4711},
        Derivation{"SystemTooLong", "0f4c2a1e-9b7d-4c3a-8e21-5d6f7a8b9c0d0", 4711, kCommonOf4711},
        Derivation{"SystemWithABadDigit", "0f4c2a1e-9b7d-4c3a-8e21-5d6f7a8b9c0g", 4711,
                   kCommonOf4711}),
    [](const auto& row) { return row.param.name; });

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
