#include <cstdio>
#include <cstdlib>
#include <memory>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "ruxa/fm/dolq/v1/FmiFactory.h"
#include "ruxa/fm/dolq/v2/FmiFactory.h"
#include "support/TestSupport.h"

namespace v1 = ruxa::fm::dolq::v1;
namespace v2 = ruxa::fm::dolq::v2;

namespace {

template <typename Function> Function* find(void* library, const char* mangledName) {
    return reinterpret_cast<Function*>(dlsym(library, mangledName));
}

/// Loads the library, raises an alarm through each generation, and unloads it.
void loadUseAndUnload() {
    void* const library = dlopen(RUXA_DOLQ_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    auto* const get = find<v1::FmiFactory*()>(library, "_ZN4ruxa2fm4dolq2v113getFmiFactoryEv");
    auto* const free = find<void()>(library, "_ZN4ruxa2fm4dolq2v114freeFmiFactoryEv");
    auto* const getV2 = find<v2::FmiFactory*()>(library, "_ZN4ruxa2fm4dolq2v213getFmiFactoryEv");
    auto* const freeV2 = find<void()>(library, "_ZN4ruxa2fm4dolq2v214freeFmiFactoryEv");
    ASSERT_TRUE(get && free && getV2 && freeV2);
    get()->getConfiguration()->setMapping(7, 1, "Unit");
    {
        const std::unique_ptr<ruxa::fm::fmi::v1::FaultManagementI> client(
            get()->createFaultManagement());
        client->ceaseAlarm("Unit=1", 7, "fault");
        getV2()->createFaultManagement()->ceaseAlarm("Unit=1", 7, "fault");
    }
    free();
    freeV2();
    ASSERT_EQ(dlclose(library), 0);
    ASSERT_EQ(dlopen(RUXA_DOLQ_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "still loaded";
}

TEST(ReloadTest, AThousandTimesLeavesNothingBehind) {
    setenv("RUXA_NTF_LOG", "/dev/null", 1);
    setenv("RUXA_TRACE_GROUPS", "none", 1);
    for (int i = 0; i < 100 && !HasFailure(); ++i) {
        loadUseAndUnload();
    }
    const long before = residentKiB();
    for (int i = 0; i < 1000 && !HasFailure(); ++i) {
        loadUseAndUnload();
    }
    const long after = residentKiB();
    std::printf("resident KiB: %ld before, %ld after\n", before, after);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // which keep freed memory
    EXPECT_LE(after - before, 64);
#endif
}

} // namespace
