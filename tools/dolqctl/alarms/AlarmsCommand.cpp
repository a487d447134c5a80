// `alarms`: what the notifications of the service amount to.
#include <algorithm>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <set>
#include <sstream>
#include <unordered_map>
#include <utility>

#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Output.h"
#include "alarms/AlarmReader.h"
#include "common/AlarmNames.h"
#include "common/FormatTime.h"

namespace dolqctl {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::int64_t kNsPerSecond = 1'000'000'000;

/// In nanoseconds since 1970, if known.
using Time = std::optional<std::int64_t>;

/// A sender's event time can be anything: one before 2000 or in the future is unknown.
Time known(std::int64_t timeNs) {
    constexpr std::int64_t k2000 = 946'684'800;
    const std::int64_t seconds = timeNs / kNsPerSecond;
    return seconds >= k2000 && seconds <= std::time(nullptr) ? Time(timeNs) : std::nullopt;
}

/// One alarm from its first raise to its cease: the notifications of one notification object and
/// one notification class.
struct Alarm {
    Notification raised; ///< what the latest raise said
    Time firstTime, lastTime, endTime;
    bool isCeased = false;
    std::uint64_t timesRaised = 0;
    std::uint64_t place = 0; ///< of what was last heard of it, among all notifications
};

struct AlarmList {
    std::vector<Alarm> alarms;
    std::uint64_t notifications = 0;
    Time since; ///< the first one's
};

/// Those that are active and, `withCeased`, the others.
AlarmList readAlarms(const std::string& object, bool withCeased) {
    AlarmList list;
    std::unordered_map<std::string, Alarm> active; // by class and object
    const auto begin = [&] {
        list = {};
        active.clear();
    };
    const auto take = [&](Notification&& notification) {
        const Time time = known(notification.eventTimeNs);
        list.since = list.since ? list.since : time;
        const SaNtfClassIdT& id = notification.classId;
        const std::string key = std::to_string(id.vendorId) + '/' + std::to_string(id.majorId) +
                                '/' + std::to_string(id.minorId) + ' ' + notification.object;
        Alarm& alarm = active[key];
        alarm.place = ++list.notifications;
        if (notification.severity != SA_NTF_SEVERITY_CLEARED) {
            alarm.firstTime = alarm.timesRaised++ == 0 ? time : alarm.firstTime;
            alarm.lastTime = time;
            alarm.raised = std::move(notification);
            return;
        }
        alarm.isCeased = true;
        alarm.endTime = time;
        if (withCeased && alarm.timesRaised != 0) {
            list.alarms.push_back(std::move(alarm));
        }
        active.erase(key);
    };
    Waiting waiting;
    AlarmReader(waiting, object).read(begin, take);
    for (auto& [key, alarm] : active) {
        list.alarms.push_back(std::move(alarm));
    }
    return list;
}

const char* nameOf(std::uint32_t severity) {
    return common::nameOf(severity, common::kSeverityNames);
}

std::string severityOf(const Alarm& alarm) {
    return (alarm.isCeased ? "ceased " : "") + std::string(nameOf(alarm.raised.severity));
}

/// "2024-02-29 12:34:56", local; "-" when unknown.
std::string timeText(Time time) {
    const std::time_t seconds = time.value_or(0) / kNsPerSecond;
    std::ostringstream text;
    text << std::put_time(std::localtime(&seconds), "%F %T");
    return time ? text.str() : "-";
}

/// For how long it has been active, or was: "45s", "3m", "2h", "5d"; "-" when unknown.
std::string ageOf(const Alarm& alarm) {
    constexpr std::pair<std::int64_t, char> kUnits[] = {
        {24 * 60 * 60, 'd'}, {60 * 60, 'h'}, {60, 'm'}, {1, 's'}};
    const Time end = alarm.isCeased ? alarm.endTime : std::time(nullptr) * kNsPerSecond;
    const Time first = alarm.firstTime;
    const std::int64_t seconds = first && end ? *end / kNsPerSecond - *first / kNsPerSecond : -1;
    for (const auto& [length, unit] : kUnits) {
        if (seconds >= length) {
            return std::to_string(seconds / length) + unit;
        }
    }
    return seconds == 0 ? "0s" : "-";
}

Json toJson(Time time) { return time ? Json(common::formatTime(*time)) : Json(); }

Json toJson(const std::vector<Value>& values) {
    constexpr const char* kTypes[] = {"uint8",    "int8",   "uint16",    "int16",  "uint32",
                                      "int32",    "float",  "uint64",    "int64",  "double",
                                      "ldapName", "string", "ipAddress", "binary", "array"};
    Json list = Json::array();
    for (const Value& value : values) {
        list.push_back({{"id", value.id},
                        {"type", common::nameOf(value.type, kTypes)},
                        {"value", value.text ? Json(*value.text) : Json()}});
    }
    return list;
}

/// What it says besides what it is, and when.
Json contentOf(const Notification& raised) {
    constexpr const char* kTrends[] = {"moreSevere", "noChange", "lessSevere"};
    Json correlated = Json::array(); // ids as texts: many readers keep only 53 bits of a number
    for (const SaNtfIdentifierT id : raised.correlated) {
        correlated.push_back(std::to_string(id));
    }
    return {{"text", raised.text},
            {"info", toJson(raised.info)},
            {"repairActions", toJson(raised.repairActions)},
            {"notificationId", std::to_string(raised.id)},
            {"notifyingObject", raised.notifyingObject},
            {"eventType", common::nameOf(raised.eventType - SA_NTF_ALARM_NOTIFICATIONS_START,
                                         common::kEventTypeNames)},
            {"probableCause", raised.cause},
            {"trend", common::nameOf(raised.trend, kTrends)},
            {"threshold", toJson({raised.threshold}).front()},
            {"specificProblems", toJson(raised.specificProblems)},
            {"monitoredAttributes", toJson(raised.monitoredAttributes)},
            {"correlatedNotifications", correlated}};
}

Json toJson(const Alarm& alarm) {
    const SaNtfClassIdT& id = alarm.raised.classId;
    Json json = {
        {"state", alarm.isCeased ? "ceased" : "active"},
        {"object", alarm.raised.object},
        {"classId", {{"vendorId", id.vendorId}, {"majorId", id.majorId}, {"minorId", id.minorId}}},
        {"severity", nameOf(alarm.raised.severity)},
        {"firstTime", toJson(alarm.firstTime)},
        {"lastTime", toJson(alarm.lastTime)},
        {"endTime", toJson(alarm.endTime)},
        {"timesRaised", alarm.timesRaised}};
    json.update(contentOf(alarm.raised));
    return json;
}

/// "2/17", "18568:3/1" of another vendor than the library's.
std::string idOf(const Alarm& alarm) {
    const SaNtfClassIdT& id = alarm.raised.classId;
    return (id.vendorId == DOLQCTL_VENDOR_ID ? "" : std::to_string(id.vendorId) + ':') +
           std::to_string(id.majorId) + '/' + std::to_string(id.minorId);
}

void printList(const std::vector<Alarm>& alarms) {
    std::vector<std::vector<std::string>> rows = {
        {"SEVERITY", "AGE", "LAST RAISED", "TIMES", "ALARM", "OBJECT"}};
    for (const Alarm& alarm : alarms) {
        rows.push_back({severityOf(alarm), ageOf(alarm), timeText(alarm.lastTime),
                        std::to_string(alarm.timesRaised), idOf(alarm), alarm.raised.object});
    }
    printTable(std::move(rows));
}

void printLong(const std::vector<Alarm>& alarms) {
    const auto below = [](const std::string& text) { printLine("    " + text); };
    const auto shown = [](const Json& field) {
        const bool isValue = field.is_object();
        const Json& content = isValue ? field["value"] : field;
        const std::string text = content.is_string() ? content.get<std::string>()
                                 : isValue           ? '(' + field["type"].get<std::string>() + ')'
                                                     : content.dump();
        return (text.empty() ? "-" : text) +
               (isValue && field["id"] != 0 ? " (id " + field["id"].dump() + ')' : "");
    };
    for (const Alarm& alarm : alarms) {
        printLine(severityOf(alarm) + ' ' + idOf(alarm) + " on " + alarm.raised.object);
        below("active for: " + ageOf(alarm) +
              (alarm.isCeased ? ", until " + timeText(alarm.endTime) : ""));
        below("raised: " + counted(alarm.timesRaised, "time") + ", first " +
              timeText(alarm.firstTime) + ", last " + timeText(alarm.lastTime));
        const Json all = contentOf(alarm.raised);
        for (const auto& [name, content] : all.items()) {
            for (const Json& field : content.is_array() ? content : Json::array({content})) {
                below(name + ": " + shown(field));
            }
        }
    }
}

/// The option that leaves the alarm out; null when it is shown.
const char* leavesOut(const Arguments& arguments, const Alarm& alarm) {
    const Time changed = alarm.isCeased ? alarm.endTime : alarm.lastTime; // unknown: may be young
    return arguments.vendor.value_or(alarm.raised.classId.vendorId) != alarm.raised.classId.vendorId
               ? "--vendor"
           : !arguments.severity.empty() &&
                   common::codeOf(arguments.severity, common::kSeverityNames) >
                       alarm.raised.severity
               ? "--severity"
           : arguments.since && changed &&
                   *changed / kNsPerSecond < std::time(nullptr) - *arguments.since
               ? "--since"
               : nullptr;
}

} // namespace

