#include <algorithm>
#include <functional>
#include <new>
#include <numeric>
#include <random>

#include "Operations.h"
#include "mapping/MappingTable.h"
#include "support/FailingMalloc.h"

namespace {

const std::string kUuid = "e7a6d7a4-1f0e-4c43-9c9c-3f8e2a1b0c4d";

/// A client whose load module brings a mapping file, and every allocation of whose calls fails
/// once.
class AllocationTest : public LibraryTest {
protected:
    void SetUp() override {
        LibraryTest::SetUp();
        platform().loadModules["local"] = {
            {kUuid, kText, {{"alarm_mapping", m_file.path()}, {"other_files", "/else"}}}};
    }

    enum class Leaks { None, OfTinyXml }; // which loses what it was building
    enum class Failures { Reported, Hidden };

    /// Lets the first, second, ... allocation of `call` fail, alone and with all that follow, until
    /// it completes without a failure.
    /// `prepare` comes before each call; `giveBack` afterwards and ends what the call began, so
    /// that nothing of it may be left. A reported failure reaches the caller.
    static void failEachAllocation(const std::function<void()>& prepare,
                                   const std::function<void()>& call,
                                   const std::function<void()>& giveBack, Leaks leaks = Leaks::None,
                                   Failures failures = Failures::Reported) {
        const auto callFailingAt = [&](long position, bool lasting) {
            prepare();
            bool told = false;
            platform().events.clear();
            startFailingMalloc(position, lasting, PlatformCode::isRunning);
            try {
                call();
            } catch (const std::bad_alloc&) {
                told = true;
            }
            const bool failed = stopFailingMalloc();
            platform().sent.clear();
            giveBack();
            EXPECT_EQ(told, failed && failures == Failures::Reported);
            EXPECT_EQ(platform().openNotifications, 0);
            EXPECT_EQ(platform().openLoadModuleLists, 0);
            platform().events.clear();
            platform().sent.clear();
            platform().results.clear();
            return failed;
        };
        constexpr long kNever = 1'000'000'000;
        callFailingAt(kNever, false); // makes what stays for good
        const auto files = entriesIn("/proc/self/fd");
        long position = 1;
        for (bool failed = true; failed && !HasFailure(); ++position) {
            SCOPED_TRACE("allocation " + std::to_string(position));
            const long before = liveBlocks();
            failed = callFailingAt(position, true);
            EXPECT_EQ(callFailingAt(position, false), failed);
            EXPECT_TRUE(liveBlocks() == before || leaks != Leaks::None);
            EXPECT_EQ(entriesIn("/proc/self/fd"), files);
        }
        EXPECT_GT(position, 2); // one that failed, and the last, which did not
    }

    static std::shared_ptr<FaultManagementI> newAdapter(int generation) {
        if (generation == 2) {
            return v2::getFmiFactory()->createFaultManagement();
        }
        return std::shared_ptr<FaultManagementI>(v1::getFmiFactory()->createFaultManagement());
    }

    static void expectThatAnAlarmPasses(FaultManagementI& client) {
        client.ceaseAlarm(kUnitObject, 7, kName);
        EXPECT_EQ(platform().sent.size(), 1U);
    }

    static void nothing() {}

