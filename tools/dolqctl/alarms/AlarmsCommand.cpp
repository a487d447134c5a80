#include <algorithm>
#include <ctime>
#include <functional>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <map>
#include <sstream>
#include <system_error>
#include <tuple>
#include <utility>

#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Output.h"
#include "alarms/AlarmLog.h"
#include "common/AlarmNames.h"
#include "platform/ntf/log/LogPath.h"

namespace dolqctl {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::int64_t kNsPerSecond = 1'000'000'000;
constexpr char kOtherLogs[] =
    "Other users, and programs with another RUXA_NTF_LOG, log elsewhere: see --log.";

const char* nameOf(std::uint32_t severity) {
    return common::nameOf(severity, common::kSeverityNames);
}

/// Its severity, behind "ceased" if it is.
std::string severityOf(const Alarm& alarm) {
    return (alarm.endTimeNs ? "ceased " : "") + std::string(nameOf(alarm.raised.perceivedSeverity));
}

/// "2/17"
std::string idOf(const Alarm& alarm) {
    return std::to_string(alarm.raised.majorId) + '/' + std::to_string(alarm.raised.minorId);
}

/// "2024-02-29 12:34:56", local.
std::string timeText(std::int64_t timeNs) {
    const std::time_t seconds = timeNs / kNsPerSecond;
    std::tm local{};
    localtime_r(&seconds, &local);
    std::ostringstream text;
    text << std::put_time(&local, "%F %T");
    return text.str();
}

/// For how long it has been active, or was: "45s", "3m", "2h", "5d". Empty where the clock was set
/// back meanwhile.
std::string ageOf(const Alarm& alarm) {
    constexpr std::pair<std::int64_t, char> kUnits[] = {
        {24 * 60 * 60, 'd'}, {60 * 60, 'h'}, {60, 'm'}, {1, 's'}};
    const std::int64_t end = alarm.endTimeNs ? *alarm.endTimeNs / kNsPerSecond : std::time(nullptr);
    const std::int64_t seconds = end - alarm.firstTimeNs / kNsPerSecond;
    for (const auto& [length, unit] : kUnits) {
        if (seconds >= length) {
            return std::to_string(seconds / length) + unit;
        }
    }
    return seconds == 0 ? "0s" : "";
}

std::string programGroupOf(const Alarm& alarm) {
    const auto& actions = alarm.raised.proposedRepairActions;
    return actions.empty() ? "" : actions.front().value.value_or("");
}

Json toJson(const Alarm& alarm) {
    const platform::ntf::AlarmRecord& raised = alarm.raised;
    const auto time = [](std::int64_t timeNs) { return Json(platform::ntf::formatTime(timeNs)); };
    const std::string group = programGroupOf(alarm);
    Json info = Json::array();
    for (const platform::ntf::Element& element : raised.additionalInfo) {
        info.push_back(element.value.value_or(""));
    }
    return {
        {"state", alarm.endTimeNs ? "ceased" : "active"},
        {"object", raised.notificationObject},
        {"classId",
         {{"vendorId", raised.vendorId}, {"majorId", raised.majorId}, {"minorId", raised.minorId}}},
        {"severity", nameOf(raised.perceivedSeverity)},
        {"firstTime", time(alarm.firstTimeNs)},
        {"lastTime", time(raised.eventTimeNs)},
        {"endTime", alarm.endTimeNs ? time(*alarm.endTimeNs) : Json(nullptr)},
        {"timesRaised", alarm.timesRaised},
        {"text", raised.additionalText},
        {"info", info},
        {"programGroup", group.empty() ? Json(nullptr) : Json(group)}};
}

void printList(const std::vector<Alarm>& alarms) {
    std::vector<std::vector<std::string>> rows = {
        {"SEVERITY", "AGE", "LAST RAISED", "TIMES", "ALARM", "OBJECT"}};
    for (const Alarm& alarm : alarms) {
        rows.push_back({severityOf(alarm), ageOf(alarm), timeText(alarm.raised.eventTimeNs),
                        std::to_string(alarm.timesRaised), idOf(alarm),
                        alarm.raised.notificationObject});
    }
    printTable(std::move(rows));
}

void printLong(const std::vector<Alarm>& alarms) {
    const auto below = [](const char* what, const std::string& text) {
        std::cout << "    ";
        printWrapped(what + (text.empty() ? "-" : text), "        ");
    };
    for (const Alarm& alarm : alarms) {
        const platform::ntf::AlarmRecord& raised = alarm.raised;
        printWrapped(severityOf(alarm) + ' ' + idOf(alarm) + " on " + raised.notificationObject,
                     "    ");
        below("active for: ",
              ageOf(alarm) + (alarm.endTimeNs ? ", until " + timeText(*alarm.endTimeNs) : ""));
        below("raised: ", counted(alarm.timesRaised, "time") + ", first " +
                              timeText(alarm.firstTimeNs) + ", last " +
                              timeText(raised.eventTimeNs));
        below("text: ", raised.additionalText);
        for (const platform::ntf::Element& element : raised.additionalInfo) {
            below("info: ", element.value.value_or(""));
        }
        below("program group: ", programGroupOf(alarm));
    }
}

void printJson(const std::filesystem::path& path, const AlarmLog& log) {
    const auto text = [](const Json& json) {
        return json.dump(-1, ' ', true, Json::error_handler_t::replace);
    };
    std::cout << "{\n  \"log\": " << text(path.string())
              << ",\n  \"notifications\": " << log.notifications
              << ",\n  \"skippedLines\": " << log.skippedLines << ",\n  \"alarms\": [";
    const char* separator = "\n    ";
    for (const Alarm& alarm : log.alarms) {
        std::cout << separator << text(toJson(alarm));
        separator = ",\n    ";
    }
    std::cout << "\n  ]\n}\n";
}

/// "1 critical, 2 minor": how many there are of each severity, the worst first.
std::string severitiesText(const std::vector<Alarm>& alarms) {
    std::map<std::uint32_t, std::size_t, std::greater<>> counts;
    for (const Alarm& alarm : alarms) {
        ++counts[alarm.raised.perceivedSeverity];
    }
    std::string text;
    for (const auto& [severity, count] : counts) {
        text += (text.empty() ? "" : ", ") + std::to_string(count) + ' ' + nameOf(severity);
    }
    return text;
}

std::filesystem::path findLog(const std::string& given) {
    std::filesystem::path path =
        given.empty() ? platform::ntf::notificationLogPath() : std::filesystem::path(given);
    if (path.empty()) {
        throw CommandError("neither RUXA_NTF_LOG nor XDG_STATE_HOME nor HOME says where the "
                           "notification log is: set RUXA_NTF_LOG, or give --log");
    }
    const std::string why = given.empty() ? whyElsewhere() : "";
    std::error_code error;
    if (std::filesystem::status(path, error).type() == std::filesystem::file_type::not_found) {
        throw CommandError(why.empty() ? "there is no log " + path.string() +
                                             ": none was written, or it was moved. " + kOtherLogs
                                       : why);
    }
    if (!why.empty()) {
        tell(why + ". This is the log of the embedded service.");
    }
    return path;
}

/// Takes away the alarms that are not asked for.
void filter(std::vector<Alarm>& alarms, const AlarmsArguments& arguments) {
    const std::int64_t since = std::time(nullptr) - arguments.since.value_or(0);
    const auto isOther = [&](const Alarm& alarm) {
        const std::string& object = alarm.raised.notificationObject;
        return alarm.raised.perceivedSeverity < arguments.severity.value_or(0) ||
               (arguments.since && alarm.changeTimeNs() / kNsPerSecond < since) ||
               !(arguments.object.empty() || object == arguments.object ||
                 object.rfind(arguments.object + ',', 0) == 0);
    };
    alarms.erase(std::remove_if(alarms.begin(), alarms.end(), isOther), alarms.end());
}

/// The worst first, or the latest.
void sort(std::vector<Alarm>& alarms, bool bySeverity) {
    const auto place = [bySeverity](const Alarm& alarm) {
        return std::make_tuple(bySeverity ? alarm.raised.perceivedSeverity : 0,
                               alarm.changeTimeNs(), alarm.raised.notificationId);
    };
    std::sort(alarms.begin(), alarms.end(),
              [&](const Alarm& left, const Alarm& right) { return place(left) > place(right); });
}

/// "2 active alarms found: 1 major, 1 minor"
std::string summaryOf(const AlarmsArguments& arguments, const std::vector<Alarm>& alarms) {
    const bool isFiltered = arguments.severity || arguments.since || !arguments.object.empty();
    const std::string what = arguments.history ? "alarm" : "active alarm";
    const std::string matching = isFiltered ? " found" : "";
    return alarms.empty() ? "No " + what + 's' + matching
                          : counted(alarms.size(), what) + matching + ": " + severitiesText(alarms);
}

} // namespace

int runAlarms(const AlarmsArguments& arguments) {
    const std::filesystem::path path = findLog(arguments.log);
    AlarmLog log = readAlarmLog(path, arguments.history);
    if (log.skippedLines != 0) {
        tell("lines of " + path.string() +
             " that are no whole notifications, left out: " + std::to_string(log.skippedLines));
    }
    filter(log.alarms, arguments);
    sort(log.alarms, !arguments.history);
    std::string summary = summaryOf(arguments, log.alarms);
    if (arguments.limit && *arguments.limit < log.alarms.size()) {
        log.alarms.resize(*arguments.limit);
        summary += "; " + std::to_string(log.alarms.size()) + " shown";
    }
    if (arguments.json) {
        printJson(path, log);
        return kFine;
    }
    if (!log.alarms.empty()) {
        arguments.isLong ? printLong(log.alarms) : printList(log.alarms);
        printLine();
    }
    printWrapped(summary, "  ");
    const std::string since = log.notifications == 0 ? "" : " since " + timeText(log.firstTimeNs);
    printWrapped(counted(log.notifications, "notification") + since + " in " + path.string());
    if (log.alarms.empty() && arguments.log.empty()) {
        printLine(kOtherLogs);
    }
    return kFine;
}

} // namespace dolqctl
