#include "alarms/AlarmView.h"

#include <cstring>
#include <ctime>
#include <functional>
#include <iomanip>
#include <iterator>
#include <map>
#include <sstream>
#include <utility>

#include <nlohmann/json.hpp>

#include "common/AlarmNames.h"

namespace dolqctl {

namespace {

using Json = nlohmann::ordered_json;

constexpr char kCorrelationPrefix[] = "CI=";
constexpr std::int64_t kNsPerSecond = 1'000'000'000;

std::string severityText(std::uint32_t severity) {
    const std::string name = common::nameOf(severity, common::kSeverityNames);
    return severity < std::size(common::kSeverityNames)
               ? name
               : name + " (" + std::to_string(severity) + ')';
}

Style styleOf(const Alarm& alarm) {
    constexpr std::uint32_t kMajor = 4; // SA_NTF_SEVERITY_MAJOR
    if (alarm.endTimeNs) {
        return Style::Faint;
    }
    return alarm.severity >= kMajor ? Style::Bad : Style::Warning;
}

/// What a "CI=" entry says: who reported the alarm, and the one event that caused it ("" for none)
/// or those that led to it. Values are not escaped in it, so a quote in one of them spoils it.
Json correlationOf(const std::string& entry) {
    if (entry.empty()) {
        return nullptr;
    }
    try {
        const Json json = Json::parse(entry.substr(std::strlen(kCorrelationPrefix)));
        const Json& reporter = json.at("C").at(0);
        Json correlation = {{"systemUuid", reporter.at("I").get<std::string>()},
                            {"computeName", reporter.at("n").get<std::string>()}};
        if (json.contains("P")) {
            correlation["primary"] = json.at("P").get<std::string>();
        } else {
            correlation["secondary"] = json.at("S").get<std::vector<std::string>>();
        }
        return correlation;
    } catch (const Json::exception&) {
        return {{"undecoded", entry}};
    }
}

/// "primary a1b2..., reported by compute-3 (0f4c...)"
std::string correlationText(const std::string& entry) {
    const Json correlation = correlationOf(entry);
    if (correlation.contains("undecoded")) {
        return "undecoded " + entry;
    }
    std::string events;
    if (correlation.contains("secondary")) {
        events = "secondary " + joined(correlation.at("secondary").get<std::vector<std::string>>());
    } else {
        const std::string event = correlation.at("primary");
        events = "primary" + (event.empty() ? ", without an event" : ' ' + event);
    }
    return events + ", reported by " + correlation.at("computeName").get<std::string>() + " (" +
           correlation.at("systemUuid").get<std::string>() + ')';
}

/// Local time, in the words of strftime(3).
std::string formatted(std::int64_t timeNs, const char* format) {
    const std::time_t seconds = timeNs / kNsPerSecond - (timeNs % kNsPerSecond < 0 ? 1 : 0);
    std::tm local{};
    localtime_r(&seconds, &local);
    std::ostringstream text;
    text << std::put_time(&local, format);
    return text.str();
}

std::string dateText(std::int64_t timeNs) { return formatted(timeNs, "%F %T"); }

std::vector<Table::Column> columns(bool withState) {
    std::vector<Table::Column> columns = {{"SEVERITY", Align::Left, 8},
                                          {withState ? "TIME" : "LAST RAISED", Align::Left, 12},
                                          {"TIMES", Align::Right},
                                          {"ALARM"},
                                          {"OBJECT", Align::Left, 0, true}};
    if (withState) {
        columns.insert(columns.begin(), {"STATE", Align::Left, 6});
    }
    return columns;
}

} // namespace

AlarmView::AlarmView(Output& output, bool withState, bool isLong)
    : m_output(output), m_withState(withState), m_isLong(isLong), m_table(columns(withState)) {}

void AlarmView::add(const Alarm& alarm, const char* state) {
    const Style style = styleOf(alarm);
    std::vector<Table::Cell> cells = {
        {severityText(alarm.severity), style},
        {timeText(m_withState ? alarm.changeTimeNs() : alarm.lastTimeNs)},
        {std::to_string(alarm.timesRaised)},
        {std::to_string(alarm.majorId) + '/' + std::to_string(alarm.minorId)},
        {alarm.object}};
    if (m_withState) {
        cells.insert(cells.begin(), {state, style});
    }
    m_table.add(std::move(cells));
    if (m_isLong) {
        addBelow(alarm);
    }
}

void AlarmView::addBelow(const Alarm& alarm) {
    const auto below = [this](const char* what, const std::string& text) {
        if (!text.empty()) {
            m_table.addBelow(std::string(what) + text);
        }
    };
    below("raised: ", dateText(alarm.firstTimeNs) +
                          (alarm.timesRaised == 1 ? "" : ", last " + dateText(alarm.lastTimeNs)));
    below("ceased: ", alarm.endTimeNs ? dateText(*alarm.endTimeNs) : "");
    below("text: ", alarm.text);
    for (const std::string& entry : alarm.info) {
        below("info: ", printable(entry));
    }
    below("program group: ", alarm.programGroup);
    below("correlation: ",
          alarm.correlationInfo.empty() ? "" : correlationText(alarm.correlationInfo));
}

nlohmann::ordered_json toJson(const Alarm& alarm, const char* state) {
    Json json;
    json["state"] = state;
    json["object"] = alarm.object;
    json["classId"] = {
        {"vendorId", alarm.vendorId}, {"majorId", alarm.majorId}, {"minorId", alarm.minorId}};
    json["severity"] = severityText(alarm.severity);
    json["firstTime"] = platform::ntf::formatTime(alarm.firstTimeNs);
    json["lastTime"] = platform::ntf::formatTime(alarm.lastTimeNs);
    json["endTime"] =
        alarm.endTimeNs ? Json(platform::ntf::formatTime(*alarm.endTimeNs)) : Json(nullptr);
    json["timesRaised"] = alarm.timesRaised;
    json["text"] = alarm.text;
    json["info"] = alarm.info;
    json["correlation"] = correlationOf(alarm.correlationInfo);
    json["programGroup"] = alarm.programGroup.empty() ? Json(nullptr) : Json(alarm.programGroup);
    return json;
}

std::string timeText(std::int64_t timeNs) {
    constexpr std::time_t kHalfAYear = 183L * 24 * 60 * 60;
    const std::time_t now = std::time(nullptr);
    const std::time_t age = now - timeNs / kNsPerSecond;
    const bool isToday = formatted(timeNs, "%F") == formatted(now * kNsPerSecond, "%F");
    return formatted(timeNs, isToday                        ? "%T"
                             : age >= 0 && age < kHalfAYear ? "%b %e %H:%M"
                                                            : "%b %e  %Y");
}

std::string severitiesText(const std::vector<const Alarm*>& alarms) {
    std::map<std::uint32_t, std::size_t, std::greater<>> counts;
    for (const Alarm* const alarm : alarms) {
        ++counts[alarm->severity];
    }
    std::vector<std::string> texts;
    for (const auto& [severity, count] : counts) {
        texts.push_back(std::to_string(count) + ' ' + severityText(severity));
    }
    return joined(texts);
}

} // namespace dolqctl
