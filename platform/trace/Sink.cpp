#include "platform/trace/Sink.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/sinks/syslog_sink.h>
#include <unistd.h>

#include "platform/trace/Settings.h"

namespace platform::trace {

namespace {

constexpr char kSinkVariable[] = "RUXA_TRACE_SINK";
constexpr char kDefaultSink[] = "stderr";
constexpr std::string_view kFileScheme = "file:";
constexpr char kLinePattern[] = "%Y-%m-%dT%T.%fZ %P %* %v"; // "%*" is the ThreadId below

/// The calling thread's id; spdlog's own one is that of the parent in a forked process.
class ThreadId final : public spdlog::custom_flag_formatter {
public:
    void format(const spdlog::details::log_msg& /*message*/, const std::tm& /*time*/,
                spdlog::memory_buf_t& line) override {
        const std::string id = std::to_string(gettid());
        line.append(id.data(), id.data() + id.size());
    }
    std::unique_ptr<spdlog::custom_flag_formatter> clone() const override {
        return std::make_unique<ThreadId>();
    }
};

void useLineLayout(spdlog::sinks::sink& sink, const char* lineEnd) {
    auto formatter =
        std::make_unique<spdlog::pattern_formatter>(spdlog::pattern_time_type::utc, lineEnd);
    formatter->add_flag<ThreadId>('*').set_pattern(kLinePattern);
    sink.set_formatter(std::move(formatter));
}

spdlog::sink_ptr stderrSink() {
    auto sink = std::make_shared<spdlog::sinks::stderr_sink_st>();
    useLineLayout(*sink, "\n");
    return sink;
}

spdlog::sink_ptr fileSink(const std::string& path) {
    spdlog::file_event_handlers handlers;
    handlers.after_open = [](const spdlog::filename_t& /*path*/, std::FILE* file) {
        // Without a buffer each line is one append, so the lines of several processes stay whole.
        std::setvbuf(file, nullptr, _IONBF, 0);
        fcntl(fileno(file), F_SETFD, FD_CLOEXEC);
    };
    auto sink = std::make_shared<spdlog::sinks::basic_file_sink_st>(path, false, handlers);
    useLineLayout(*sink, "\n");
    return sink;
}

spdlog::sink_ptr syslogSink() {
    constexpr bool kFormat = true;
    auto sink = std::make_shared<spdlog::sinks::syslog_sink_st>("", LOG_PID, LOG_USER, kFormat);
    useLineLayout(*sink, "");
    return sink;
}

spdlog::sink_ptr chosenSink() {
    const char* const variable = std::getenv(kSinkVariable);
    const std::string value = variable != nullptr ? variable : kDefaultSink;
    if (value == kDefaultSink) {
        return stderrSink();
    }
    if (value == "syslog") {
        return syslogSink();
    }
    const bool isFile = value.compare(0, kFileScheme.size(), kFileScheme) == 0;
    if (!isFile || value.size() == kFileScheme.size()) {
        reportUnusedSetting(kSinkVariable, value, "it must be stderr, file:PATH or syslog",
                            kDefaultSink);
        return stderrSink();
    }
    try {
        return fileSink(value.substr(kFileScheme.size()));
    } catch (const spdlog::spdlog_ex& failure) {
        reportUnusedSetting(kSinkVariable, value, failure.what(), kDefaultSink);
        return stderrSink();
    }
}

} // namespace

std::unique_ptr<spdlog::logger> openSink() {
    auto logger = std::make_unique<spdlog::logger>("ruxa-trace", chosenSink());
    logger->set_level(spdlog::level::trace);
    return logger;
}

} // namespace platform::trace
