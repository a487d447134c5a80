#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <ruxa/trace/v2/TraceBackend.h>
#include <sys/wait.h>
#include <unistd.h>

// Stands in for the C library's: what reaches the system's log shows on stderr.
extern "C" [[gnu::visibility("default"), gnu::format(printf, 2, 3)]] void
syslog(int priority, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::fprintf(stderr, "<%d>\n", priority);
    std::vfprintf(stderr, format, arguments);
    std::fputc('\n', stderr);
    va_end(arguments);
}

namespace {

using ruxa::trace::v2::TraceBackend;
using ruxa::trace::v2::TraceGroup;

using Environment = std::vector<std::pair<const char*, std::string>>;

struct Ended {
    std::string errors; // all that it wrote to stderr
    bool succeeded;
    pid_t pid;
};

struct Running {
    pid_t pid;
    int errors; // the end of a pipe from its stderr
};

// The settings are read once per process, so each case has a process of its own, with `environment`
// as the only settings. This process itself never traces.
Running startProcess(const Environment& environment, const std::function<bool()>& program) {
    constexpr unsigned kStuck = 120; // seconds; a deadlock shows as a failure
    int ends[2];
    if (pipe(ends) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t pid = fork();
    if (pid == 0) {
        alarm(kStuck);
        dup2(ends[1], STDERR_FILENO);
        close(ends[0]);
        close(ends[1]);
        for (const char* name : {"RUXA_TRACE_SINK", "RUXA_TRACE_GROUPS", "RUXA_TRACE_PREFIX"}) {
            unsetenv(name);
        }
        for (const auto& [name, value] : environment) {
            setenv(name, value.c_str(), 1);
        }
        std::exit(program() ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    close(ends[1]);
    return {pid, ends[0]};
}

Ended awaitEnd(const Running& process) {
    Ended ended{"", false, process.pid};
    char bytes[4096];
    for (ssize_t count = 0; (count = read(process.errors, bytes, sizeof bytes)) > 0;) {
        ended.errors.append(bytes, static_cast<std::size_t>(count));
    }
    close(process.errors);
    int status = 0;
    waitpid(process.pid, &status, 0);
    ended.succeeded = WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
    return ended;
}

Ended runProcess(const Environment& environment, const std::function<bool()>& program) {
    return awaitEnd(startProcess(environment, program));
}

void trace(const char* text, void* object = TraceBackend::getDefaultTraceObject(),
           TraceGroup::e group = TraceGroup::FAILURE) {
    TraceBackend::Trace(object, group, "unit", 7, text);
}

void inThreads(int count, const std::function<void(int)>& work) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back(work, i);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

struct Line {
    std::string time, process, thread, rest;
};

// What is no trace line, a report for instance, is all `rest`.
std::vector<Line> linesOf(std::istream&& output) {
    std::vector<Line> lines;
    for (std::string text; std::getline(output, text);) {
        Line line;
        std::istringstream words(text);
        words >> line.time >> line.process >> line.thread;
        std::string shape = line.time;
        std::replace_if(
            shape.begin(), shape.end(), [](char c) { return c >= '0' && c <= '9'; }, '0');
        if (shape == "0000-00-00T00:00:00.000000Z" && words.get() == ' ') {
            std::getline(words, line.rest);
            lines.push_back(line);
        } else {
            lines.push_back({"", "", "", text});
        }
    }
    return lines;
}

// What each line of `output` holds behind the time and the two ids.
std::string withoutStamps(const std::string& output) {
    std::string text;
    for (const Line& line : linesOf(std::istringstream(output))) {
        text += line.rest + "\n";
    }
    return text;
}

struct TemporaryFile {
    const std::string path = testing::TempDir() + "ruxa-trace-test-" + std::to_string(getpid());
    ~TemporaryFile() { std::remove(path.c_str()); }
};

TEST(Trace, IsReachedByItsMangledNames) {
    for (const char* name : {
             "21getDefaultTraceObjectEv",
             "20getTraceObjectPrefixB5cxx11Ev",
             "19registerTraceObjectERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE",
             "21deregisterTraceObjectEPv",
             "19isTraceGroupEnabledEPvNS1_10TraceGroup1eE",
             "9formatStrEPKcz",
             "5TraceEPvNS1_10TraceGroup1eEPKcjS7_",
         }) {
        const std::string whole = std::string("_ZN4ruxa5trace2v212TraceBackend") + name;
        EXPECT_NE(dlsym(RTLD_DEFAULT, whole.c_str()), nullptr) << whole;
    }
}

TEST(Trace, WritesOneLineWithAllFields) {
    const Ended ended = runProcess({{"RUXA_TRACE_GROUPS", "0,4"}}, [] {
        void* const object = TraceBackend::registerTraceObject("my.Object");
        TraceBackend::Trace(object, TraceGroup::FLOW, "dolqAdapterImpl", 123, " a  text ");
        std::thread([] { trace("of a thread"); }).join();
        trace("of a disabled group", object, TraceGroup::DETAIL);
        return TraceBackend::getTraceObjectPrefix() == "platform-trace-test.";
    });
    const auto lines = linesOf(std::istringstream(ended.errors));
    ASSERT_EQ(lines.size(), 2u) << ended.errors;
    EXPECT_EQ(lines[0].rest, "my.Object 4 dolqAdapterImpl:123  a  text ");
    EXPECT_EQ(lines[1].rest, "platform-trace-test.default 0 unit:7 of a thread");
    const std::string pid = std::to_string(ended.pid);
    EXPECT_EQ(lines[0].process, pid);
    EXPECT_EQ(lines[0].thread, pid);
    EXPECT_EQ(lines[1].process, pid);
    EXPECT_NE(lines[1].thread, pid);
    EXPECT_TRUE(ended.succeeded);
}

struct Escaping {
    const char* name;
    const char* text;
    const char* written;
};

class TraceText : public testing::TestWithParam<Escaping> {};

TEST_P(TraceText, CannotForgeALine) {
    const Ended ended = runProcess({{"RUXA_TRACE_PREFIX", "p."}}, [] {
        trace(GetParam().text);
        return true;
    });
    EXPECT_EQ(withoutStamps(ended.errors),
              std::string("p.default 0 unit:7 ") + GetParam().written + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Escapes, TraceText,
    testing::Values(
        Escaping{"LineFeed", "a\np.default 0 unit:7 forged", R"(a\np.default 0 unit:7 forged)"},
        Escaping{"OtherC0", "\r\t\v\x1B[2K\x01", R"(\x0D\t\x0B\x1B[2K\x01)"},
        Escaping{"Delete", "a\x7F", R"(a\x7F)"}, Escaping{"Backslash", R"(a\n\)", R"(a\\n\\)"},
        Escaping{"NextLineOfC1", "\xC2\x85", R"(\xC2\x85)"},
        Escaping{"LastOfC1AndFirstBehind", "\xC2\x9F\xC2\xA0", "\\xC2\\x9F\xC2\xA0"},
        Escaping{"LineSeparators", "\xE2\x80\xA8\xE2\x80\xA9", R"(\xE2\x80\xA8\xE2\x80\xA9)"},
        Escaping{"TextDirection", "\xE2\x80\xAE\xE2\x81\xA9", R"(\xE2\x80\xAE\xE2\x81\xA9)"},
        Escaping{"DirectionMarks", "\xD8\x9C\xE2\x80\x8E\xE2\x80\x8F",
                 R"(\xD8\x9C\xE2\x80\x8E\xE2\x80\x8F)"},
        Escaping{"BesideTheDirectionMarks", "\xD8\x9B\xE2\x80\x8D\xE2\x80\x90",
                 "\xD8\x9B\xE2\x80\x8D\xE2\x80\x90"},
        Escaping{"WellFormed", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF",
                 "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF"},
        Escaping{"StrayBytes", "\x85\xFF!", R"(\x85\xFF!)"},
        Escaping{"Overlong", "\xC0\x8A\xE0\x80\x8A", R"(\xC0\x8A\xE0\x80\x8A)"},
        Escaping{"Surrogate", "\xED\xA0\x80", R"(\xED\xA0\x80)"},
        Escaping{"BeyondUnicode", "\xF4\x90\x80\x80", R"(\xF4\x90\x80\x80)"},
        Escaping{"CutCharacter", "\xE2\x82", R"(\xE2\x82)"},
        Escaping{"LineFeedInACharacter", "\xE2\x82\n", R"(\xE2\x82\n)"},
        Escaping{"Directives", "%s%n{}", "%s%n{}"}, Escaping{"Empty", "", ""},
        Escaping{"Null", nullptr, "(no text)"}),
    [](const auto& row) { return row.param.name; });

TEST(Trace, KeepsEachFieldOneWord) {
    const Ended ended = runProcess({{"RUXA_TRACE_PREFIX", "a b\n"}}, [] {
        trace("");
        trace("", TraceBackend::registerTraceObject("x 0 u:1\\\n"));
        trace("", TraceBackend::registerTraceObject(""));
        trace("", nullptr);
        TraceBackend::Trace(TraceBackend::getDefaultTraceObject(), TraceGroup::FAILURE, "u 1\n", 1,
                            "");
        TraceBackend::Trace(TraceBackend::getDefaultTraceObject(), TraceGroup::FAILURE, nullptr, 2,
                            "");
        return TraceBackend::getTraceObjectPrefix() == "a b\n";
    });
    EXPECT_EQ(withoutStamps(ended.errors), "a\\x20b\\ndefault 0 unit:7 \n"
                                           "x\\x200\\x20u:1\\\\\\n 0 unit:7 \n"
                                           "- 0 unit:7 \n"
                                           "(unregistered) 0 unit:7 \n"
                                           "a\\x20b\\ndefault 0 u\\x201\\n:1 \n"
                                           "a\\x20b\\ndefault 0 -:2 \n");
    EXPECT_TRUE(ended.succeeded);
}

TEST(Trace, FormatsTextsOfAnyLength) {
    const std::string megabyte(1 << 20, 'm');
    EXPECT_EQ(TraceBackend::formatStr("<%s>", megabyte.c_str()), "<" + megabyte + ">");
    EXPECT_STREQ(TraceBackend::formatStr("[%s|%d]", TraceBackend::formatStr("in%u", 1u), -2),
                 "[in1|-2]");
    EXPECT_STREQ(TraceBackend::formatStr("%s", ""), "");
    constexpr wchar_t kNoCharacter[] = {0x20AC, 0}; // in the C locale
    EXPECT_EQ(std::string(TraceBackend::formatStr("%ls", kNoCharacter)).find("(cannot format"), 0u);
    const char* const none = nullptr;
    EXPECT_STREQ(TraceBackend::formatStr(none), "(no format)");
}

struct Setting {
    const char* name;
    const char* variable;
    const char* value;
    const char* reason;   // why it is not used, as reported
    const char* recorded; // the numbers of the groups whose messages stderr shows
};

class TraceSettings : public testing::TestWithParam<Setting> {};

TEST_P(TraceSettings, AreUsedOrReportedOnce) {
    const auto [name, variable, value, reason, recorded] = GetParam();
    const Ended ended = runProcess({{variable, value}}, [] {
        for (int number = 0; number <= 8; ++number) {
            const auto group = static_cast<TraceGroup::e>(number);
            trace(TraceBackend::isTraceGroupEnabled(nullptr, group) ? "on" : "off", nullptr, group);
        }
        return true;
    });
    std::string expected;
    if (*reason != '\0') {
        const bool sink = std::string(variable) == "RUXA_TRACE_SINK";
        expected = std::string("ruxa-trace: ") + variable + "=\"" + value +
                   "\" is not used: " + reason + ". Tracing uses " + (sink ? "stderr" : "group 0") +
                   " instead.\n";
    }
    for (const char number : std::string(recorded)) {
        expected += std::string("(unregistered) ") + number + " unit:7 on\n";
    }
    EXPECT_EQ(withoutStamps(ended.errors), expected);
    EXPECT_TRUE(ended.succeeded);
}

constexpr char kGroups[] = "RUXA_TRACE_GROUPS";
constexpr char kSink[] = "RUXA_TRACE_SINK";
constexpr char kBadGroups[] = "it must be all, none, or numbers from 0 to 8 joined by commas";
constexpr char kBadSink[] = "it must be stderr, file:PATH or syslog";

INSTANTIATE_TEST_SUITE_P(
    Values, TraceSettings,
    testing::Values(Setting{"OneGroup", kGroups, "4", "", "4"},
                    Setting{"List", kGroups, "0,4,8", "", "048"},
                    Setting{"BlanksAndRepetition", kGroups, " 8, 4 ,8", "", "48"},
                    Setting{"AllGroups", kGroups, "all", "", "012345678"},
                    Setting{"NoGroup", kGroups, "none", "", ""},
                    Setting{"EmptyGroups", kGroups, "", kBadGroups, "0"},
                    Setting{"EmptyPiece", kGroups, "4,,8", kBadGroups, "0"},
                    Setting{"CommaAtTheEnd", kGroups, "4,", kBadGroups, "0"},
                    Setting{"FirstBehindTheLast", kGroups, "4,9", kBadGroups, "0"},
                    Setting{"Negative", kGroups, "-1", kBadGroups, "0"},
                    Setting{"TooLargeForAnInteger", kGroups, "4294967300", kBadGroups, "0"},
                    Setting{"NumberWithATail", kGroups, "4x", kBadGroups, "0"},
                    Setting{"AllInAList", kGroups, "4,all", kBadGroups, "0"},
                    Setting{"Stderr", kSink, "stderr", "", "0"},
                    Setting{"UnknownSink", kSink, "Stderr", kBadSink, "0"},
                    Setting{"EmptySink", kSink, "", kBadSink, "0"},
                    Setting{"FileWithoutPath", kSink, "file:", kBadSink, "0"},
                    Setting{"Folder", kSink, "file:/",
                            "Failed opening file / for writing: Is a directory", "0"}),
    [](const auto& row) { return row.param.name; });

TEST(TraceSink, GivesSyslogAPriorityByGroup) {
    const Ended ended =
        runProcess({{"RUXA_TRACE_SINK", "syslog"}, {"RUXA_TRACE_GROUPS", "all"}}, [] {
            for (const auto group : {TraceGroup::FAILURE, TraceGroup::FLOW, TraceGroup::DETAIL}) {
                trace("100%s", nullptr, group);
            }
            return true;
        });
    EXPECT_EQ(withoutStamps(ended.errors), "<3>\n(unregistered) 0 unit:7 100%s\n"
                                           "<6>\n(unregistered) 4 unit:7 100%s\n"
                                           "<7>\n(unregistered) 8 unit:7 100%s\n");
}

TEST(TraceSink, SaysThatAMessageIsLost) {
    const Ended ended = runProcess({{"RUXA_TRACE_SINK", "file:/dev/full"}}, [] {
        trace("lost");
        return true;
    });
    EXPECT_NE(ended.errors.find("/dev/full: No space left on device"), std::string::npos);
    EXPECT_TRUE(ended.succeeded);
}

TEST(TraceSink, KeepsLinesOfManyProcessesAndThreadsWhole) {
    constexpr int kProcesses = 4;
    constexpr int kThreads = 4;
    constexpr int kLines = 50;
    const std::string filling(10000, 'x'); // beyond any buffer of the C library
    const TemporaryFile file;
    std::ofstream(file.path) << "kept\n";
    std::multiset<std::string> expected{"kept"};
    for (int number = 0; number < kProcesses * kThreads * kLines; ++number) {
        expected.insert("(unregistered) 0 unit:7 " + std::to_string(number) + filling);
    }

    std::vector<Running> processes;
    for (int process = 0; process < kProcesses; ++process) {
        processes.push_back(startProcess({{kSink, "file:" + file.path}}, [&] {
            inThreads(kThreads, [&](int thread) {
                for (int line = 0; line < kLines; ++line) {
                    const int number = (process * kThreads + thread) * kLines + line;
                    trace((std::to_string(number) + filling).c_str(), nullptr);
                }
            });
            return true;
        }));
    }
    for (const Running& process : processes) {
        const Ended ended = awaitEnd(process);
        EXPECT_TRUE(ended.succeeded) << ended.errors;
    }

    std::multiset<std::string> found;
    for (const Line& line : linesOf(std::ifstream(file.path))) {
        found.insert(line.rest);
    }
    EXPECT_TRUE(found == expected); // too large to be shown
}

TEST(TraceObject, OfOneNameHasAHandlePerRegistration) {
    const Ended ended = runProcess({{kSink, "file:/dev/null"}}, [] {
        constexpr int kThreads = 8;
        constexpr int kEach = 100;
        void* handles[kThreads][kEach];
        inThreads(kThreads, [&handles](int thread) {
            for (void*& handle : handles[thread]) {
                handle = TraceBackend::registerTraceObject("same");
                trace(TraceBackend::formatStr("%d", thread), handle);
                TraceBackend::deregisterTraceObject(handle);
            }
        });
        std::set<void*> distinct{nullptr, TraceBackend::getDefaultTraceObject()};
        distinct.insert(&handles[0][0], &handles[0][0] + kThreads * kEach);
        return distinct.size() == 2 + kThreads * kEach;
    });
    EXPECT_TRUE(ended.succeeded) << ended.errors;
}

TEST(TraceObject, ReleaseConcernsNoOtherOne) {
    const Ended ended = runProcess({{"RUXA_TRACE_PREFIX", ""}}, [] {
        void* const first = TraceBackend::registerTraceObject("same");
        void* const second = TraceBackend::registerTraceObject("same");
        int noObject = 0;
        for (void* const object : {first, first, TraceBackend::getDefaultTraceObject(),
                                   static_cast<void*>(nullptr), static_cast<void*>(&noObject)}) {
            TraceBackend::deregisterTraceObject(object);
        }
        TraceBackend::registerTraceObject("later");
        trace("released", first);
        trace("alive", second);
        trace("always");
        return true;
    });
    EXPECT_EQ(withoutStamps(ended.errors), "(unregistered) 0 unit:7 released\n"
                                           "same 0 unit:7 alive\n"
                                           "default 0 unit:7 always\n");
}

struct TracesWhenItEnds {
    const char* text;
    ~TracesWhenItEnds() { trace(TraceBackend::formatStr("%s ends", text), nullptr); }
};

TEST(Trace, WorksUntilTheProcessEnds) {
    const Ended ended = runProcess({}, [] {
        std::atexit([] { trace(TraceBackend::formatStr("%s", "exit handler"), nullptr); });
        static const TracesWhenItEnds staticObject{"static object"};
        trace("main", nullptr);
        std::thread([] {
            static thread_local const TracesWhenItEnds ofThread{"thread's object"};
            trace(TraceBackend::formatStr("%s of %s", "start", ofThread.text), nullptr);
        }).join();
        static thread_local const TracesWhenItEnds ofMain{"main thread's object"};
        return ofMain.text != staticObject.text;
    });
    EXPECT_EQ(withoutStamps(ended.errors), "(unregistered) 0 unit:7 main\n"
                                           "(unregistered) 0 unit:7 start of thread's object\n"
                                           "(unregistered) 0 unit:7 thread's object ends\n"
                                           "(unregistered) 0 unit:7 main thread's object ends\n"
                                           "(unregistered) 0 unit:7 static object ends\n"
                                           "(unregistered) 0 unit:7 exit handler\n");
    EXPECT_TRUE(ended.succeeded);
}

TEST(Trace, WorksInAProcessForkedWhileOthersTrace) {
    const TemporaryFile file;
    const Ended ended = runProcess({{"RUXA_TRACE_SINK", "file:" + file.path}}, [] {
        std::atomic<bool> stop{false};
        std::thread busy([&stop] {
            while (!stop) {
                trace("parent");
            }
        });
        bool good = true;
        for (int i = 0; i < 100; ++i) {
            if (i > 0) {         // the first fork may meet the backend half made
                trace("parent"); // its thread id is not the child's
            }
            const pid_t pid = fork();
            if (pid == 0) {
                alarm(60);
                trace(TraceBackend::formatStr("child of %d", getppid()),
                      TraceBackend::registerTraceObject(std::to_string(getpid())));
                _exit(EXIT_SUCCESS);
            }
            int status = 0;
            good = waitpid(pid, &status, 0) == pid && status == 0 && good;
        }
        stop = true;
        busy.join();
        return good;
    });
    EXPECT_TRUE(ended.succeeded) << ended.errors;
    int children = 0;
    for (const Line& line : linesOf(std::ifstream(file.path))) {
        if (line.process != std::to_string(ended.pid)) {
            EXPECT_EQ(line.thread, line.process);
            EXPECT_EQ(line.rest, line.process + " 0 unit:7 child of " + std::to_string(ended.pid));
            ++children;
        }
    }
    EXPECT_EQ(children, 100);
}

} // namespace
