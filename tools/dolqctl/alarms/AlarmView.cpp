#include "alarms/AlarmView.h"

#include <cstring>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <optional>
#include <sstream>

#include <nlohmann/json.hpp>
#include <unistd.h>

#include "common/AlarmNames.h"

namespace dolqctl {

namespace {

using Json = nlohmann::ordered_json;

constexpr char kIndent[] = "          "; // of what stands below a row
constexpr char kNothing[] = "-";
constexpr char kCorrelationPrefix[] = "CI=";

std::string dump(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// What a "CI=" entry says: who reported the alarm, and the events it is correlated with.
struct Correlation {
    std::string systemUuid;
    std::string computeName;
    bool isPrimary = false;         ///< caused by the one event in `uuids`, "" for none
    std::vector<std::string> uuids; ///< correlation UUIDs
};

/// Nothing when `entry` is not of the form that the library writes. Values are not escaped in it,
/// so a quote in one of them spoils it.
std::optional<Correlation> decodeCorrelation(const std::string& entry) {
    if (entry.rfind(kCorrelationPrefix, 0) != 0) {
        return std::nullopt;
    }
    try {
        const Json json = Json::parse(entry.substr(std::strlen(kCorrelationPrefix)));
        Correlation correlation;
        json.at("C").at(0).at("I").get_to(correlation.systemUuid);
        json.at("C").at(0).at("n").get_to(correlation.computeName);
        correlation.isPrimary = json.contains("P");
        if (correlation.isPrimary) {
            correlation.uuids.push_back(json.at("P").get<std::string>());
        } else {
            json.at("S").get_to(correlation.uuids);
        }
        return correlation;
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}

std::string severityText(std::uint32_t severity) {
    const std::string name = common::nameOf(severity, common::kSeverityNames);
    return severity < std::size(common::kSeverityNames)
               ? name
               : name + " (" + std::to_string(severity) + ')';
}

Json toJson(const std::string& correlationInfo) {
    if (correlationInfo.empty()) {
        return nullptr;
    }
    const std::optional<Correlation> correlation = decodeCorrelation(correlationInfo);
    if (!correlation) {
        return {{"undecoded", correlationInfo}};
    }
    Json json = {{"systemUuid", correlation->systemUuid},
                 {"computeName", correlation->computeName}};
    if (correlation->isPrimary) {
        json["primary"] = correlation->uuids.front();
    } else {
        json["secondary"] = correlation->uuids;
    }
    return json;
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
    json["correlation"] = toJson(alarm.correlationInfo);
    json["programGroup"] = alarm.programGroup.empty() ? Json(nullptr) : Json(alarm.programGroup);
    return json;
}

/// "2024-02-29T12:34:56Z": without the fraction.
std::string secondsOf(std::int64_t timeNs) {
    const std::string time = platform::ntf::formatTime(timeNs);
    return time.substr(0, time.rfind('.')) + "Z";
}

/// "primary a1b2..., reported by compute-3 (0f4c...)"
std::string correlationText(const std::string& correlationInfo) {
    const std::optional<Correlation> correlation = decodeCorrelation(correlationInfo);
    if (!correlation) {
        return "undecoded " + correlationInfo;
    }
    std::string text = correlation->isPrimary ? "primary" : "secondary";
    const char* separator = " ";
    for (const std::string& uuid : correlation->uuids) {
        text += uuid.empty() ? ", without an event" : separator + uuid;
        separator = ", ";
    }
    return text + ", reported by " + correlation->computeName + " (" + correlation->systemUuid +
           ")";
}

Style styleOf(const Alarm& alarm) {
    if (alarm.endTimeNs) {
        return Style::Faint;
    }
    constexpr std::uint32_t kMajor = 4; // SA_NTF_SEVERITY_MAJOR
    return alarm.severity >= kMajor ? Style::Bad : Style::Warning;
}

struct Cells {
    std::string state, severity, first, last, ended, times, classId, object;
};

/// Every column before the last has a width that its contents are known to keep, save a severity
/// that is unknown.
std::string row(const Cells& cells, bool withState) {
    std::ostringstream text;
    text << std::left;
    if (withState) {
        text << std::setw(8) << cells.state;
    }
    text << std::setw(14) << cells.severity << ' ' << std::setw(22) << cells.first << std::setw(22)
         << cells.last;
    if (withState) {
        text << std::setw(22) << cells.ended;
    }
    text << std::right << std::setw(5) << cells.times << "  " << std::left << std::setw(18)
         << cells.classId << cells.object;
    return text.str();
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
    const std::string classId = std::to_string(alarm.vendorId) + "/" +
                                std::to_string(alarm.majorId) + "/" + std::to_string(alarm.minorId);
    const Cells cells = {state,
                         severityText(alarm.severity),
                         secondsOf(alarm.firstTimeNs),
                         secondsOf(alarm.lastTimeNs),
                         alarm.endTimeNs ? secondsOf(*alarm.endTimeNs) : kNothing,
                         std::to_string(alarm.timesRaised),
                         classId,
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
                       {"tornLines", counts.torn},
                       {"foreignLines", counts.foreign}};
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
