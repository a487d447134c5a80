#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "ruxa/fm/dolq/v1/FmiFactory.h"
#include "ruxa/fm/dolq/v2/FmiFactory.h"
#include "support/TestSupport.h"

namespace {

template <typename Function> Function* find(void* library, const char* mangledName) {
    return reinterpret_cast<Function*>(dlsym(library, mangledName));
}

/// Loads the library, ceases an alarm through a generation of the interface, and unloads it.
template <typename Factory> void loadUseAndUnload(const std::string& generation) {
    void* const library = dlopen(RUXA_DOLQ_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto find = [&](const std::string& function) {
        return dlsym(library, ("_ZN4ruxa2fm4dolq2" + generation + function + "Ev").c_str());
    };
    auto* const get = reinterpret_cast<Factory* (*)()>(find("13getFmiFactory"));
    auto* const free = reinterpret_cast<void (*)()>(find("14freeFmiFactory"));
    ASSERT_TRUE(get && free);
    std::shared_ptr<ruxa::fm::fmi::v1::FaultManagementI>(get()->createFaultManagement())
        ->ceaseAlarm("Unit=1", 7, "fault");
    free();
    ASSERT_EQ(dlclose(library), 0);
    ASSERT_EQ(dlopen(RUXA_DOLQ_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "still loaded";
}

void loadOften(int times) {
    for (int i = 0; i < times && !testing::Test::HasFailure(); ++i) {
        loadUseAndUnload<ruxa::fm::dolq::v1::FmiFactory>("v1");
        loadUseAndUnload<ruxa::fm::dolq::v2::FmiFactory>("v2");
    }
}

TEST(ReloadTest, AThousandTimesLeavesNothingBehind) {
    setenv("RUXA_NTF_LOG", "/dev/null", 1);
    setenv("RUXA_TRACE_GROUPS", "none", 1);
    loadOften(50);
    const long before = residentKiB();
    loadOften(500);
    const long after = residentKiB();
    std::printf("resident KiB: %ld before, %ld after\n", before, after);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // which keep freed memory
    EXPECT_LE(after - before, 64);
#endif
}

} // namespace
