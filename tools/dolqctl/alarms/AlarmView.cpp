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
    return alarm.endTimeNs                            ? Style::Faint
           : alarm.raised.perceivedSeverity >= kMajor ? Style::Bad
                                                      : Style::Warning;
}

/// The additional information: the leading "CI=..." entry, if there is one, and the others.
struct Info {
    explicit Info(const Alarm& alarm) {
        for (const platform::ntf::Element& element : alarm.raised.additionalInfo) {
            const std::string entry = element.value.value_or("");
            const bool isFirst = &element == &alarm.raised.additionalInfo.front();
            if (isFirst && entry.rfind(kCorrelationPrefix, 0) == 0) {
                correlation = correlationOf(entry);
            } else {
                entries.push_back(entry);
            }
        }
    }

    Json correlation;
    std::vector<std::string> entries;

private:
    /// Who reported the alarm, and the one event that caused it ("" for none) or those that led to
    /// it. Values are not escaped in an entry, so a quote in one of them spoils it.
    static Json correlationOf(const std::string& entry) {
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
};

/// "primary a1b2..., reported by compute-3 (0f4c...)"
std::string correlationText(const Json& correlation) {
    if (correlation.is_null()) {
        return "";
    }
    const auto text = [&](const char* key) { return correlation.at(key).get<std::string>(); };
    if (correlation.contains("undecoded")) {
        return "undecoded " + text("undecoded");
    }
    std::string events = "primary, without an event";
    if (correlation.contains("secondary")) {
        events = "secondary " + joined(correlation.at("secondary").get<std::vector<std::string>>());
    } else if (!text("primary").empty()) {
        events = "primary " + text("primary");
    }
    return events + ", reported by " + text("computeName") + " (" + text("systemUuid") + ')';
}

std::string programGroupOf(const Alarm& alarm) {
    const auto& actions = alarm.raised.proposedRepairActions;
    return actions.empty() ? "" : actions.front().value.value_or("");
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
    std::vector<Table::Column> columns;
    if (withState) {
        columns.push_back({"STATE", Align::Left, 6});
    }
    columns.insert(columns.end(), {{"SEVERITY", Align::Left, 8},
                                   {withState ? "TIME" : "LAST RAISED", Align::Left, 12},
                                   {"TIMES", Align::Right},
                                   {"ALARM"},
                                   {"OBJECT", Align::Left, 0, true}});
    return columns;
}

} // namespace

AlarmView::AlarmView(Output& output, bool withState, bool isLong)
    : m_output(output), m_withState(withState), m_isLong(isLong), m_table(columns(withState)) {}

void AlarmView::add(const Alarm& alarm, const char* state) {
    const Style style = styleOf(alarm);
    std::vector<Table::Cell> cells = {
        {severityText(alarm.raised.perceivedSeverity), style},
        {timeText(m_withState ? alarm.changeTimeNs() : alarm.raised.eventTimeNs)},
        {std::to_string(alarm.timesRaised)},
        {std::to_string(alarm.raised.majorId) + '/' + std::to_string(alarm.raised.minorId)},
        {alarm.raised.notificationObject}};
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
    below("raised: ",
          dateText(alarm.firstTimeNs) +
              (alarm.timesRaised == 1 ? "" : ", last " + dateText(alarm.raised.eventTimeNs)));
    below("ceased: ", alarm.endTimeNs ? dateText(*alarm.endTimeNs) : "");
    below("text: ", alarm.raised.additionalText);
    const Info info(alarm);
    for (const std::string& entry : info.entries) {
        m_table.addBelow("info: " + entry);
    }
    below("program group: ", programGroupOf(alarm));
    below("correlation: ", correlationText(info.correlation));
}

nlohmann::ordered_json toJson(const Alarm& alarm, const char* state) {
    const platform::ntf::AlarmRecord& raised = alarm.raised;
    const auto time = [](std::int64_t timeNs) { return Json(platform::ntf::formatTime(timeNs)); };
    const Info info(alarm);
    const std::string group = programGroupOf(alarm);
    return {
        {"state", state},
        {"object", raised.notificationObject},
        {"classId",
         {{"vendorId", raised.vendorId}, {"majorId", raised.majorId}, {"minorId", raised.minorId}}},
        {"severity", severityText(raised.perceivedSeverity)},
        {"firstTime", time(alarm.firstTimeNs)},
        {"lastTime", time(raised.eventTimeNs)},
        {"endTime", alarm.endTimeNs ? time(*alarm.endTimeNs) : Json(nullptr)},
        {"timesRaised", alarm.timesRaised},
        {"text", raised.additionalText},
        {"info", info.entries},
        {"correlation", info.correlation},
        {"programGroup", group.empty() ? Json(nullptr) : Json(group)}};
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
        ++counts[alarm->raised.perceivedSeverity];
    }
    std::vector<std::string> texts;
    texts.reserve(counts.size());
    for (const auto& [severity, count] : counts) {
        texts.push_back(std::to_string(count) + ' ' + severityText(severity));
    }
    return joined(texts);
}

} // namespace dolqctl
