#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <new>
#include <set>
#include <string>
#include <vector>

#include <sched.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "SoakApplication.h"
#include "platform/ntf/log/AlarmRecord.h"
#include "support/TestSupport.h"

namespace {

namespace fs = std::filesystem;

constexpr char kUsage[] = R"(usage: soak [SECONDS [SEED]]

Runs applications on the embedded platform, round after round for SECONDS (120), and disturbs them.
After each round every alarm has to be in the log exactly once or traced as lost, but for the one that
a thread was at when its process ended; and memory, descriptors and threads have to be where they were.

SEED (the time) is that of the first round, the next rounds take the numbers after it. A seed gives
the same threads, alarms, faults and disturbances each time; when exactly they meet is the machine's
choice. So repeat a round that failed, with the command that is printed, until it fails again. Its log
and its traces are kept. Ends with 0, after a failure with 1.
)";

constexpr unsigned kApplications = 4;
constexpr std::size_t kDiskSize = std::size_t{32} << 20;
constexpr const char* kLosses[] = {"inor type not found.", " Allocate Alarm:", " Populate Alarm:",
                                   " Send Alarm:", " m_ntfHandle:"};

/// What stands between `before` and `after`, which may be missing; empty without `before`.
std::string between(const std::string& text, const std::string& before, const char* after) {
    const std::size_t found = text.find(before);
    if (found == std::string::npos) {
        return {};
    }
    const std::size_t begin = found + before.size();
    return text.substr(begin, text.find(after, begin) - begin);
}

