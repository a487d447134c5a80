#include "alarms/AlarmView.h"

#include <algorithm>
#include <cstring>
#include <iostream>
#include <iterator>
#include <vector>

#include <nlohmann/json.hpp>
#include <unistd.h>

#include "common/AlarmNames.h"

namespace dolqctl {

namespace {

using Json = nlohmann::ordered_json;

constexpr char kIndent[] = "          "; // of what stands below a row
constexpr char kCorrelationPrefix[] = "CI=";

std::string dump(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string severityText(std::uint32_t severity) {
    const std::string name = common::nameOf(severity, common::kSeverityNames);
    return severity < std::size(common::kSeverityNames)
               ? name
               : name + " (" + std::to_string(severity) + ')';
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

Json toJson(const Alarm& alarm, const char* state) {
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

/// "2024-02-29T12:34:56Z": without the fraction.
std::string secondsOf(std::int64_t timeNs) {
    const std::string time = platform::ntf::formatTime(timeNs);
    return time.substr(0, time.rfind('.')) + "Z";
}

/// "primary a1b2..., reported by compute-3 (0f4c...)"
std::string correlationText(const std::string& entry) {
    const Json correlation = correlationOf(entry);
    if (correlation.contains("undecoded")) {
        return "undecoded " + entry;
    }
    const std::string reporter = ", reported by " +
                                 correlation.at("computeName").get<std::string>() + " (" +
                                 correlation.at("systemUuid").get<std::string>() + ')';
    if (correlation.contains("secondary")) {
        const std::vector<std::string> events = correlation.at("secondary");
        return "secondary " + joined(events) + reporter;
    }
    const std::string event = correlation.at("primary");
    return "primary" + (event.empty() ? ", without an event" : ' ' + event) + reporter;
}

Style styleOf(const Alarm& alarm) {
    if (alarm.endTimeNs) {
        return Style::Faint;
    }
    constexpr std::uint32_t kMajor = 4; // SA_NTF_SEVERITY_MAJOR
    return alarm.severity >= kMajor ? Style::Bad : Style::Warning;
}

/// The widths of the columns, which their contents are known to keep, save an unknown severity.
/// The object, which is the last, has none.
constexpr std::size_t kWidths[] = {8, 15, 22, 22, 22, 7, 18, 0};
constexpr std::size_t kState = 0;
constexpr std::size_t kCeased = 4;
constexpr std::size_t kTimesWidth = 5; // aligned to the right

std::string row(const std::vector<std::string>& cells, bool withState) {
    std::string text;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (withState || (i != kState && i != kCeased)) {
            const std::size_t size = cells[i].size();
            text += cells[i];
            text.append(
                kWidths[i] > size ? kWidths[i] - size : std::min(kWidths[i], std::size_t{1}), ' ');
        }
    }
    return text;
}

} // namespace

AlarmView::AlarmView(Output& output, Layout layout, bool withState)
    : m_output(output), m_layout(layout), m_withState(withState),
      m_showsProgress(isatty(STDERR_FILENO) == 1) {}

void AlarmView::begin(const std::string& logPath) {
    if (m_layout == Layout::Rows) {
        m_output.line(
            m_output.styled(Style::Bold, row({"STATE", "SEVERITY", "FIRST RAISED", "LAST RAISED",
                                              "CEASED", "TIMES", "CLASS ID", "OBJECT"},
                                             m_withState)));
    } else if (m_layout == Layout::Json) {
        m_output.line("{\n\"log\": " + dump(logPath) + ",\n\"alarms\": [");
    }
}

void AlarmView::show(const Alarm& alarm, const char* state) {
    clearProgress();
    switch (m_layout) {
    case Layout::Rows:
        printRow(alarm, state);
        break;
    case Layout::Json:
        m_output.stream() << (m_isFirst ? "" : ",\n") << dump(toJson(alarm, state));
        break;
    case Layout::Stream:
        m_output.line(dump(toJson(alarm, state)));
        break;
    }
    m_isFirst = false;
}

void AlarmView::printRow(const Alarm& alarm, const char* state) {
    std::string times = std::to_string(alarm.timesRaised);
    times.insert(0, kTimesWidth - std::min(kTimesWidth, times.size()), ' ');
    const std::vector<std::string> cells = {state,
                                            severityText(alarm.severity),
                                            secondsOf(alarm.firstTimeNs),
                                            secondsOf(alarm.lastTimeNs),
                                            alarm.endTimeNs ? secondsOf(*alarm.endTimeNs) : "-",
                                            times,
                                            std::to_string(alarm.vendorId) + '/' +
                                                std::to_string(alarm.majorId) + '/' +
                                                std::to_string(alarm.minorId),
                                            printable(alarm.object)};
    m_output.line(m_output.styled(styleOf(alarm), row(cells, m_withState)));
    const auto below = [this](const char* what, const std::string& text) {
        m_output.line(kIndent + (what + printable(text)));
    };
    if (!alarm.text.empty()) {
        below("text: ", alarm.text);
    }
    for (const std::string& entry : alarm.info) {
        below("info: ", entry);
    }
    if (!alarm.programGroup.empty()) {
        below("program group: ", alarm.programGroup);
    }
    if (!alarm.correlationInfo.empty()) {
        below("correlation: ", correlationText(alarm.correlationInfo));
    }
}

void AlarmView::end(const AlarmLog::Counts& counts, std::uint64_t ceasesWithoutAlarm) {
    clearProgress();
    if (m_layout != Layout::Json) {
        return;
    }
    const Json json = {{"notifications", counts.notifications},
                       {"ceasesWithoutAlarm", ceasesWithoutAlarm},
                       {"skippedLines", counts.skipped}};
    // The document goes on where its list of alarms ends.
    m_output.line((m_isFirst ? "],\n" : "\n],\n") + dump(json).substr(1));
}

void AlarmView::progress(const AlarmLog& log) {
    constexpr std::uint64_t kStep = 20000;
    const std::uint64_t lines = log.counts().lines;
    if (m_showsProgress && lines % kStep == 0 && log.percentRead() != 0) {
        m_hasProgress = true;
        std::cerr << "\rreading: " << log.percentRead() << " %, " << lines << " lines "
                  << std::flush;
    }
}

void AlarmView::clearProgress() {
    if (m_hasProgress) {
        std::cerr << "\r\033[K" << std::flush;
    }
    m_hasProgress = false;
}

} // namespace dolqctl
