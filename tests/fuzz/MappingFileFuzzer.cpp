// A mapping file of any content, found through discovery and read by both generations.

#include <memory>

#include <sys/mman.h>
#include <unistd.h>

#include "FakePlatform.h"
#include "Fuzzing.h"
#include "ruxa/fm/dolq/v1/FmiFactory.h"
#include "ruxa/fm/dolq/v2/FmiFactory.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const int file = memfd_create("input", MFD_CLOEXEC);
    require(write(file, data, size) == static_cast<ssize_t>(size), "a file in memory");
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    setenv("ZBN_NO", "CXC1", 1);
    setenv("ZBN_REV", "R1A", 1);
    resetPlatform();
    platform().loadModules["local"] = {{"CXC1", "R1A", {{"alarm_mapping", path}}}};
    {
        using ruxa::fm::fmi::v1::FaultManagementI;
        const std::unique_ptr<FaultManagementI> client(
            ruxa::fm::dolq::v1::getFmiFactory()->createFaultManagement());
        const std::shared_ptr<FaultManagementI> clientV2 =
            ruxa::fm::dolq::v2::getFmiFactory()->createFaultManagement();
        client->ceaseAlarm("Unit=7", 7, "fault");
        const std::size_t sent = platform().sent.size();
        clientV2->ceaseAlarm("Unit=7", 7, "fault");
        require(platform().sent.size() == 2 * sent, "both generations read the same");
    }
    ruxa::fm::dolq::v1::freeFmiFactory();
    ruxa::fm::dolq::v2::freeFmiFactory();
    require(platform().holdsNothing(), "all is given back");
    close(file);
    return 0;
}