    ScopedEnvironment m_number{"ZBN_NO", kUuid.c_str()};
    ScopedEnvironment m_rev{"ZBN_REV", kText.c_str()};
    ScopedEnvironment m_uuid{"SYSTEM_UUID", kUuid.c_str()};
    ScopedEnvironment m_name{"COMPUTE_NAME", kUuid.c_str()};
    TemporaryFile m_file{"<?xml version=\"1.0\"?><!-- a comment of the file --><mappings>text\n"
                         "<mapping faultid=\"7\" minor_type_id=\"65538\" managed_object_class=\"" +
                         kClass + ", AnotherManagedObjectClass\"/><mapping faultid=\"x\"/>" +
                         "<mapping faultid=\"8\" minor_type_id=\"1\"><!-- --></mapping>" +
                         "</mappings>"};
};

TEST_F(AllocationTest, OfAnAlarmFailsAndReachesTheCallerAndNothingElse) {
    std::vector<Operation> operations(std::begin(kOperations), std::end(kOperations));
    operations.push_back({"Cease", [](auto& client) { client.ceaseAlarm(kUnitObject, 7, kName); },
                          "", "", "", nullptr});
    for (const Operation& operation : operations) {
        SCOPED_TRACE(operation.name);
        for (const int generation : {1, 2}) {
            const auto client = newAdapter(generation);
            const std::size_t registrations = platform().traceObjects.size();
            failEachAllocation(
                nothing, [&] { operation.call(*client); },
                [&] {
                    operation.call(*client);
                    EXPECT_EQ(platform().sent.size(), 1U);
                    EXPECT_EQ(platform().traceObjects.size(), registrations);
                });
        }
    }
}

TEST_F(AllocationTest, GettingAFactoryFailsAndLeavesNothing) {
    const auto freeAll = [] {
        v1::freeFmiFactory();
        v2::freeFmiFactory();
        EXPECT_TRUE(platform().holdsNothing());
    };
    const auto modules = platform().loadModules;
    for (const int generation : {1, 2}) {
        const auto get = [=] {
            generation == 1 ? static_cast<void>(v1::getFmiFactory())
                            : static_cast<void>(v2::getFmiFactory());
        };
        const auto giveBack = [&] {
            freeAll();
            platform().loadModules = modules;
            expectThatAnAlarmPasses(*newAdapter(generation));
            freeAll();
        };
        failEachAllocation(nothing, get, giveBack, Leaks::OfTinyXml);
        failEachAllocation([] { platform().loadModules.clear(); }, get, giveBack);
    }
}

TEST_F(AllocationTest, AnAdapterIsMadeWholeOrNotAtAll) {
    v1::getFmiFactory();
    v2::getFmiFactory();
    std::shared_ptr<FaultManagementI> client;
    const auto forget = [&] {
        client.reset();
        EXPECT_EQ(platform().traceObjects.size(), 2U); // the two maps
        EXPECT_TRUE(platform().sessions.empty());
    };
    // An open session, and one that the service refuses, with its trace.
    for (const SaAisErrorT result : {SA_AIS_OK, SA_AIS_ERR_LIBRARY}) {
        for (const int generation : {1, 2}) {
            failEachAllocation([&] { platform().results["initialize"] = {result}; },
                               [&] { client = newAdapter(generation); }, forget);
        }
    }
}

TEST_F(AllocationTest, AnAdaptersMemoryIsTakenWhenItsSessionIsOpen) {
    v1::getFmiFactory();
    v2::getFmiFactory();
    platform().onCall["initialize"] = [] { startFailingMalloc(1, false, PlatformCode::isRunning); };
    for (const int generation : {1, 2}) {
        EXPECT_THROW(newAdapter(generation), std::bad_alloc);
        EXPECT_TRUE(stopFailingMalloc());
        const Texts& events = platform().events;
        const auto opened = std::find(events.begin(), events.end(), "initialize A 1 1 null");
        ASSERT_GE(events.end() - opened, 2);
        EXPECT_EQ(opened[1], "finalize"); // and no step of an adapter in between
        platform().events.clear();
    }
}

TEST_F(AllocationTest, DestructionReleasesEverythingAndThrowsNothing) {
    std::shared_ptr<FaultManagementI> clients[2];
    failEachAllocation(
        [&] {
            clients[0] = newAdapter(1);
            clients[1] = newAdapter(2);
            platform().results["finalize"] = {SA_AIS_ERR_LIBRARY, SA_AIS_ERR_LIBRARY};
        },
        [&] {
            clients[0].reset();
            clients[1].reset();
            v1::freeFmiFactory();
            v2::freeFmiFactory();
        },
        [] { EXPECT_TRUE(platform().holdsNothing()); }, Leaks::None, Failures::Hidden);
}

TEST_F(AllocationTest, AMappingIsSetWholeOrNotAtAll) {
    void (*const rows[])(v1::ConfigurationI&) = {
        [](auto& table) { table.setMapping(9, 1, kClass); },
        [](auto& table) { table.setMapping(9, 1); },
        [](auto& table) { table.configurationFile("any"); }};       // the built-in ones
    v1::getFmiFactory()->getConfiguration()->configurationFile(""); // makes what the thread keeps
    for (const auto& set : rows) {
        SCOPED_TRACE("row " + std::to_string(&set - rows));
        const auto change = [&] { set(*v1::getFmiFactory()->getConfiguration()); };
        failEachAllocation([] { v1::getFmiFactory(); }, change,
                           [&] {
                               change();
                               expectThatAnAlarmPasses(*newAdapter(1));
                               v1::freeFmiFactory();
                           });
    }
}

TEST(MappingTable, HoldsEachKeyOnceInOrderHoweverItIsFilledAndWhateverFails) {
    constexpr std::uint32_t kMappings = 2000; // several blocks
    std::vector<std::uint32_t> ascending(kMappings);
    std::iota(ascending.begin(), ascending.end(), 0U);
    const std::vector<std::uint32_t> descending(ascending.rbegin(), ascending.rend());
    std::vector<std::uint32_t> shuffled = ascending;
    std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(1));
    const auto faultId = [](std::uint32_t i) { return i / 3 * 6000000U; }; // over all 32 bits
    const auto moClass = [](std::uint32_t i) { return kClass + std::string(i % 3, 'A'); };
    for (const auto& order : {ascending, descending, shuffled}) {
        dolq::MappingTable table;
        std::uint32_t set = 0;
        for (const std::uint32_t round : {0U, 1U}) { // the second replaces
            for (const std::uint32_t i : order) {
                bool failed = true;
                for (long position = 1; failed; ++position) {
                    startFailingMalloc(position);
                    try {
                        table.set(faultId(i), i + round, moClass(i));
                    } catch (const std::bad_alloc&) {
                    }
                    failed = stopFailingMalloc();
                    set += failed ? 0 : 1;
                    std::size_t entries = 0;
                    for (const auto& block : table.blocks()) {
                        ASSERT_TRUE(!block.empty() && block.size() <= 512);
                        entries += block.size();
                    }
                    ASSERT_EQ(entries, std::min(set, kMappings));
                }
            }
            std::uint32_t held = 0;
            for (const auto& block : table.blocks()) {
                for (const auto& entry : block) {
                    EXPECT_EQ(entry.faultId, faultId(held));
                    EXPECT_EQ(entry.moClass, moClass(held));
                    EXPECT_EQ(entry.minorType, held + round);
                    ++held;
                }
            }
            EXPECT_TRUE(order != ascending || table.blocks().size() == 4); // all of them full
        }
    }
}

} // namespace
