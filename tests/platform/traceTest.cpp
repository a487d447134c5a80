#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <ruxa/trace/v2/TraceBackend.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include "support/FailingMalloc.h"
#include "support/SetUserId.h"
#include "support/TestSupport.h"

namespace {
sockaddr_un g_log{AF_UNIX, ""}; // takes the place of /dev/log
} // namespace

// Stands in for the C library's.
extern "C" [[gnu::visibility("default")]] int connect(int socket, const sockaddr* /*address*/,
                                                      socklen_t length) {
    return static_cast<int>(syscall(SYS_connect, socket, &g_log, length));
}

namespace {

namespace fs = std::filesystem;
using ruxa::trace::v2::TraceBackend;
using ruxa::trace::v2::TraceGroup;

constexpr char kGroups[] = "RUXA_TRACE_GROUPS";
constexpr char kPrefix[] = "RUXA_TRACE_PREFIX";
constexpr char kSink[] = "RUXA_TRACE_SINK";

using Environment = std::vector<std::pair<const char*, std::string>>;

constexpr int kDone = 42; // what a child that succeeds exits with

// A child of this process; false when it fails, ends early or is stuck.
bool succeeds(const std::function<bool()>& program) {
    const pid_t pid = fork();
    if (pid == 0) {
        alarm(60); // seconds; a deadlock shows as a failure
        std::exit(program() ? kDone : EXIT_FAILURE);
    }
    return statusOf(pid) == W_EXITCODE(kDone, 0);
}

// The lines without time and process id, and with "thread" for the id of any thread but the first.
std::string plain(const fs::path& output) {
    std::string text;
    for (std::string line : linesOf(output)) {
        static const std::regex start(
            "^[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{6}Z ([0-9]+) ([0-9]+) ");
        std::smatch ids;
        if (std::regex_search(line, ids, start)) {
            line = (ids[1] == ids[2] ? "" : "thread ") + ids.suffix().str();
        }
        text += line + "\n";
    }
    return text;
}

// The settings are read once per process, so each case has a process of its own, with `environment`
// as the only settings; this one never traces. Returns what it wrote to stderr.
std::string errorsOf(const Environment& environment, const std::function<bool()>& program) {
    const TemporaryFolder folder;
    const fs::path errors = folder.path() / "stderr";
    EXPECT_TRUE(succeeds([&] {
        dup2(open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
        closefrom(STDERR_FILENO + 1);
        for (const char* name : {kGroups, kPrefix, kSink}) {
            unsetenv(name);
        }
        for (const auto& [name, value] : environment) {
            setenv(name, value.c_str(), 1);
        }
        return program();
    }));
    return plain(errors);
}

bool trace(const char* text, void* object = nullptr, TraceGroup::e group = TraceGroup::FAILURE) {
    TraceBackend::Trace(object, group, "unit", 7, text);
    return true;
}

// How often `text` stands in `output`.
int occurrences(const std::string& output, const std::string& text) {
    int found = 0;
    for (std::size_t at = 0; (at = output.find(text, at)) != std::string::npos; ++at) {
        ++found;
    }
    return found;
}

class TraceFile : public testing::Test {
protected:
    const TemporaryFolder temporary;
    const fs::path& folder = temporary.path();
    const fs::path file = folder / "trace";
    const Environment sink = {{kSink, "file:" + file.string()}};
    std::string traces() const { return plain(file); }
};

TEST_F(TraceFile, HoldsOneLineAMessageWithAllFields) {
    fs::remove(folder); // it is made
    errorsOf({sink[0], {kGroups, "0,4"}}, [] {
        void* const first = TraceBackend::getDefaultTraceObject();
        void* const one = TraceBackend::registerTraceObject("same");
        void* const other = TraceBackend::registerTraceObject("same");
        int none = 0;
        for (void* const object :
             {one, one, static_cast<void*>(nullptr), first, static_cast<void*>(&none)}) {
            TraceBackend::deregisterTraceObject(object);
        }
        TraceBackend::registerTraceObject("later");
        trace("released", one);
        TraceBackend::Trace(other, TraceGroup::FLOW, "dolqAdapterImpl", 123, " a  text ");
        trace("of a disabled group", other, TraceGroup::DETAIL);
        std::thread([first] { trace("always", first); }).join();
        return std::set<void*>{nullptr, first, one, other}.size() == 4 &&
               TraceBackend::getTraceObjectPrefix() == "platform-trace-test.";
    });
    EXPECT_EQ(traces(), "(unregistered) 0 unit:7 released\n"
                        "same 4 dolqAdapterImpl:123  a  text \n"
                        "thread platform-trace-test.default 0 unit:7 always\n");
}

TEST(Trace, TextsCannotForgeALine) {
    const std::pair<const char*, const char*> rows[] = {
        {"a\np.default 0 unit:7 %s%n", R"(a\np.default 0 unit:7 %s%n)"},
        {"\r\t\v\x1B[2K\x01\x7F\\n\\", R"(\x0D\t\x0B\x1B[2K\x01\x7F\\n\\)"}, // C0 and DEL
        {"\xC2\x85\xC2\x9F\xC2\xA0", "\\xC2\\x85\\xC2\\x9F\xC2\xA0"},        // C1, and beyond
        {"\xE2\x80\xA8\xE2\x80\xA9\xE2\x80\xAE\xE2\x81\xA9", // line separators, text direction
         R"(\xE2\x80\xA8\xE2\x80\xA9\xE2\x80\xAE\xE2\x81\xA9)"},
        {"\xD8\x9C\xE2\x80\x8E\xE2\x80\x8F", R"(\xD8\x9C\xE2\x80\x8E\xE2\x80\x8F)"}, // its marks
        {"\xD8\x9B\xE2\x80\x8D\xE2\x80\x90\xF4\x8F\xBF\xBF", nullptr},     // beside all of these
        {"\x85\xFF!\xE2\x82\n\xE2\x82", R"(\x85\xFF!\xE2\x82\n\xE2\x82)"}, // half a character
        {"\xC1\xBF\xE0\x9F\xBF\xF0\x8F\xBF\xBF",
         R"(\xC1\xBF\xE0\x9F\xBF\xF0\x8F\xBF\xBF)"}, // overlong
        {"\xED\xBF\xBF\xF4\x90\x80\x80\xF8\xBF\xBF\xBF",
         R"(\xED\xBF\xBF\xF4\x90\x80\x80\xF8\xBF\xBF\xBF)"}, // no code points
        {nullptr, "(no text)"},
    };
    std::string expected;
    for (const auto& [text, shown] : rows) {
        expected +=
            std::string("(unregistered) 0 unit:7 ") + (shown != nullptr ? shown : text) + "\n";
    }
    const auto traceAll = [&rows] {
        return std::all_of(std::begin(rows), std::end(rows),
                           [](auto& row) { return trace(row.first); });
    };
    EXPECT_EQ(errorsOf({}, traceAll), expected);
}

TEST(Trace, KeepsEachFieldOneWord) {
    const std::string lines = errorsOf({{kPrefix, "a b\n"}}, [] {
        trace("", TraceBackend::registerTraceObject("x 0 u:1\\\n"));
        trace("", TraceBackend::registerTraceObject(""));
        TraceBackend::Trace(TraceBackend::getDefaultTraceObject(), TraceGroup::FAILURE, "u 1\n", 1,
                            "");
        TraceBackend::Trace(nullptr, TraceGroup::FAILURE, nullptr, 2, "");
        return TraceBackend::getTraceObjectPrefix() == "a b\n";
    });
    EXPECT_EQ(lines, "x\\x200\\x20u:1\\\\\\n 0 unit:7 \n"
                     "- 0 unit:7 \n"
                     "a\\x20b\\ndefault 0 u\\x201\\n:1 \n"
                     "(unregistered) 0 -:2 \n");
}

TEST(Trace, FormatsTextsOfAnyLength) {
    const std::string megabyte(1 << 20, 'm');
    EXPECT_EQ(TraceBackend::formatStr("<%s>", megabyte.c_str()), "<" + megabyte + ">");
    EXPECT_STREQ(TraceBackend::formatStr("[%s|%d]", TraceBackend::formatStr("in%u", 1u), -2),
                 "[in1|-2]");
    constexpr wchar_t kNoCharacter[] = {0x20AC, 0}; // in the C locale
    EXPECT_EQ(std::string(TraceBackend::formatStr("%ls", kNoCharacter)).find("(cannot format"), 0u);
    const char* const none = nullptr;
    EXPECT_STREQ(TraceBackend::formatStr(none), "(no format)");
}

TEST_F(TraceFile, SettingsAreUsedOrReportedOnce) {
    const std::string fifo = "file:" + file.string();
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    constexpr char kNumbers[] = "it must be all, none, or numbers from 0 to 8 joined by commas";
    constexpr char kSinks[] = "it must be stderr, file:PATH or syslog";
    const struct {
        const char* variable;
        std::string value;
        std::string reason;   // why it is not used, as reported
        std::string recorded; // the numbers of the groups whose messages stderr shows
    } rows[] = {
        {kGroups, " 8, 4 ,8", "", "48"},
        {kGroups, "all", "", "012345678"},
        {kGroups, "none", "", ""},
        {kGroups, "", kNumbers, "0"},
        {kGroups, "4,,8", kNumbers, "0"},
        {kGroups, "4,9", kNumbers, "0"},
        {kGroups, "-1", kNumbers, "0"},
        {kGroups, "4x", kNumbers, "0"},
        {kSink, "stderr", "", "0"},
        {kSink, "Stderr", kSinks, "0"},
        {kSink, "file:", kSinks, "0"},
        {kSink, "file:/", "Is a directory", "0"},
        {kSink, "file:/dev/null", "", ""},
        {kSink, fifo, "it is neither a regular file nor /dev/null", "0"},
    };
    for (const auto& [variable, value, reason, recorded] : rows) {
        const std::string used = variable == kSink ? "stderr" : "group 0";
        std::string expected;
        if (!reason.empty()) {
            expected = "ruxa-trace: " + std::string(variable) + "=\"" + value +
                       "\" is not used: " + reason + ". Tracing uses " + used + " instead.\n";
        }
        for (const char number : recorded) {
            expected += std::string("(unregistered) ") + number + " unit:7 on\n";
        }
        const auto traceEachGroup = [] {
            for (int number = 0; number <= 8; ++number) {
                const auto group = static_cast<TraceGroup::e>(number);
                trace(TraceBackend::isTraceGroupEnabled(nullptr, group) ? "on" : "off", nullptr,
                      group);
            }
            return true;
        };
        EXPECT_EQ(errorsOf({{variable, value}}, traceEachGroup), expected);
    }
}

TEST(Trace, TrustsNoVariableOfASetUserIdProgram) {
    const std::string lines = errorsOf({{kPrefix, "p."}, {kGroups, "none"}, {kSink, "syslog"}}, [] {
        runsWithOthersRights = true;
        return trace("text", TraceBackend::getDefaultTraceObject());
    });
    EXPECT_EQ(lines, "platform-trace-test.default 0 unit:7 text\n");
}

TEST_F(TraceFile, SyslogGetsPrioritiesAndIsNotWaitedFor) {
    const std::string lines = errorsOf({{kSink, "syslog"}, {kGroups, "all"}}, [this] {
        file.string().copy(g_log.sun_path, sizeof g_log.sun_path - 1);
        trace("nobody listens");
        const int log = socket(AF_UNIX, SOCK_DGRAM, 0);
        bind(log, reinterpret_cast<const sockaddr*>(&g_log), sizeof g_log);
        trace("100%s");
        trace("flow", nullptr, TraceGroup::FLOW);
        trace("detail", nullptr, TraceGroup::DETAIL);
        char bytes[1000] = "";
        for (int i = 0; i < 4; ++i) {
            bytes[recv(log, bytes, sizeof bytes - 1, MSG_DONTWAIT)] = '\0';
            const char* const pid = std::strchr(bytes, '[') + 1;
            dprintf(STDERR_FILENO, "%.4s %d\n%s\n", bytes, std::atoi(pid) == getpid(),
                    std::strchr(bytes, ' ') + 1);
        }
        for (int i = 0; i < 5000; ++i) { // more than anybody holds
            trace("text");
        }
        return true;
    });
    EXPECT_EQ(lines, "ruxa-trace: messages are lost: No such file or directory\n"
                     "<11> 1\nplatform-trace-test.default 0 ruxa-trace:0 messages lost: 1\n"
                     "<11> 1\n(unregistered) 0 unit:7 100%s\n"
                     "<14> 1\n(unregistered) 4 unit:7 flow\n"
                     "<15> 1\n(unregistered) 8 unit:7 detail\n"
                     "ruxa-trace: messages are lost: Resource temporarily unavailable\n");
}

TEST_F(TraceFile, IsTheSameAfterTheProgramBecameADaemon) {
    for (const Environment& choice : {Environment{}, Environment{{kSink, "file:trace"}}}) {
        errorsOf(choice, [this] {
            fs::current_path(folder);
            close(STDERR_FILENO);
            trace("before");
            fs::current_path("/");
            closefrom(STDERR_FILENO);
            while (open((folder / "data").c_str(), O_RDWR | O_CREAT | O_APPEND, 0600) < 10) {
            }
            trace("behind");
            return fs::file_size(folder / "data") == 0;
        });
    }
    EXPECT_EQ(traces(), "(unregistered) 0 unit:7 before\n"
                        "(unregistered) 0 unit:7 behind\n");
}

TEST_F(TraceFile, EndsHalfALineAndSaysWhatThisProcessLost) {
    std::ofstream(file) << "torn";
    const std::string errors = errorsOf(sink, [] {
        const rlimit few{150, RLIM_INFINITY};
        const rlimit all{RLIM_INFINITY, RLIM_INFINITY};
        trace("whole");
        setrlimit(RLIMIT_FSIZE, &few);
        trace(std::string(100, 'x').c_str());
        trace("lost");
        setrlimit(RLIMIT_FSIZE, &all);
        return succeeds([] { return trace("child"); }) && trace("again");
    });
    const std::string text = traces();
    EXPECT_EQ(text.find("torn\n(unregistered) 0 unit:7 whole\n"), 0u) << text;
    EXPECT_EQ(occurrences(text, "\n"), 6) << text;
    EXPECT_EQ(occurrences(text, "\n(unregistered) 0 unit:7 child\n"
                                "platform-trace-test.default 0 ruxa-trace:0 messages lost: 2\n"
                                "(unregistered) 0 unit:7 again\n"),
              1)
        << text;
    EXPECT_EQ(errors,
              "ruxa-trace: messages are lost: no room is left on the disk, in the quota or within "
              "the file size limit\n");
}

// What has arrived meanwhile.
std::string readAll(int end) {
    std::string text;
    char bytes[4096];
    for (ssize_t length = 0; (length = read(end, bytes, sizeof bytes)) > 0;) {
        text.append(bytes, static_cast<std::size_t>(length));
    }
    return text;
}

bool isPending(int signal) {
    sigset_t pending;
    sigpending(&pending);
    return sigismember(&pending, signal) == 1;
}

TEST(TraceStderr, UnreadOrLeftByItsReaderStopsNobody) {
    constexpr int kLines = 20;
    const std::string text(10000, 'x');                             // beyond PIPE_BUF
    const std::string longText = std::string(250000, 'x') + " end"; // more than there is room for
    for (const std::string kind : {"pipe", "pipe of another user", "socket"}) {
        errorsOf({}, [&] {
            const uid_t user = geteuid();
            int ends[2];
            if ((kind == "socket" ? socketpair(AF_UNIX, SOCK_STREAM, 0, ends) : pipe(ends)) != 0) {
                return false;
            }
            const int reader = ends[0];
            dup2(ends[1], STDERR_FILENO);
            close(ends[1]);
            fcntl(reader, F_SETFL, O_NONBLOCK);
            if (kind == "pipe of another user") {
                fchmod(STDERR_FILENO, 0); // nor may this user open it any more, unless it is root
                if (user == 0 && seteuid(65534) != 0) {
                    return false;
                }
            }
            for (int line = 0; line < kLines; ++line) {
                trace(line % 2 == 0 ? "text end" : longText.c_str());
            }
            const std::string before = readAll(reader);
            trace(longText.c_str());
            const std::string torn = readAll(reader);
            trace(text.c_str());
            const std::string after = readAll(reader);
            int lost = 0;
            const std::size_t said = torn.find("messages lost");
            close(reader);
            trace("to nobody");
            sigset_t blocked;
            pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
            const bool isQuiet = !isPending(SIGPIPE) && !sigismember(&blocked, SIGPIPE);
            sigaddset(&blocked, SIGPIPE);
            pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
            raise(SIGPIPE); // the application's own, which it waits for
            trace("to nobody");
            return seteuid(user) == 0 && // whom the end of a process may need
                   isQuiet && isPending(SIGPIPE) && said != std::string::npos &&
                   std::sscanf(torn.c_str() + said, "messages lost: %d", &lost) == 1 &&
                   (torn.back() == '\n') == (after.front() != '\n') &&
                   occurrences(after, " 0 unit:7 " + text + "\n") == 1 &&
                   occurrences(before, " end\n") + lost == kLines;
        });
    }
}

struct TracesWhenItEnds {
    const char* text;
    ~TracesWhenItEnds() { trace(TraceBackend::formatStr("%s ends", text)); }
};

TEST(Trace, WorksUntilTheProcessEnds) {
    const std::string lines = errorsOf({}, [] {
        std::atexit([] { trace(TraceBackend::formatStr("%s", "at exit")); });
        static const TracesWhenItEnds staticObject{"static"};
        std::thread([] {
            static thread_local const TracesWhenItEnds ofThread{"thread's"};
            trace(TraceBackend::formatStr("%s", ofThread.text));
        }).join();
        static thread_local const TracesWhenItEnds ofMain{"main thread's"};
        return ofMain.text != staticObject.text;
    });
    EXPECT_EQ(lines, "thread (unregistered) 0 unit:7 thread's\n"
                     "thread (unregistered) 0 unit:7 thread's ends\n"
                     "(unregistered) 0 unit:7 main thread's ends\n"
                     "(unregistered) 0 unit:7 static ends\n"
                     "(unregistered) 0 unit:7 at exit\n");
}

TEST_F(TraceFile, NoCancellationComesInATrace) {
    for (const Environment& choice : {Environment{}, Environment{{kSink, "syslog"}}, sink}) {
        errorsOf(choice, [] {
            pthread_cancel(pthread_self());
            trace(TraceBackend::formatStr("%s", "text"));
            return pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr) == 0;
        });
    }
    EXPECT_EQ(traces(), "(unregistered) 0 unit:7 text\n");
}

TEST_F(TraceFile, LacksOneMessageForOneFailedMalloc) {
    int position = 0;
    for (bool failed = true; failed;) {
        ++position;
        errorsOf({{kGroups, "x"}, sink[0]}, [position] {
            const bool reached = withFailingMalloc(position, [] {
                TraceBackend::isTraceGroupEnabled(nullptr, TraceGroup::FAILURE);
                trace(TraceBackend::formatStr("a text of %d bytes", 18));
                TraceBackend::deregisterTraceObject(nullptr);
            });
            return trace(reached ? "failed" : "passed");
        });
        const std::string text = traces();
        failed = occurrences(text, "failed\n") == 1;
        EXPECT_EQ(occurrences(text, " bytes\n") + occurrences(text, "(no memory for the text)\n") +
                      occurrences(text, "messages lost: 1\n"),
                  1)
            << position;
        fs::remove(file);
    }
    EXPECT_GT(position, 5); // one message and the making of the backend take more
}

} // namespace
