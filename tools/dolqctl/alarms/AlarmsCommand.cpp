#include <algorithm>
#include <csignal>
#include <ctime>
#include <functional>
#include <optional>
#include <tuple>

#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Output.h"
#include "alarms/AlarmFilter.h"
#include "alarms/AlarmList.h"
#include "alarms/AlarmLog.h"
#include "alarms/AlarmView.h"
#include "common/AlarmNames.h"
#include "platform/ntf/log/LogPath.h"

namespace dolqctl {

namespace {

using Json = nlohmann::ordered_json;

constexpr char kOtherLogs[] =
    "Other users, and programs with another RUXA_NTF_LOG, log elsewhere: see --log.";

volatile std::sig_atomic_t hasEnded = 0;

/// SIGINT and SIGTERM end --follow in order, also out of a read that waits.
void endOnSignals() {
    struct sigaction action {};
    action.sa_handler = [](int) { hasEnded = 1; };
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

void open(AlarmLog& log, const AlarmsArguments& arguments) {
    if (log.path().empty()) {
        throw CommandError("neither RUXA_NTF_LOG nor XDG_STATE_HOME nor HOME says where the "
                           "notification log is: set RUXA_NTF_LOG, or give --log");
    }
    const std::string service = arguments.log.empty() ? otherService() : "";
    const std::string elsewhere =
        "alarms go to another service here, " + pathText(service) +
        ":\nlook with its own reader, for OpenSAF ntfread or ntfsubscribe";
    const bool isThere = log.open();
    const std::string path = pathText(log.path().string());
    if (!isThere && !arguments.follow) {
        throw CommandError(service.empty()
                               ? "there is no log " + path +
                                     ": none was written, or it was moved\n" + kOtherLogs
                               : elsewhere);
    }
    if (!service.empty()) {
        tell(elsewhere + ".\nThis is the log of the embedded service.");
    }
    if (!isThere) {
        tell("there is no log yet: waiting for " + path);
    }
}

/// Takes what the log holds now into the list.
void read(AlarmLog& log, AlarmList& list,
          const std::function<void(const AlarmList::Applied&)>& onChange) {
    const std::uint64_t skippedBefore = log.counts().skipped;
    for (std::optional<platform::ntf::AlarmRecord> record; hasEnded == 0 && log.next(record);) {
        const AlarmList::Applied applied =
            record ? list.apply(std::move(*record)) : AlarmList::Applied();
        if (applied.alarm != nullptr) {
            onChange(applied);
        }
    }
    if (log.counts().skipped != skippedBefore) {
        tell("lines of " + pathText(log.path().string()) +
             " that are no whole notifications, left out: " + std::to_string(log.counts().skipped));
    }
}

/// Those that match, and all of `ceased`, in the order of the output.
std::vector<const Alarm*> inOrder(const AlarmList& list, const std::vector<Alarm>& ceased,
                                  const AlarmFilter& filter, bool bySeverity) {
    std::vector<const Alarm*> alarms = list.active();
    const auto isOther = [&](const Alarm* alarm) { return !filter.matches(*alarm); };
    alarms.erase(std::remove_if(alarms.begin(), alarms.end(), isOther), alarms.end());
    for (const Alarm& alarm : ceased) {
        alarms.push_back(&alarm);
    }
    const auto place = [bySeverity](const Alarm& alarm) { // ~: the greatest first
        const platform::ntf::AlarmRecord& raised = alarm.raised;
        return std::make_tuple(bySeverity ? ~raised.perceivedSeverity : 0, ~alarm.changeTimeNs(),
                               std::string_view(raised.notificationObject), raised.majorId,
                               raised.minorId);
    };
    std::sort(alarms.begin(), alarms.end(),
              [&](const Alarm* left, const Alarm* right) { return place(*left) < place(*right); });
    return alarms;
}

const char* stateText(const Alarm& alarm) { return alarm.endTimeNs ? "ceased" : "active"; }

void printSummary(const AlarmsArguments& arguments, const AlarmLog& log,
                  const std::vector<const Alarm*>& alarms, std::size_t shown, Output& output) {
    const bool isFiltered = !(arguments.severity + arguments.object + arguments.since).empty();
    const std::string what = arguments.history ? "alarm" : "active alarm";
    const std::string matching = isFiltered ? " that match" : "";
    output.line(alarms.empty()
                    ? "No " + what + 's' + matching
                    : counted(alarms.size(), what) + matching + ": " + severitiesText(alarms) +
                          (shown < alarms.size() ? "; " + std::to_string(shown) + " shown" : ""));
    const AlarmLog::Counts& counts = log.counts();
    const std::string path = pathText(log.path().string());
    output.line(counts.notifications == 0
                    ? "No notifications in " + path
                    : counted(counts.notifications, "notification") + " since " +
                          timeText(counts.firstTimeNs) + " in " + path);
    if (alarms.empty() && arguments.log.empty()) {
        output.line(std::string(kOtherLogs));
    }
}

} // namespace

int runAlarms(const AlarmsArguments& arguments, Output& output) {
    const AlarmFilter filter(arguments.severity, arguments.object, arguments.since);
    AlarmLog log(arguments.log.empty() ? platform::ntf::notificationLogPath()
                                       : std::filesystem::path(arguments.log),
                 arguments.follow);
    AlarmList list;
    AlarmView view(output, arguments.history || arguments.follow, arguments.isLong);
    const auto show = [&](const Alarm& alarm, const char* state) {
        if (arguments.json) {
            output.printLine(toJson(alarm, state));
        } else {
            view.add(alarm, state);
        }
    };
    open(log, arguments);
    if (arguments.follow) {
        endOnSignals();
        if (!arguments.json) {
            view.print(); // the heading, while the log is read
        }
        output.flush();
    }
    std::vector<Alarm> ceased;
    read(log, list, [&](const AlarmList::Applied& applied) {
        if (arguments.history && applied.alarm->endTimeNs && filter.matches(*applied.alarm)) {
            ceased.push_back(*applied.alarm);
        }
    });
    if (hasEnded != 0) {
        return kFine;
    }
    const bool bySeverity = arguments.sort.value_or(arguments.history ? 1 : 0) == 0;
    const std::vector<const Alarm*> alarms = inOrder(list, ceased, filter, bySeverity);
    std::vector<const Alarm*> shown = alarms;
    shown.resize(std::min<std::size_t>(shown.size(), arguments.limit.value_or(shown.size())));
    if (arguments.json && !arguments.follow) {
        Json document = {{"log", log.path().string()}, {"alarms", Json::array()}};
        for (const Alarm* const alarm : shown) {
            document["alarms"].push_back(toJson(*alarm, stateText(*alarm)));
        }
        document["notifications"] = log.counts().notifications;
        document["ceasesWithoutAlarm"] = list.ceasesWithoutAlarm();
        document["skippedLines"] = log.counts().skipped;
        output.print(document);
        return kFine;
    }
    for (const Alarm* const alarm : shown) {
        show(*alarm, stateText(*alarm));
    }
    if (!arguments.json) {
        if (!shown.empty()) {
            view.print();
            output.line();
        }
        printSummary(arguments, log, alarms, shown.size(), output);
    }
    constexpr timespec kInterval = {0, 200'000'000};
    while (arguments.follow && hasEnded == 0 && output.flush()) {
        nanosleep(&kInterval, nullptr);
        read(log, list, [&](const AlarmList::Applied& applied) {
            if (filter.matches(*applied.alarm)) {
                show(*applied.alarm, applied.change);
            }
        });
        if (!arguments.json) {
            view.print();
        }
    }
    return kFine;
}

} // namespace dolqctl
