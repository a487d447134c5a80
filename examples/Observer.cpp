#include "Observer.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string_view>
#include <utility>

#include <unistd.h>

#include "AlarmRecord.h"
#include "NotificationLog.h"

namespace {

/// The trace's file, or an empty path when the trace goes elsewhere.
std::filesystem::path traceFilePath() {
    constexpr std::string_view kScheme = "file:";
    const char* variable = std::getenv("RUXA_TRACE_SINK");
    const std::string_view sink = variable != nullptr ? variable : "";
    return sink.substr(0, kScheme.size()) == kScheme ? sink.substr(kScheme.size()) : "";
}

std::string valueText(const ruxa::ntf::Element& element) {
    std::ostringstream text;
    std::visit(
        [&text](const auto& value) {
            if constexpr (!std::is_same_v<std::decay_t<decltype(value)>, std::monostate>) {
                text << value;
            }
        },
        element.value);
    return text.str();
}

void printField(const char* name, const std::string& value) {
    if (!value.empty()) {
        std::cout << "      " << name << value << '\n';
    }
}

void printNotification(const ruxa::ntf::AlarmRecord& alarm) {
    std::cout << "   NOTIFICATION " << alarm.notificationId << ", "
              << ruxa::ntf::formatTime(alarm.eventTimeNs) << '\n';
    printField("object         ", alarm.notificationObject);
    printField("severity       ", ruxa::ntf::severityName(alarm.perceivedSeverity));
    printField("alarm          ", std::to_string(alarm.majorId) + "/" +
                                      std::to_string(alarm.minorId) + " of vendor " +
                                      std::to_string(alarm.vendorId));
    printField("text           ", alarm.additionalText);
    for (const ruxa::ntf::Element& info : alarm.additionalInfo) {
        printField("information    ", valueText(info));
    }
    for (const ruxa::ntf::Element& action : alarm.proposedRepairActions) {
        printField("repair action  ", valueText(action));
    }
    printField("further        ", std::string("event type ") +
                                      ruxa::ntf::eventTypeName(alarm.eventType) +
                                      ", probable cause " + std::to_string(alarm.probableCause) +
                                      ", trend " + std::to_string(alarm.trend) + ", threshold " +
                                      std::to_string(alarm.thresholdId));
}

/// A trace line reads "time process thread object group unit:line text".
void printTraceLine(const std::string& line, bool isShortened) {
    constexpr std::size_t kShortLength = 100;
    std::istringstream fields(line);
    std::string time;
    std::string process;
    std::string thread;
    std::string object;
    std::string group;
    std::string text;
    fields >> time >> process >> thread >> object >> group;
    fields.ignore(1);
    std::getline(fields, text);
    if (process != std::to_string(getpid())) {
        return;
    }
    if (isShortened && group != "0" && text.size() > kShortLength) {
        text = text.substr(0, kShortLength) + "...";
    }
    std::cout << "   trace " << group << "  " << text << '\n';
}

} // namespace

GrowingFile::GrowingFile(std::filesystem::path path) : m_path(std::move(path)), m_offset(0) {
    std::error_code absent;
    const std::uintmax_t size = std::filesystem::file_size(m_path, absent);
    m_offset = absent ? 0 : size;
}

std::vector<std::string> GrowingFile::newLines() {
    std::vector<std::string> lines;
    std::ifstream file(m_path, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(m_offset));
    // A last line without its newline is read again when it is complete.
    for (std::string line; std::getline(file, line) && !file.eof();) {
        m_offset += line.size() + 1;
        lines.push_back(std::move(line));
    }
    return lines;
}

Observer::Observer()
    : m_notificationLog(ruxa::ntf::notificationLogPath()), m_traceFile(traceFilePath()) {}

void Observer::printPlaces() const {
    const bool isFile = !m_traceFile.path().empty();
    std::cout << "Notifications, one JSON line each: " << m_notificationLog.path().string() << '\n'
              << "Trace: "
              << (isFile ? m_traceFile.path().string()
                         : "on stderr or syslog; RUXA_TRACE_SINK=file:PATH shows it here")
              << '\n';
}

std::size_t Observer::printNews() {
    std::size_t count = 0;
    for (const std::string& line : m_notificationLog.newLines()) {
        const ruxa::ntf::ParsedLine parsed = ruxa::ntf::parseLine(line);
        if (parsed.kind != ruxa::ntf::ParsedLine::Kind::Notification) {
            std::cout << "   unreadable line in the notification log: " << parsed.reason << '\n';
        } else if (parsed.record.processId == getpid()) {
            printNotification(parsed.record);
            ++count;
        }
    }
    if (count == 0) {
        std::cout << "   no notification\n";
    }
    // The notification says itself what the trace of its way says at length.
    for (const std::string& line : m_traceFile.newLines()) {
        printTraceLine(line, count > 0);
    }
    std::cout << std::flush;
    return count;
}
