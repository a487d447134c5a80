#include "AlarmSending.h"

#include <iostream>
#include <memory>
#include <optional>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <ruxa/fm/dolq/v1/FmiFactory.h>
#include <ruxa/fm/dolq/v2/FmiFactory.h>

#include "IdOption.h"
#include "SendWitness.h"
#include "TraceCapture.h"
#include "common/AisNames.h"

namespace dolqctl {

namespace {

using ruxa::fm::fmi::v1::FaultManagementI;
using Operation = std::function<void(FaultManagementI&)>;

/// The adapter goes before the factory, and all of it before the traces are read.
void callLibrary(bool v1, const Operation& operation) {
    if (v1) {
        namespace dolq = ruxa::fm::dolq::v1;
        operation(
            *std::unique_ptr<FaultManagementI>(dolq::getFmiFactory()->createFaultManagement()));
        dolq::freeFmiFactory();
    } else {
        namespace dolq = ruxa::fm::dolq::v2;
        operation(*dolq::getFmiFactory()->createFaultManagement());
        dolq::freeFmiFactory();
    }
}

std::string outcome(const std::optional<SaAisErrorT>& answer) {
    if (!answer) {
        return "not sent: the library dropped the alarm, the traces say why";
    }
    return *answer == SA_AIS_OK
               ? "sent"
               : "not sent: the notification service answered " + common::aisText(*answer);
}

} // namespace

void addAlarmOptions(CLI::App& command, AlarmOptions& options) {
    command
        .add_option("--object", options.object,
                    "Notification object, e.g. managedElement=1,Board=3")
        ->type_name("DN")
        ->required();
    command.add_option("--fault", options.faultId, "Fault id")->required()->check(checkId);
    command.add_option("--name", options.faultIdName, "The fault's name, for the traces");
    command.add_flag("--v1", options.v1, "Through the first generation of the library's interface");
    command.add_flag("--verbose", options.details, "Show the traces of group 8 (details), too");
    command.add_flag("--json", options.json, "Print JSON, with the traces in it");
}

int sendAlarm(const AlarmOptions& options, Output& output, const Operation& operation) {
    const TraceCapture capture(options.details);
    callLibrary(options.v1, operation);
    const std::vector<std::string> traces = capture.lines();
    capture.passOn();
    const std::optional<SaAisErrorT> answer = latestSendAnswer();
    const bool sent = answer == SA_AIS_OK;
    if (traces.empty()) {
        tell("this platform's trace backend has no sink of this process's own: "
             "look for the traces where it keeps them");
    }
    if (options.json) {
        nlohmann::ordered_json json;
        json["sent"] = sent;
        json["answer"] = answer ? nlohmann::ordered_json(*answer) : nullptr;
        json["traces"] = traces;
        output.print(json);
    } else {
        for (const std::string& trace : traces) {
            std::cerr << trace << '\n';
        }
        output.line(output.styled(sent ? Style::Good : Style::Bad, outcome(answer)));
    }
    return sent ? kFine : kFindings;
}

} // namespace dolqctl
