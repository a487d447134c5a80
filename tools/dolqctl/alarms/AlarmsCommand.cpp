// `alarms`: what the notifications of the service amount to.
#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <optional>
#include <sstream>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Commands.h"
#include "Ntf.h"
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
// NOLINTNEXTLINE(bugprone-exception-escape): without memory a document ends the process
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
        const std::string key = classText(notification.classId) + ' ' + notification.object;
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
    AlarmReader(object).read(begin, take);
    for (auto& [key, alarm] : active) {
        list.alarms.push_back(std::move(alarm));
    }
    return list;
}

const char* nameOf(std::uint32_t severity) {
    return common::nameOf(severity, common::kSeverityNames);
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
    json.update(alarm.raised.content);
    return json;
}

void printList(const std::vector<Alarm>& alarms) {
    std::vector<std::vector<std::string>> rows = {
        {"SEVERITY", "AGE", "LAST RAISED", "TIMES", "ALARM", "OBJECT"}};
    for (const Alarm& alarm : alarms) {
        rows.push_back(
            {(alarm.isCeased ? "ceased " : "") + std::string(nameOf(alarm.raised.severity)),
             ageOf(alarm), timeText(alarm.lastTime), std::to_string(alarm.timesRaised),
             classText(alarm.raised.classId), alarm.raised.object});
    }
    printTable(std::move(rows));
}

/// For people: of a value "Warm", or its type, "(uint32)", and the sender's number for it if any.
std::string fieldText(const Json& field) {
    if (!field.is_object() || !field.contains("type")) {
        return field.is_string() ? field.get<std::string>() : field.dump();
    }
    const Json& value = field["value"];
    return (value.is_null() ? '(' + fieldText(field["type"]) + ')' : fieldText(value)) +
           (field["id"] == 0 ? "" : " (id " + field["id"].dump() + ')');
}

void printLong(const std::vector<Alarm>& alarms) {
    for (const Alarm& alarm : alarms) {
        printList({alarm});
        const Json all = toJson(alarm);
        for (const auto& [name, content] : all.items()) {
            for (const Json& field : content.is_array() ? content : Json::array({content})) {
                printLine("    " + name + ": " + fieldText(field));
            }
        }
    }
}

} // namespace

int runAlarms(const Arguments& arguments) {
    const std::string object = arguments.object.substr(0, kLongestObject);
    AlarmList list =
        await([=, withCeased = arguments.history] { return readAlarms(object, withCeased); });
    std::vector<Alarm>& alarms = list.alarms;
    const std::size_t found = alarms.size();
    std::vector<std::string> leavingOut;
    const auto leaveOut = [&](const char* option, const auto& isOut) {
        const auto end = std::remove_if(alarms.begin(), alarms.end(), isOut);
        if (end != alarms.end()) {
            leavingOut.emplace_back(option);
        }
        alarms.erase(end, alarms.end());
    };
    if (arguments.vendor) {
        leaveOut("--vendor", [&](const Alarm& alarm) {
            return alarm.raised.classId.vendorId != arguments.vendor;
        });
    }
    if (!arguments.severity.empty()) {
        const std::uint32_t least = common::codeOf(arguments.severity, common::kSeverityNames);
        leaveOut("--severity", [&](const Alarm& alarm) { return alarm.raised.severity < least; });
    }
    if (arguments.since) {
        const std::int64_t first = (std::time(nullptr) - *arguments.since) * kNsPerSecond;
        leaveOut("--since", [&](const Alarm& alarm) {
            const Time changed = alarm.isCeased ? alarm.endTime : alarm.lastTime;
            return changed && *changed < first; // unknown: may be young
        });
    }
    const auto rank = [&](const Alarm& alarm) { // the worst first, or the latest
        return std::pair(arguments.history ? 0 : alarm.raised.severity, alarm.place);
    };
    std::sort(alarms.begin(), alarms.end(),
              [&](const Alarm& left, const Alarm& right) { return rank(left) > rank(right); });
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
    const std::string of = object.empty() ? "" : " of " + nameText(arguments.object);
    printLine(counted(alarms.size(), arguments.history ? "alarm" : "active alarm") + of +
              (leavingOut.empty() ? ""
                                  : "; " + joined(leavingOut, " and ") + " left out " +
                                        std::to_string(found - alarms.size())));
    if (list.notifications == 0 && object.empty() && std::getenv("RUXA_NTF_LOG") == nullptr) {
        printLine("A cluster's service forgets alarms when it restarts; the embedded one reads the "
                  "log of this user.");
    }
    printLine("The service gave " + counted(list.notifications, "notification") + of +
              (list.since ? " since " + timeText(list.since) : ""));
    return kFine;
}

} // namespace dolqctl