class Node {
public:
    Node() {
        std::string name = (fs::temp_directory_path() / "soak.XXXXXX").string();
        m_folder = mkdtemp(name.data());
        m_disk = m_folder / "disk";
        fs::create_directory(m_disk);
        m_canFill = unshare(CLONE_NEWNS) == 0 &&
                    mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                    mount("tmpfs", m_disk.c_str(), "tmpfs", 0,
                          ("size=" + std::to_string(kDiskSize)).c_str()) == 0;
        std::ofstream(m_folder / "central.xml")
            << R"(<loadModules><loadModule productNumber="SOAK" revision="1">)"
            << R"(<file tag="alarm_mapping" path="mapping.xml"/></loadModule></loadModules>)";
        void* const shared = mmap(nullptr, sizeof(Ledger), PROT_READ | PROT_WRITE,
                                  MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (shared == MAP_FAILED) {
            throw std::bad_alloc();
        }
        m_ledger = static_cast<Ledger*>(shared);
        // This process uses nothing of the platform: each application begins anew.
        const std::pair<const char*, std::string> environment[] = {
            {"RUXA_NTF_LOG", m_disk / "log"},
            {"RUXA_TRACE_SINK", "file:" + (m_folder / "trace").string()},
            {"RUXA_TRACE_GROUPS", "0,4"},
            {"RUXA_TRACE_PREFIX", "soak."},
            {"VELK_MANIFEST_DIR", m_folder},
            {"ZBN_NO", "SOAK"},
            {"ZBN_REV", "1"},
            {"SYSTEM_UUID", "system"},
            {"COMPUTE_NAME", "compute"}};
        for (const auto& [variable, value] : environment) {
            setenv(variable, value.c_str(), 1);
        }
        prctl(PR_SET_CHILD_SUBREAPER, 1); // to wait for the children of those killed, too
    }

    /// Whether every alarm arrived or has its trace.
    bool playRound(std::uint64_t seed) {
        Dice dice(seed);
        new (m_ledger) Ledger;
        m_mappings = 0;
        replaceMapping();
        std::vector<Application> applications(kApplications);
        for (Application& application : applications) {
            const std::uint64_t life = dice();
            application.process = fork();
            if (application.process == 0) {
                setpgid(0, 0);
                runApplication(*m_ledger, Dice(life));
            }
            setpgid(application.process, application.process);
        }
        while (!applications.empty()) {
            usleep(1000 + dice.below(8000));
            disturb(applications[dice.below(kApplications) % applications.size()], dice);
            applications.erase(
                std::remove_if(applications.begin(), applications.end(),
                               [this](const auto& application) { return hasEnded(application); }),
                applications.end());
        }
        fs::remove(m_disk / "filler");
        compare();
        if (m_complaints == 0) {
            for (const auto& file : fs::directory_iterator(m_disk)) {
                fs::remove(file);
            }
            fs::remove(m_folder / "trace");
        }
        return m_complaints == 0;
    }

    void report() {
        if (m_complaints == 0) {
            umount(m_disk.c_str());
            fs::remove_all(m_folder);
        } else {
            fs::copy(m_disk, m_folder / "logs"); // the disk goes with this process
            std::printf("%u complaints; see %s\n", m_complaints, m_folder.c_str());
        }
        for (const auto& [what, count] : m_counts) {
            std::printf("%8lu %s\n", count, what.c_str());
        }
        if (!m_canFill) {
            std::puts("       - full disks: not tried, run as root or under `unshare -rm`");
        }
    }

private:
    struct Application {
        pid_t process = 0;
        bool stopped = false;
        bool killed = false;
    };
    struct Found {
        unsigned logged = 0;
        unsigned lost = 0;
    };

    void complain(const std::string& text) {
        if (++m_complaints <= 10) {
            std::puts(text.c_str());
        }
    }

    /// The number of a mapping file is the minor type in it. One of eight is torn and maps nothing.
    void replaceMapping() {
        ++m_mappings;
        std::ofstream(m_folder / "new") << R"(<alarmMappings><mapping faultid="7" minor_type_id=")"
                                        << m_mappings << R"(" managed_object_class="Alarm"/>)"
                                        << (m_mappings % 8 == 0 ? "<" : "</alarmMappings>");
        fs::rename(m_folder / "new", m_folder / "mapping.xml");
        ++m_counts["mapping files"];
    }

    void disturb(Application& application, Dice& dice) {
        if (fs::remove(m_disk / "filler")) {
            return; // room again
        }
        const unsigned die = dice.below(32);
        if (die == 0) {
            application.killed = true;
            // Its children live on, or die with it.
            kill(dice.oneOf(2) ? application.process : -application.process, SIGKILL);
            kill(-application.process, SIGCONT);
            ++m_counts["kills"];
        } else if (die < 6) {
            kill(-application.process, application.stopped ? SIGCONT : SIGSTOP);
            application.stopped = !application.stopped;
            ++m_counts["stops and continues"];
        } else if (die < 10) {
            const std::string name = "log." + std::to_string(++m_counts["rotations"]);
            rename((m_disk / "log").c_str(), (m_disk / name).c_str());
        } else if (die < 13) {
            replaceMapping();
        } else if (die < 15 && m_canFill) {
            std::ofstream(m_disk / "filler") << std::string(kDiskSize, '-');
            ++m_counts["full disks"];
        }
    }

    /// Whether the application and all its children have ended.
    bool hasEnded(const Application& application) {
        for (;;) {
            int status = 0;
            const pid_t process = waitpid(-application.process, &status, WNOHANG);
            if (process <= 0) {
                return process < 0;
            }
            if (status != 0 && !(application.killed && status == SIGKILL)) {
                complain("process " + std::to_string(process) + " ended with wait status " +
                         std::to_string(status) + (status == SIGALRM ? ": it hung" : ""));
            }
        }
    }

    /// Compares what was raised with what the log and the traces say.
    void compare() {
        m_alarms.clear();
        m_ids.clear();
        for (const auto& file : fs::directory_iterator(m_disk)) {
            for (const std::string& line : linesOf(file.path())) {
                readLogLine(line);
            }
        }
        readTraces();
        const unsigned threads = m_ledger->threads;
        for (unsigned thread = 0; thread < threads; ++thread) {
            const auto& [begun, done] = m_ledger->of[thread];
            for (unsigned alarm = 1; alarm <= begun; ++alarm) {
                const std::string name = alarmName(thread, alarm);
                const Found found = m_alarms[name];
                const unsigned sum = found.logged + found.lost;
                if (sum > 1 || (sum == 0 && alarm <= done)) {
                    complain(name + " is in the log " + std::to_string(found.logged) +
                             " times, traced as lost " + std::to_string(found.lost) + " times");
                }
                ++m_counts[found.logged != 0 ? "alarms in the log"
                           : found.lost != 0 ? "alarms traced as lost"
                                             : "alarms unfinished"];
                m_alarms.erase(name);
            }
        }
        for (const auto& alarm : m_alarms) {
            complain("nobody raised '" + alarm.first + "'");
        }
        m_counts["threads"] += threads;
        m_counts["forks"] += m_ledger->forks;
        m_counts["exits while raising"] += m_ledger->exits;
    }

    void readLogLine(const std::string& line) {
        const auto record = platform::ntf::parseLine(line);
        if (!record) {
            return; // what a writer left that was cut off, or the blank line behind that
        }
        const std::string& alarm = record->notificationObject;
        ++m_alarms[alarm].logged;
        if (!m_ids.insert(record->notificationId).second) {
            complain(alarm + " has an id that another line has, too");
        }
        if (record->minorId == 0 || record->minorId > m_mappings) {
            complain(alarm + " has a minor id that no mapping file gave it");
        }
        m_counts["alarms behind half a line"] += line.rfind("{\"notificationId") == 0 ? 0 : 1;
    }

    /// A failure names no alarm: it is the one that the same thread spoke of last.
    void readTraces() {
        std::map<std::string, std::string> current;
        for (const std::string& line : linesOf(m_folder / "trace")) {
            // The last one in it, where a killed thread left half a line.
            const std::size_t object = line.rfind(" soak.");
            if (object == std::string::npos) {
                continue;
            }
            const std::size_t thread = line.rfind(' ', object - 1) + 1;
            std::string& alarm = current[line.substr(thread, object - thread)];
            const std::string text = line.substr(object);
            if (const std::string name = between(text, "notificationObject:", ", ");
                !name.empty()) {
                alarm = name;
            }
            if (std::any_of(std::begin(kLosses), std::end(kLosses), [&](const char* loss) {
                    return text.find(loss) != std::string::npos;
                })) {
                ++m_alarms[alarm].lost;
            }
        }
    }

    Ledger* m_ledger = nullptr;
    fs::path m_folder;
    fs::path m_disk;
    bool m_canFill = false;
    unsigned m_complaints = 0;
    unsigned m_mappings = 0;
    std::map<std::string, Found> m_alarms;
    std::set<std::uint64_t> m_ids;
    std::map<std::string, unsigned long> m_counts;
};

} // namespace

int main(int argc, char** argv) {
    unsigned long numbers[] = {120, static_cast<unsigned long>(std::time(nullptr))};
    for (int i = 1; i < argc; ++i) {
        char* end = argv[i];
        if (i < 3) {
            numbers[i - 1] = std::strtoul(argv[i], &end, 10);
        }
        if (*end != '\0' || end == argv[i]) {
            std::fputs(kUsage, stderr);
            return 2;
        }
    }
    const auto [seconds, first] = numbers;
    const std::time_t end = std::time(nullptr) + static_cast<std::time_t>(seconds);
    unsigned long seed = first;
    Node node;
    bool good = node.playRound(seed);
    while (good && std::time(nullptr) < end) {
        good = node.playRound(++seed);
    }
    node.report();
    std::printf("%lu rounds from seed %lu: %s\n", seed - first + 1, first,
                good ? "good" : "FAILED");
    if (!good) {
        std::printf("The last one again: %s 0 %lu\n", argv[0], seed);
    }
    return good ? 0 : 1;
}
