#include "alarms/AlarmLog.h"

#include <cerrno>
#include <fstream>
#include <limits>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "Commands.h"
#include "Output.h"
#include "SharedObject.h"

namespace dolqctl {

namespace {

using platform::ntf::AlarmRecord;

constexpr std::streamsize kLongestLine = 4L * 1024 * 1024; // of a longer one the beginning is read
constexpr std::uint32_t kCleared = 0;                      // SA_NTF_SEVERITY_CLEARED

using ActiveAlarms = std::unordered_map<std::string, Alarm>; // by class and object

void apply(AlarmRecord record, ActiveAlarms& active, std::vector<Alarm>* ceased) {
    const std::string key = std::to_string(record.vendorId) + '/' + std::to_string(record.majorId) +
                            '/' + std::to_string(record.minorId) + ' ' + record.notificationObject;
    if (record.perceivedSeverity == kCleared) {
        auto ended = active.extract(key);
        if (!ended.empty() && ceased != nullptr) {
            ended.mapped().endTimeNs = record.eventTimeNs;
            ceased->push_back(std::move(ended.mapped()));
        }
        return;
    }
    Alarm& alarm = active[key];
    if (alarm.timesRaised++ == 0) {
        alarm.firstTimeNs = record.eventTimeNs;
    }
    alarm.raised = std::move(record);
}

[[noreturn]] void failToRead(const std::filesystem::path& path) {
    throw std::system_error(errno, std::generic_category(), "cannot read " + path.string());
}

} // namespace

AlarmLog readAlarmLog(const std::filesystem::path& path, bool withCeased) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error) && !error) { // opening a FIFO would wait
        throw CommandError("cannot read " + path.string() + ": it is no regular file");
    }
    std::ifstream file(path);
    if (!file.is_open()) {
        failToRead(path);
    }
    AlarmLog log;
    ActiveAlarms active;
    std::string buffer(kLongestLine, '\0');
    while (file.getline(buffer.data(), kLongestLine) || file.gcount() != 0) {
        const auto length = static_cast<std::size_t>(file.gcount()) - (file.good() ? 1 : 0);
        const auto line = std::string_view(buffer).substr(0, length);
        if (std::optional<AlarmRecord> record = platform::ntf::parseLine(line)) {
            if (log.notifications++ == 0) {
                log.firstTimeNs = record->eventTimeNs;
            }
            apply(std::move(*record), active, withCeased ? &log.alarms : nullptr);
        } else if (line.find_first_not_of(' ') != line.npos) {
            ++log.skippedLines;
        }
        if (file.fail() && !file.bad()) { // there is more of it
            file.clear();
            file.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
        }
    }
    if (file.bad()) {
        failToRead(path);
    }
    if (log.notifications == 0 && log.skippedLines != 0) {
        throw CommandError(path.string() + " holds no notification: is it a notification log?");
    }
    for (auto& [key, alarm] : active) {
        log.alarms.push_back(std::move(alarm));
    }
    return log;
}

std::string otherService() {
    const SharedObject service(kNtfLibrary);
    return !service.isLoaded() || service.contains("RUXA_NTF_LOG") ? "" : service.file();
}

std::string whyElsewhere() {
    SharedObject service(kNtfLibrary);
    if (!service.has("saNtfNotificationSend")) {
        return "programs here have no notification service: " + service.error() +
               "; see 'dolqctl doctor'";
    }
    const std::string other = otherService();
    return other.empty() ? ""
                         : "alarms go to another service here, " + other +
                               ": look with its own reader, for OpenSAF ntfread or ntfsubscribe";
}

} // namespace dolqctl
