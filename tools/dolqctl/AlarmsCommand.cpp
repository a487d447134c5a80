#include "AlarmsCommand.h"

#include <chrono>
#include <csignal>
#include <ctime>
#include <iostream>
#include <memory>

#include <CLI/CLI.hpp>
#include <unistd.h>

#include "AlarmFilter.h"
#include "AlarmList.h"
#include "AlarmPrinter.h"
#include "LogReader.h"
#include "platform/ntf/log/NotificationLog.h"

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

struct Options {
    std::string log;
    bool history = false;
    bool follow = false;
    bool json = false;
    std::string severity;
    std::string object;
    std::string since;
};

std::int64_t nowNs() {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(sinceEpoch).count();
}

AlarmFilter makeFilter(const Options& options) {
    AlarmFilter filter;
    filter.object = options.object;
    try {
        if (!options.severity.empty()) {
            filter.severities = parseSeverities(options.severity);
        }
        if (!options.since.empty()) {
            filter.sinceNs = parseSince(options.since, nowNs());
        }
    } catch (const std::invalid_argument& error) {
        throw CommandError(printable(error.what()));
    }
    return filter;
}

/// How far the reading of a long log is, for a person who waits.
class Progress {
public:
    void show(const LogReader& reader, std::uint64_t lines) {
        constexpr std::uint64_t kStep = 20000;
        if (m_isTerminal && lines % kStep == 0 && reader.size() != 0) {
            m_shown = true;
            std::cerr << "\rreading: " << 100 * reader.bytesRead() / reader.size() << " %, "
                      << lines << " lines " << std::flush;
        }
    }
    void clear() {
        if (m_shown) {
            std::cerr << "\r\033[K" << std::flush;
        }
        m_shown = false;
    }

private:
    const bool m_isTerminal = isatty(STDERR_FILENO) == 1;
    bool m_shown = false;
};

class AlarmsCommand {
public:
    AlarmsCommand(const Options& options, Output& output)
        : m_options(options), m_filter(makeFilter(options)), m_output(output),
          m_reader(options.log.empty() ? platform::ntf::notificationLogPath()
                                       : std::filesystem::path(options.log)),
          m_printer(output, layout(options), options.history || options.follow) {}

    void run() {
        if (!m_reader.open()) {
            missing();
        }
        // What is no regular file may keep a read waiting, which a held signal would not end.
        if (m_options.follow && m_reader.size() != 0) {
            holdEnds();
        }
        m_printer.begin(m_reader.path().string());
        m_output.flush();
        readToEnd();
        m_progress.clear();
        if (m_hasEnded) {
            return;
        }
        if (!m_options.follow) {
            takeRest();
        }
        for (const Alarm* const alarm : m_alarms.active()) {
            show(*alarm, "active");
        }
        m_printer.end(m_counts);
        report();
        if (m_options.follow) {
            follow();
        }
    }

private:
    static AlarmPrinter::Layout layout(const Options& options) {
        if (!options.json) {
            return AlarmPrinter::Layout::Rows;
        }
        return options.follow ? AlarmPrinter::Layout::Stream : AlarmPrinter::Layout::Json;
    }

    void missing() const {
        const std::string log = printable(m_reader.path().string());
        if (!m_options.follow) {
            throw CommandError("there is no notification log " + log +
                               ": nothing was sent yet, or the programs log elsewhere, see "
                               "RUXA_NTF_LOG and --log");
        }
        tell("there is no notification log " + log + " yet: waiting for it");
    }

    void readToEnd() {
        constexpr std::uint64_t kLinesBetweenLooks = 1024;
        for (std::string_view line; !m_hasEnded && m_reader.next(line);) {
            take(line);
            if (m_holdsEnds && m_lines % kLinesBetweenLooks == 0) {
                waitForEnd({});
            }
        }
    }

    /// A last line without a newline: whole, or cut off.
    void takeRest() {
        if (const std::string_view rest = m_reader.takeRest(); !rest.empty()) {
            take(rest);
        }
    }

