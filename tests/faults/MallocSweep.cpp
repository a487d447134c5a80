// Lets every allocation of a client's calls fail, in the library and in the embedded platform: one
// alone, and all from one on. Each in a process of its own, which must not die; what is allocated
// is given back.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include <sys/wait.h>
#include <unistd.h>

#include "Operations.h"
#include "ruxa/fm/dolq/v1/FmiFactory.h"
#include "ruxa/fm/dolq/v2/FmiFactory.h"
#include "support/FailingMalloc.h"
#include "support/TestSupport.h"

namespace {

namespace fs = std::filesystem;
namespace v1 = ruxa::fm::dolq::v1;
namespace v2 = ruxa::fm::dolq::v2;

// What a client of the process has.
std::unique_ptr<FaultManagementI> adapterV1;
std::shared_ptr<FaultManagementI> adapterV2;

void free() {
    adapterV1.reset();
    adapterV2.reset();
    v1::freeFmiFactory();
    v2::freeFmiFactory();
}
void load() {
    adapterV1.reset(v1::getFmiFactory()->createFaultManagement());
    adapterV2 = v2::getFmiFactory()->createFaultManagement();
}

struct Step {
    const char* name;
    std::function<void()> prepare;
    std::function<void()> call;
    bool usesTinyXml = false; // which loses what it was building
};

std::vector<Step> allSteps() {
    std::vector<Step> steps{
        {"v1 factory", [] {}, [] { v1::getFmiFactory(); }, true},
        {"v2 factory", [] {}, [] { v2::getFmiFactory(); }, true},
        {"v1 factory without files", [] { setenv("VELK_MANIFEST_DIR", "/nowhere", 1); },
         [] { v1::getFmiFactory(); }},
        {"v1 adapter", [] { v1::getFmiFactory(); },
         [] { adapterV1.reset(v1::getFmiFactory()->createFaultManagement()); }},
        {"v2 adapter", [] { v2::getFmiFactory(); },
         [] { adapterV2 = v2::getFmiFactory()->createFaultManagement(); }},
        {"unmapped alarm", load, [] { adapterV2->ceaseAlarm(kUnitObject, 8, kName); }},
        {"cease", load, [] { adapterV1->ceaseAlarm(kUnitObject, 7, kName); }},
        {"destruction", load, free}};
    for (const Operation& operation : kOperations) {
        if (operation.programGroup != nullptr) { // the others do nothing but a part of that
            steps.push_back({operation.name, load, [&operation] { operation.call(*adapterV1); }});
        }
    }
    return steps;
}

enum Outcome { kNotReached, kSurvived, kLeaked };

/// In a process of its own.
Outcome tryPlace(const Step& step, bool warm, long place, bool lasting) {
    const auto callAndGiveBack = [&](long position) {
        step.prepare();
        startFailingMalloc(position, lasting);
        try {
            step.call();
        } catch (const std::bad_alloc&) { // which may reach a client
        }
        const bool failed = stopFailingMalloc();
        free();
        return failed;
    };
    constexpr long kNowhere = 1'000'000'000;
    if (warm) {
        callAndGiveBack(kNowhere);
    }
    const long before = liveBlocks();
    const bool failed = callAndGiveBack(place);
    const bool leaked = warm && !step.usesTinyXml && liveBlocks() > before;
    callAndGiveBack(kNowhere); // all is well again
    return leaked ? kLeaked : failed ? kSurvived : kNotReached;
}

void makePlatform(const fs::path& folder) {
    std::ofstream(folder / "mappings.xml")
        << R"(<alarmMappings><mapping faultid="7" minor_type_id="65538" managed_object_class="EquipmentSupportUnit"/></alarmMappings>)";
    std::ofstream(folder / "local.xml")
        << R"(<loadModules><loadModule name="Sweep" productNumber="CXC1" revision="R1A">)"
        << R"(<file tag="alarm_mapping" path="mappings.xml"/></loadModule></loadModules>)";
    setenv("ZBN_NO", "CXC1", 1);
    setenv("ZBN_REV", "R1A", 1);
    setenv("VELK_MANIFEST_DIR", folder.c_str(), 1);
    setenv("RUXA_NTF_LOG", (folder / "log").c_str(), 1);
    setenv("RUXA_TRACE_SINK", ("file:" + (folder / "traces").string()).c_str(), 1);
    setenv("RUXA_TRACE_GROUPS", "all", 1);
    setenv("SYSTEM_UUID", "e7a6d7a4-1f0e-4c43-9c9c-3f8e2a1b0c4d", 1);
    setenv("COMPUTE_NAME", "compute-1", 1);
}

} // namespace

int main() {
    const TemporaryFolder temporary;
    const fs::path& folder = temporary.path();
    makePlatform(folder);
    long places = 0;
    long faults = 0;
    for (const Step& step : allSteps()) {
        for (const auto& [warm, lasting] :
             {std::pair(false, false), {true, false}, {false, true}, {true, true}}) {
            for (long place = 1;; ++place) {
                const pid_t child = fork();
                if (child == 0) {
                    _exit(tryPlace(step, warm, place, lasting));
                }
                const int status = statusOf(child);
                if (status == W_EXITCODE(kNotReached, 0)) {
                    break;
                }
                ++places;
                if (status != W_EXITCODE(kSurvived, 0)) {
                    ++faults;
                    std::printf("%s, %s, allocation %ld%s: %s\n", step.name,
                                warm ? "once more" : "the first time", place,
                                lasting ? " and all after it" : "",
                                WIFEXITED(status) ? "leaked" : "died");
                }
            }
        }
    }
    const bool sent = fs::exists(folder / "log");
    std::printf("%ld places, %ld of them a death or a leak\n", places, faults);
    return places > 0 && sent && faults == 0 ? 0 : 1;
}
