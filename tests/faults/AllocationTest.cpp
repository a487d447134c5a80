#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <functional>
#include <iterator>
#include <new>
#include <stdexcept>

#include <dirent.h>
#include <dlfcn.h>

#include "FailingHeap.h"
#include "Operations.h"
#include "mapping/MappingTable.h"

namespace {

bool streamsFail = false;

} // namespace

/// In front of the C library's, whose memory no `new` takes.
extern "C" std::FILE* fmemopen(void* buffer, std::size_t size, const char* mode) noexcept {
    using Function = std::FILE* (*)(void*, std::size_t, const char*);
    static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "fmemopen"));
    if (streamsFail) {
        errno = ENOMEM;
        return nullptr;
    }
    return real(buffer, size, mode);
}

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

    static std::size_t openFiles() {
        DIR* const folder = opendir("/proc/self/fd");
        std::size_t count = 0;
        while (readdir(folder) != nullptr) {
            ++count;
        }
        closedir(folder);
        return count;
    }

    /// Lets the first, second, ... allocation of `call` fail, until it completes without a failure.
    /// `prepare` comes before each call; `giveBack` afterwards and ends what the call began, so
    /// that nothing of it may be left. `reported`: the failure has to reach the caller, or be
    /// traced for the one file that lacked the memory.
    static void failEachAllocation(const std::function<void()>& prepare,
                                   const std::function<void()>& call,
                                   const std::function<void()>& giveBack, bool reported = true) {
        const std::size_t files = openFiles();
        std::size_t position = 1;
        for (bool failed = true; failed; ++position) {
            SCOPED_TRACE("allocation " + std::to_string(position));
            prepare();
            bool told = false;
            platform().events.clear();
            failing_heap::failAt(position);
            try {
                call();
            } catch (const std::bad_alloc&) {
                told = true;
            }
            failed = failing_heap::stop();
            told = told || filesNotLoaded() == 1;
            giveBack();
            EXPECT_EQ(told, failed && reported);
            if (!failing_heap::failedInTinyXml()) { // it loses what it was building
                EXPECT_EQ(failing_heap::leakedBlocks(), 0U);
            }
            failing_heap::releaseLeakedBlocks();
            EXPECT_EQ(openFiles(), files);
            EXPECT_EQ(platform().openNotifications, 0);
            EXPECT_EQ(platform().openLoadModuleLists, 0);
            if (HasFailure()) {
                break;
            }
        }
        RecordProperty("allocations", std::to_string(position - 2));
        EXPECT_GT(position, 2U); // one that failed, and the last, which did not
    }

    static std::ptrdiff_t filesNotLoaded() {
        const auto& events = platform().events;
        return std::count_if(events.begin(), events.end(), [](const std::string& event) {
            return event.find("Could not load XML file") != std::string::npos;
        });
    }

    static void expectThatAlarmsPass(FaultManagementI& client) {
        platform().sent.clear();
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

class AlarmAllocationTest : public AllocationTest, public testing::WithParamInterface<Operation> {};

TEST_P(AlarmAllocationTest, AFailureReachesTheCallerAndNothingElse) {
    const std::unique_ptr<FaultManagementI> client(v1::getFmiFactory()->createFaultManagement());
    const auto clientV2 = v2::getFmiFactory()->createFaultManagement();
    for (FaultManagementI* const each : {client.get(), clientV2.get()}) {
        const std::size_t registrations = platform().traceObjects.size();
        failEachAllocation(
            nothing, [&] { GetParam().call(*each); },
            [&] {
                platform().sent.clear();
                GetParam().call(*each);
                EXPECT_EQ(platform().sent.size(), 1U);
                EXPECT_EQ(platform().traceObjects.size(), registrations);
            });
    }
}

const Operation kCease{
    "Cease", [](auto& client) { client.ceaseAlarm(kUnitObject, 7, kName); }, "", "", "", nullptr};
const auto nameOf = [](const auto& row) { return std::string(row.param.name); };
INSTANTIATE_TEST_SUITE_P(, AlarmAllocationTest, testing::ValuesIn(kOperations), nameOf);
INSTANTIATE_TEST_SUITE_P(Other, AlarmAllocationTest, testing::Values(kCease), nameOf);

TEST_F(AllocationTest, GettingAFactoryFailsAndLeavesNothing) {
    failEachAllocation(
        nothing, [] { v1::getFmiFactory(); },
        [] {
            v1::freeFmiFactory();
            EXPECT_TRUE(platform().holdsNothing());
            std::unique_ptr<FaultManagementI> client(v1::getFmiFactory()->createFaultManagement());
            expectThatAlarmsPass(*client);
            client.reset();
            v1::freeFmiFactory();
        });
}

TEST_F(AllocationTest, GettingAV2FactoryFailsAndLeavesNothing) {
    failEachAllocation(
        nothing, [] { v2::getFmiFactory(); },
        [] {
            v2::freeFmiFactory();
            expectThatAlarmsPass(*v2::getFmiFactory()->createFaultManagement());
            v2::freeFmiFactory();
            EXPECT_TRUE(platform().holdsNothing());
        });
}

TEST_F(AllocationTest, AFileWithoutMemoryForItsStreamIsTracedAndNotRead) {
    const std::size_t files = openFiles();
    streamsFail = true;
    v2::getFmiFactory();
    streamsFail = false;
    EXPECT_EQ(openFiles(), files);
    EXPECT_EQ(filesNotLoaded(), 1);
    v2::freeFmiFactory();
    expectThatAlarmsPass(*v2::getFmiFactory()->createFaultManagement());
}

TEST_F(AllocationTest, AnAdapterIsMadeWholeOrNotAtAll) {
    v1::getFmiFactory();
    v2::getFmiFactory();
    FaultManagementI* client = nullptr;
    std::shared_ptr<FaultManagementI> clientV2;
    const auto expectOnlyTheMaps = [] {
        EXPECT_EQ(platform().traceObjects.size(), 2U);
        EXPECT_TRUE(platform().sessions.empty());
    };
    const auto forget = [&] {
        delete client;
        client = nullptr;
        expectOnlyTheMaps();
    };
    const auto forgetV2 = [&] {
        clientV2.reset();
        expectOnlyTheMaps();
    };
    // An open session, and one that the service refuses, with its trace.
    for (const SaAisErrorT result : {SA_AIS_OK, SA_AIS_ERR_LIBRARY}) {
        const auto prepare = [&] { platform().results["initialize"] = {result}; };
        failEachAllocation(
            prepare, [&] { client = v1::getFmiFactory()->createFaultManagement(); }, forget);
        failEachAllocation(
            prepare, [&] { clientV2 = v2::getFmiFactory()->createFaultManagement(); }, forgetV2);
    }
}

TEST_F(AllocationTest, AnAdaptersMemoryIsTakenWhenItsSessionIsOpen) {
    v1::getFmiFactory();
    v2::getFmiFactory();
    platform().onCall["initialize"] = [] { failing_heap::failAt(0); };
    const FaultManagementI* const client = v1::getFmiFactory()->createFaultManagement();
    failing_heap::stop();
    EXPECT_EQ(failing_heap::leakedBlocks(), 1U); // taken since the session was asked for, and kept
    delete client;
    const auto clientV2 = v2::getFmiFactory()->createFaultManagement();
    failing_heap::stop();
    EXPECT_EQ(failing_heap::leakedBlocks(), 1U);
}

TEST_F(AllocationTest, DestructionReleasesEverythingAndThrowsNothing) {
    FaultManagementI* client = nullptr;
    std::shared_ptr<FaultManagementI> clientV2;
    failEachAllocation(
        [&] {
            client = v1::getFmiFactory()->createFaultManagement();
            clientV2 = v2::getFmiFactory()->createFaultManagement();
            platform().results["finalize"] = {SA_AIS_ERR_LIBRARY, SA_AIS_ERR_LIBRARY};
        },
        [&] {
            delete client;
            clientV2.reset();
            v1::freeFmiFactory();
            v2::freeFmiFactory();
        },
        [] { EXPECT_TRUE(platform().holdsNothing()); }, false);
}

TEST_F(AllocationTest, ABackendThatThrowsInADestructorEndsTheProcess) {
    const auto destroyAdapter = [] {
        auto client = v2::getFmiFactory()->createFaultManagement();
        platform().onCall["deregisterTraceObject"] = [] { throw std::runtime_error("backend"); };
        client.reset();
    };
    EXPECT_DEATH(destroyAdapter(), "backend");
}

TEST_F(AllocationTest, AMappingIsSetWholeOrNotAtAll) {
    const std::pair<const char*, void (*)(v1::ConfigurationI&)> rows[] = {
        {"with a class", [](auto& table) { table.setMapping(9, 1, kClass); }},
        {"without a class", [](auto& table) { table.setMapping(9, 1); }},
        {"the built-in ones", [](auto& table) { table.configurationFile("any"); }}};
    v1::getFmiFactory()->getConfiguration()->configurationFile(""); // makes what the thread keeps
    for (const auto& [name, set] : rows) {
        SCOPED_TRACE(name);
        failEachAllocation([] { v1::getFmiFactory(); },
                           [&, change = set] { change(*v1::getFmiFactory()->getConfiguration()); },
                           [&, change = set] {
                               change(*v1::getFmiFactory()->getConfiguration());
                               const auto client = std::unique_ptr<FaultManagementI>(
                                   v1::getFmiFactory()->createFaultManagement());
                               expectThatAlarmsPass(*client);
                               v1::freeFmiFactory();
                           });
        if (HasFailure()) {
            break;
        }
    }
}

TEST(MappingTableAllocation, ATableKeepsWhatItHoldsAndBeginsNoEmptyBlock) {
    constexpr std::uint32_t kMappings = 1100; // several blocks
    for (const bool ascending : {true, false}) {
        dolq::MappingTable table;
        for (std::uint32_t held = 0; held < kMappings;) {
            bool failed = true;
            for (std::size_t position = 1; failed; ++position) {
                failing_heap::failAt(position);
                try {
                    table.set(ascending ? held : kMappings - held, 1, kClass);
                } catch (const std::bad_alloc&) {
                }
                failed = failing_heap::stop();
                held += failed ? 0 : 1;
                std::size_t entries = 0;
                for (const auto& block : table.blocks()) {
                    ASSERT_FALSE(block.empty());
                    entries += block.size();
                }
                ASSERT_EQ(entries, held);
            }
        }
    }
}

} // namespace
