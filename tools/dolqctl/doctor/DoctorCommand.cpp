#include <algorithm>

#include "Commands.h"
#include "Output.h"
#include "doctor/Checks.h"

namespace dolqctl {

int runDoctor(const Arguments& arguments) {
    Diagnosis diagnosis;
    checkSettings(diagnosis);
    checkTraces(diagnosis);
    checkVariables(diagnosis);
    checkCorrelationService(diagnosis);
    Discovery discovery;
    try {
        discovery = discover();
        const Inventory inventory = readMappingFiles(discovery.mappingFiles);
        const auto isWrong = [](const Finding& finding) {
            return finding.isError() && !finding.costsTheFile();
        };
        const auto wrong =
            std::count_if(inventory.findings.begin(), inventory.findings.end(), isWrong);
        if (wrong > 0) {
            diagnosis.warn("mappings", counted(static_cast<std::size_t>(wrong), "error"),
                           "alarms are lost, or are others than what is written",
                           "see 'dolqctl check --discovered'");
        }
        checkLoadModule(diagnosis, discovery, inventory);
    } catch (const CommandError&) {
        // `checkParts` says why the load-module handler cannot be asked
    }
    const bool isAnswered = checkNtfService(diagnosis);
    checkParts(diagnosis);
    checkProgram(diagnosis, arguments.pid, discovery);
    const std::size_t failures = diagnosis.failures();
    const std::string& worst = diagnosis.observations().back().meaning;
    diagnosis.print(arguments, failures > 0     ? counted(failures, "check") + " failed: " + worst
                               : !worst.empty() ? "No check failed, but: " + worst
                                                : "No check failed");
    if (!arguments.json) {
        printLine("Not tried: sending. 'dolqctl raise …' sends an alarm and looks whether it "
                  "arrived.");
    }
    return !isAnswered ? kError : failures > 0 ? kFindings : kFine;
}

} // namespace dolqctl