    void take(std::string_view line) {
        ++m_lines;
        m_progress.show(m_reader, m_lines);
        const platform::ntf::ParsedLine parsed = platform::ntf::parseLine(line);
        using Kind = platform::ntf::ParsedLine::Kind;
        if (parsed.kind == Kind::Blank) {
            return;
        }
        if (parsed.kind != Kind::Notification) {
            ++(parsed.kind == Kind::Torn ? m_counts.torn : m_counts.foreign);
            return;
        }
        ++m_counts.notifications;
        const AlarmList::Applied applied = m_alarms.apply(parsed.record);
        switch (applied.change) {
        case AlarmList::Change::None:
            ++m_counts.ceasesWithoutAlarm;
            break;
        case AlarmList::Change::Ceased:
            if (m_follows || m_options.history) {
                show(*applied.alarm, "ceased");
            }
            break;
        default:
            if (m_follows) {
                show(*applied.alarm,
                     applied.change == AlarmList::Change::Raised ? "raised" : "again");
            }
        }
    }

    void show(const Alarm& alarm, const char* state) {
        if (m_filter.matches(alarm)) {
            m_progress.clear();
            m_printer.print(alarm, state);
        }
    }

    /// What was left out since the last report.
    void report() {
        if (m_counts.torn + m_counts.foreign == m_reported) {
            return;
        }
        m_reported = m_counts.torn + m_counts.foreign;
        tell("left out of " + printable(m_reader.path().string()) + ": torn lines " +
             std::to_string(m_counts.torn) + ", foreign lines " + std::to_string(m_counts.foreign));
    }

    void follow() {
        m_follows = true;
        holdEnds();
        constexpr timespec kInterval = {0, 200'000'000};
        while (!m_hasEnded) {
            readNew();
            report();
            if (!m_output.flush()) {
                return;
            }
            waitForEnd(kInterval); // which paces the polling
        }
    }

    /// From now on the signals that end the command wait until they are asked for.
    void holdEnds() {
        m_holdsEnds = true;
        sigemptyset(&m_ends);
        sigaddset(&m_ends, SIGINT);
        sigaddset(&m_ends, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &m_ends, nullptr);
    }

    void waitForEnd(const timespec& interval) {
        m_hasEnded = m_hasEnded || sigtimedwait(&m_ends, nullptr, &interval) >= 0;
    }

    void readNew() {
        const LogReader::State state = m_reader.state();
        readToEnd(); // of the file before, if it was replaced: nobody writes to it any more
        if (!m_hasEnded && state != LogReader::State::Same) {
            takeRest();
            m_reader.reopen();
            readToEnd();
        }
    }

    const Options& m_options;
    const AlarmFilter m_filter;
    Output& m_output;
    LogReader m_reader;
    AlarmPrinter m_printer;
    AlarmList m_alarms;
    LogCounts m_counts;
    Progress m_progress;
    std::uint64_t m_lines = 0;
    std::uint64_t m_reported = 0;
    bool m_follows = false;
    sigset_t m_ends{}; ///< the signals that end --follow
    bool m_holdsEnds = false;
    bool m_hasEnded = false;
};

} // namespace

void addAlarmsCommand(CLI::App& app, Context& context) {
    CLI::App* const command = app.add_subcommand("alarms", "List the active alarms");
    const auto options = std::make_shared<Options>();
    command->add_option("--log", options->log, "The notification log to read")->type_name("FILE");
    command->add_flag(
        "--history", options->history,
        "Also the alarms that were ceased, each when it ended, before the active ones");
    command
        ->add_option("--severity", options->severity,
                     "Only these, e.g. major,critical; minor+ means minor and worse")
        ->type_name("NAMES");
    command
        ->add_option("--object", options->object,
                     "Only this notification object and those it contains, e.g. managedElement=1")
        ->type_name("DN");
    command
        ->add_option("--since", options->since,
                     "Only those raised or ceased since then: 2024-02-29T12:34:56Z, or 90s, 10m, "
                     "6h, 2d ago")
        ->type_name("TIME");
    command->add_flag("--follow", options->follow, "Then wait for changes and print each");
    command->add_flag("--json", options->json, "Print JSON");
    command->footer(kFooter);
    command->callback([options, &context] { AlarmsCommand(*options, context.output).run(); });
}

} // namespace dolqctl
