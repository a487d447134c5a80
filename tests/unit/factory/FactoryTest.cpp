#include <stdexcept>
#include <thread>

#include "LibraryTest.h"

namespace {

/// A node on which the program's load module brings one mapping of fault 7.
class FactoryTest : public LibraryTest {
protected:
    void SetUp() override {
        LibraryTest::SetUp();
        platform().loadModules["local"] = {{"CXC1", "R1A", {{"alarm_mapping", m_file.path()}}}};
    }

    std::size_t runs() const {
        const Texts calls = platform().calls();
        return static_cast<std::size_t>(
            std::count(calls.begin(), calls.end(), "Velk_get_lms central"));
    }

    TemporaryFile m_file{
        R"(<m><mapping faultid="7" minor_type_id="65538" managed_object_class="Unit"/></m>)"};
    ScopedEnvironment m_number{"ZBN_NO", "CXC1"};
    ScopedEnvironment m_rev{"ZBN_REV", "R1A"};
};

TEST_F(FactoryTest, EachGenerationAndThreadHasItsOwnWhichIsConfiguredOnce) {
    v1::freeFmiFactory(); // none yet
    v2::freeFmiFactory();
    EXPECT_EQ(platform().events, Texts{});
    v1::FmiFactory* const first = v1::getFmiFactory();
    EXPECT_EQ(v1::getFmiFactory(), first);
    EXPECT_EQ(runs(), 1U);
    v2::FmiFactory* const second = v2::getFmiFactory();
    EXPECT_EQ(v2::getFmiFactory(), second);
    EXPECT_EQ(runs(), 2U);

    v1::ConfigurationI* const configuration = first->getConfiguration();
    EXPECT_EQ(first->getConfiguration(), configuration);
    configuration->setMapping(8, 1, "Unit"); // of this v1 factory alone
    const std::shared_ptr<FaultManagementI> ofFirst(first->createFaultManagement());
    std::thread([&] {
        EXPECT_NE(v1::getFmiFactory(), first);
        EXPECT_NE(v2::getFmiFactory(), second);
        const std::shared_ptr<FaultManagementI> ofThread(
            v1::getFmiFactory()->createFaultManagement());
        for (const auto& client : {ofFirst, second->createFaultManagement(), ofThread}) {
            client->ceaseAlarm(kObject, 7, "");
            client->ceaseAlarm(kObject, 8, "");
        }
        v1::freeFmiFactory();
        v2::freeFmiFactory();
    }).join();
    EXPECT_EQ(platform().sent.size(), 4U); // not the second's nor the thread's of fault 8
    EXPECT_EQ(runs(), 4U);
    EXPECT_EQ(v1::getFmiFactory(), first);
}

TEST_F(FactoryTest, AFreedFactoryTakesTheClientsMappingsWithIt) {
    v1::getFmiFactory()->getConfiguration()->setMapping(8, 1, "Unit");
    v1::freeFmiFactory();
    const auto client = adapter({});
    client->ceaseAlarm(kObject, 8, "");
    EXPECT_TRUE(platform().sent.empty());
    client->ceaseAlarm(kObject, 7, "");
    EXPECT_EQ(platform().sent.size(), 1U);
}

TEST_F(FactoryTest, AConfigurationThatThrowsLeavesAV1FactoryAndNoV2Factory) {
    int formatted = 0;
    platform().onCall["formatStr"] = [&] {
        if (++formatted == 2) { // the mapping of the file, after the file was found
            throw std::runtime_error("no trace");
        }
    };
    EXPECT_THROW(v1::getFmiFactory(), std::runtime_error);
    EXPECT_EQ(platform().openLoadModuleLists, 0);
    const auto events = platform().events.size();
    EXPECT_NE(v1::getFmiFactory(), nullptr);
    EXPECT_EQ(platform().events.size(), events); // stored, and not configured again

    formatted = 0;
    EXPECT_THROW(v2::getFmiFactory(), std::runtime_error);
    EXPECT_EQ(runs(), 2U);
    EXPECT_NE(v2::getFmiFactory(), nullptr);
    EXPECT_EQ(runs(), 3U);
}

} // namespace
