// An application that knows the installed headers alone: raises and ceases one alarm through each
// generation of the interface.

#include <memory>

#include <ruxa/fm/dolq/v1/FmiFactory.h>
#include <ruxa/fm/dolq/v2/FmiFactory.h>

namespace {

constexpr std::uint32_t kFaultId = 4711;

void raiseAndCease(ruxa::fm::fmi::v1::FaultManagementI& faults, const std::string& object) {
    faults.raisePrimaryAlarm(object, kFaultId, "Fan failure", "The fan stands still", {"speed=0"},
                             ruxa::fm::fmi::v1::PerceivedSeverityMajor, std::uint32_t{1},
                             "0b5f7c52-6e0c-4b8e-9a43-2f1d8c7e6a90", "compute-1");
    faults.ceaseAlarm(object, kFaultId, "Fan failure");
}

} // namespace

int main() {
    {
        namespace v1 = ruxa::fm::dolq::v1;
        v1::getFmiFactory()->getConfiguration()->setMapping(kFaultId, 0x30004, "Fan");
        const std::unique_ptr<ruxa::fm::fmi::v1::FaultManagementI> faults(
            v1::getFmiFactory()->createFaultManagement());
        raiseAndCease(*faults, "managedElement=1,Fan=1");
    }
    ruxa::fm::dolq::v1::freeFmiFactory();

    // The mapping comes from the load module's mapping file.
    raiseAndCease(*ruxa::fm::dolq::v2::getFmiFactory()->createFaultManagement(),
                  "managedElement=1,Fan=2");
    ruxa::fm::dolq::v2::freeFmiFactory();
}
