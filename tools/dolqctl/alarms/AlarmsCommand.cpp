#include <cerrno>
#include <csignal>
#include <ctime>
#include <memory>

#include "Commands.h"
#include "Options.h"
#include "alarms/AlarmFilter.h"
#include "alarms/AlarmList.h"
#include "alarms/AlarmLog.h"
#include "alarms/AlarmView.h"
#include "common/AlarmNames.h"
#include "platform/ntf/log/LogPath.h"

namespace dolqctl {

namespace {

constexpr char kFooter[] =
    R"(The log is the one that the embedded notification service writes: --log, or else RUXA_NTF_LOG, or
else ruxa/notifications.jsonl in XDG_STATE_HOME or ~/.local/state. Notifications of one object and
one notification class are one alarm: the latest raise says what it is, and a cease ends it.
Lines that are no notifications are counted, reported on standard error and left out.

With --follow the active alarms come first, then every change until SIGINT or SIGTERM, which end
the command with exit code 0. It goes on when the log is rotated or truncated; alarms stay active
until they are ceased. --json then prints one document a line.

Example:
  dolqctl alarms --severity major+ --object managedElement=1 --since 2h)";

struct Arguments {
    std::string log;
    bool history = false;
    bool follow = false;
    bool json = false;
    std::string severity;
    std::string object;
    std::string since;
};

volatile std::sig_atomic_t hasEnded = 0;

/// SIGINT and SIGTERM end --follow in order, also out of a read that waits.
void endOnSignals() {
    struct sigaction action {};
    action.sa_handler = [](int) { hasEnded = 1; };
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

AlarmFilter filterOf(const Arguments& arguments) {
    AlarmFilter filter;
    filter.object = arguments.object;
    if (!arguments.severity.empty()) {
        filter.severities = parseSeverities(arguments.severity);
    }
    if (!arguments.since.empty()) {
        filter.sinceNs = parseSince(arguments.since);
    }
    return filter;
}

AlarmView::Layout layoutOf(const Arguments& arguments) {
    if (!arguments.json) {
        return AlarmView::Layout::Rows;
    }
    return arguments.follow ? AlarmView::Layout::Stream : AlarmView::Layout::Json;
}

const char* stateText(AlarmList::Change change) {
    switch (change) {
    case AlarmList::Change::Raised:
        return "raised";
    case AlarmList::Change::RaisedAgain:
        return "again";
    default:
        return "ceased";
    }
}

/// Reads the log into the list of alarms, and shows of it what was asked for.
class AlarmsCommand {
public:
    AlarmsCommand(const Arguments& arguments, Output& output)
        : m_arguments(arguments), m_filter(filterOf(arguments)), m_output(output),
          m_log(arguments.log.empty() ? platform::ntf::notificationLogPath()
                                      : std::filesystem::path(arguments.log),
                arguments.follow),
          m_view(output, layoutOf(arguments), arguments.history || arguments.follow) {}

    void run() {
        const std::string log = printable(m_log.path().string());
        if (!m_log.open()) {
            if (!m_arguments.follow) {
                throw CommandError("there is no notification log " + log +
                                   ": nothing was sent yet, or the programs log elsewhere, see "
                                   "RUXA_NTF_LOG and --log");
            }
            tell("there is no notification log " + log + " yet: waiting for it");
        }
        if (m_arguments.follow) {
            endOnSignals();
        }
        m_view.begin(m_log.path().string());
        m_output.flush();
        read(m_arguments.history ? Show::Ends : Show::Nothing);
        if (hasEnded != 0) {
            return;
        }
        for (const Alarm* const alarm : m_alarms.active()) {
            show(*alarm, "active");
        }
        m_view.end(m_log.counts(), m_ceasesWithoutAlarm);
        report();
        constexpr timespec kInterval = {0, 200'000'000};
        while (m_arguments.follow && hasEnded == 0 && m_output.flush()) {
            nanosleep(&kInterval, nullptr);
            read(Show::Changes);
            report();
        }
    }

private:
    enum class Show { Nothing, Ends, Changes };

    /// What there is now.
    void read(Show what) {
        for (std::optional<platform::ntf::AlarmRecord> record;
             hasEnded == 0 && m_log.next(record);) {
            m_view.progress(m_log);
            if (record) {
                take(*record, what);
            }
        }
    }

    void take(const platform::ntf::AlarmRecord& record, Show what) {
        using Change = AlarmList::Change;
        const AlarmList::Applied applied = m_alarms.apply(record);
        if (applied.change == Change::None) {
            ++m_ceasesWithoutAlarm;
        } else if (what == Show::Changes ||
                   (what == Show::Ends && applied.change == Change::Ceased)) {
            show(*applied.alarm, stateText(applied.change));
        }
    }

    void show(const Alarm& alarm, const char* state) {
        if (m_filter.matches(alarm)) {
            m_view.show(alarm, state);
        }
    }

    /// What was left out since the last report.
    void report() {
        const AlarmLog::Counts& counts = m_log.counts();
        if (counts.skipped != m_reported) {
            m_reported = counts.skipped;
            tell("lines of " + printable(m_log.path().string()) +
                 " that are no whole notifications, left out: " + std::to_string(counts.skipped));
        }
    }

    const Arguments& m_arguments;
    const AlarmFilter m_filter;
    Output& m_output;
    AlarmLog m_log;     ///< the source,
    AlarmList m_alarms; ///< the list,
    AlarmView m_view;   ///< and the view
    std::uint64_t m_ceasesWithoutAlarm = 0;
    std::uint64_t m_reported = 0;
};

} // namespace

void addAlarmsCommand(CommandLine& commandLine) {
    const auto arguments = std::make_shared<Arguments>();
    Options options =
        commandLine.add("alarms", "List the active alarms", kFooter, [arguments](Output& output) {
            AlarmsCommand(*arguments, output).run();
            return kFine;
        });
    options.value("--log", "FILE", arguments->log, "The notification log to read");
    options.flag("--history", arguments->history,
                 "Also the alarms that were ceased, each when it ended, before the active ones");
    options.value("--severity", joined(common::kClientSeverityNames, "|"), arguments->severity,
                  "Only these, joined by commas; minor+ means minor and worse");
    options.value("--object", "DN", arguments->object,
                  "Only this notification object and those it contains, e.g. managedElement=1");
    options.value("--since", "TIME", arguments->since,
                  "Only those raised or ceased since then: 2024-02-29T12:34:56Z, or 90s, 10m, "
                  "6h, 2d ago");
    options.flag("--follow", arguments->follow, "Then wait for changes and print each");
    options.flag("--json", arguments->json, "Print JSON");
}

} // namespace dolqctl
