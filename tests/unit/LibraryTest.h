#pragma once

#include <fstream>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "FakePlatform.h"
#include "ruxa/fm/dolq/v1/FmiFactory.h"
#include "ruxa/fm/dolq/v2/FmiFactory.h"
#include "support/TestSupport.h"

using ruxa::fm::fmi::v1::FaultManagementI;
using Texts = std::vector<std::string>;
using Events = std::vector<std::uint32_t>;
namespace v1 = ruxa::fm::dolq::v1;
namespace v2 = ruxa::fm::dolq::v2;

class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& content) {
        std::ofstream(m_path, std::ios::binary) << content;
    }
    const std::string& path() const { return m_path; }

private:
    const TemporaryFolder m_folder;
    const std::string m_path = m_folder.path() / "file";
};

/// A client of the library on the fake platform. In the end everything the library took must have
/// been given back.
class LibraryTest : public testing::Test {
protected:
    static constexpr char kObject[] = "Top=1,Unit=7"; // class "Unit"
    static constexpr char kSystem[] = "the environment's system UUID";
    static constexpr char kCompute[] = "the environment's compute name";

    void SetUp() override { resetPlatform(); }

    void TearDown() override {
        v1::freeFmiFactory();
        v2::freeFmiFactory();
        EXPECT_TRUE(platform().holdsNothing());
    }

    using Mappings = std::vector<std::tuple<std::uint32_t, std::string, std::uint32_t>>;

    /// An adapter of this thread's v1 factory, to which `mappings` (fault id, class, minor type)
    /// are added. Forgets what happened so far.
    std::unique_ptr<FaultManagementI> adapter(const Mappings& mappings = {{7, "Unit", 0x10002}}) {
        for (const auto& [faultId, moClass, minorType] : mappings) {
            v1::getFmiFactory()->getConfiguration()->setMapping(faultId, minorType, moClass);
        }
        std::unique_ptr<FaultManagementI> made(v1::getFmiFactory()->createFaultManagement());
        platform().events.clear();
        platform().sent.clear();
        return made;
    }

    /// Raises the plainest alarm that can be sent.
    static void raise(FaultManagementI& adapter, const std::string& object = kObject,
                      const std::string& text = "text", const Texts& info = {}) {
        adapter.raisePrimaryAlarm(object, 7, "fault", text, info, 0, std::string("uuid"), kSystem,
                                  kCompute);
    }

    static const FakePlatform::Alarm& sentAlarm() {
        static const FakePlatform::Alarm kNone;
        EXPECT_EQ(platform().sent.size(), 1U);
        return platform().sent.empty() ? kNone : platform().sent.back();
    }

    static std::string pid() { return std::to_string(getpid()); }

    ScopedEnvironment m_systemUUID{"SYSTEM_UUID", kSystem};
    ScopedEnvironment m_computeName{"COMPUTE_NAME", kCompute};
    ScopedEnvironment m_productNumber{"ZBN_NO", nullptr};
    ScopedEnvironment m_tracedProductNumber{"ZBN_NUM", nullptr};
    ScopedEnvironment m_revision{"ZBN_REV", nullptr};
};