int runAlarms(const Arguments& arguments) {
    const std::string object = arguments.object.substr(0, kLongestObject);
    AlarmList list = readAlarms(object, arguments.history);
    std::vector<Alarm>& alarms = list.alarms;
    std::set<std::string> options;
    const auto isLeftOut = [&](const Alarm& alarm) {
        const char* const option = leavesOut(arguments, alarm);
        return option != nullptr && (options.insert(option), true);
    };
    const std::size_t found = alarms.size();
    alarms.erase(std::remove_if(alarms.begin(), alarms.end(), isLeftOut), alarms.end());
    const auto rank = [&](const Alarm& alarm) { // the worst first, or the latest
        return std::pair(arguments.history ? 0 : alarm.raised.severity, alarm.place);
    };
    std::sort(alarms.begin(), alarms.end(),
              [&](const Alarm& left, const Alarm& right) { return rank(left) > rank(right); });
    const std::string what = arguments.history ? "alarm" : "active alarm";
    const std::string of = object.empty() ? "" : " of " + nameText(arguments.object);
    std::string summary = counted(alarms.size(), what) + of;
    if (alarms.empty()) {
        summary = "No " + what + 's' + of;
        summary += found == 0
                       ? ""
                       : ": " + joined(options, " and ") + " left out " + std::to_string(found);
    }
    if (arguments.json) {
        Json json = {{"notifications", list.notifications},
                     {"since", toJson(list.since)},
                     {"alarms", Json::array()}};
        for (const Alarm& alarm : alarms) {
            json["alarms"].push_back(toJson(alarm));
        }
        printJson(json);
        return kFine;
    }
    if (!alarms.empty()) {
        arguments.isLong ? printLong(alarms) : printList(alarms);
        printLine();
    }
    printLine(summary);
    printLine("The service gave " + counted(list.notifications, "notification") + of +
              (list.since ? " since " + timeText(list.since) : ""));
    if (list.notifications == 0 && object.empty()) {
        printLine(
            "A cluster's service forgets them when it restarts; the embedded one reads the log "
            "of RUXA_NTF_LOG, or of this user.");
    }
    return kFine;
}

} // namespace dolqctl
