#include "Observer.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <nlohmann/json.hpp>
#include <unistd.h>

namespace {

using Json = nlohmann::json;

/// The service has a default path, but there the log of other programs may lie.
std::filesystem::path notificationLogPath() {
    const char* variable = std::getenv("RUXA_NTF_LOG");
    if (variable == nullptr || *variable == '\0') {
        throw std::runtime_error("RUXA_NTF_LOG is not set: set it to the notification log's path");
    }
    return variable;
}

/// The trace's file, or an empty path when the trace goes elsewhere.
std::filesystem::path traceFilePath() {
    constexpr std::string_view kScheme = "file:";
    const char* variable = std::getenv("RUXA_TRACE_SINK");
    const std::string_view sink = variable != nullptr ? variable : "";
    return sink.substr(0, kScheme.size()) == kScheme ? sink.substr(kScheme.size()) : "";
}

void printField(const char* name, const std::string& value) {
    if (!value.empty()) {
        std::cout << "      " << name << value << '\n';
    }
}

void printValues(const char* name, const Json& elements) {
    for (const Json& element : elements) {
        const Json& value = element.at("value");
        printField(name, value.is_string() ? value.get<std::string>() : value.dump());
    }
}

void printNotification(const Json& alarm) {
    const Json& classId = alarm.at("classId");
    std::cout << "   NOTIFICATION " << alarm.at("notificationId").get<std::string>() << ", "
              << alarm.at("eventTime").get<std::string>() << '\n';
    printField("object         ", alarm.at("notificationObject"));
    printField("severity       ", alarm.at("perceivedSeverity"));
    printField("alarm          ", classId.at("majorId").dump() + "/" +
                                      classId.at("minorId").dump() + " of vendor " +
                                      classId.at("vendorId").dump());
    printField("text           ", alarm.at("additionalText"));
    printValues("information    ", alarm.at("additionalInfo"));
    printValues("repair action  ", alarm.at("proposedRepairActions"));
    printField("further        ", "event type " + alarm.at("eventType").get<std::string>() +
                                      ", probable cause " + alarm.at("probableCause").dump() +
                                      ", trend " + alarm.at("trend").dump() + ", threshold " +
                                      alarm.at("thresholdId").dump());
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
        text.replace(kShortLength, std::string::npos, "...");
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

Observer::Observer() : m_notificationLog(notificationLogPath()), m_traceFile(traceFilePath()) {}

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
        const Json alarm = Json::parse(line, nullptr, false);
        if (!alarm.is_object()) {
            std::cout << "   unreadable line in the notification log: " << line << '\n';
        } else if (alarm.at("processId") == getpid()) {
            printNotification(alarm);
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
