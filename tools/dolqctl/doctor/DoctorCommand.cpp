#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Diagnosis.h"
#include "MappingFiles.h"
#include "Output.h"
#include "common/Environment.h"
#include "mappings/Discovery.h"

namespace dolqctl {

int runDoctor(const DoctorArguments& arguments) {
    Diagnosis diagnosis;
    checkTraces(diagnosis); // first: a backend reads its environment once
    checkIdentity(diagnosis);
    checkReporter(diagnosis);
    checkLibrary(diagnosis);
    const Discovery discovery =
        discover({common::environment("ZBN_NO"), common::environment("ZBN_REV")});
    checkMappings(diagnosis, discovery, readMappingFiles(discovery.mappingFiles));
    checkCorrelationService(diagnosis);
    checkNtfService(diagnosis);
    if (arguments.json) {
        printJson(diagnosis);
    } else {
        diagnosis.print(diagnosis.failures() > 0 ? counted(diagnosis.failures(), "check") +
                                                       " failed: alarms are lost, or programs hang."
                        : diagnosis.worst() == Observation::Status::Warning
                            ? "No check failed, but see the warnings: alarms may be lost."
                            : "Found nothing that keeps alarms from being sent.");
    }
    return diagnosis.failures() == 0 ? kFine : kFindings;
}

} // namespace dolqctl
