// The running program that `--pid` names.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <system_error>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "Output.h"
#include "SharedObject.h"
#include "common/Environment.h"
#include "common/LoadModuleNames.h"
#include "doctor/Checks.h"

namespace dolqctl {

namespace {

constexpr char kManifestFolder[] = "VELK_MANIFEST_DIR";

/// Whether the library or a part of its platform reads the variable.
bool isRead(const std::string& name) {
    return name.rfind("ZBN_", 0) == 0 || name.rfind("VELK_", 0) == 0 ||
           name.rfind("RUXA_", 0) == 0 || name == "SYSTEM_UUID" || name == "COMPUTE_NAME";
}

/// The files that a process has mapped as `soname`: device, inode and path.
std::set<std::string> mapped(const std::string& process, const std::string& soname) {
    std::set<std::string> files;
    std::ifstream maps("/proc/" + process + "/maps");
    for (std::string line; std::getline(maps, line);) {
        // The file's name may have more numbers.
        if (line.find('/' + soname.substr(0, soname.rfind('.'))) != line.npos) {
            int file = 0; // behind addresses, permissions and offset
            std::sscanf(line.c_str(), "%*s %*s %*s %n", &file);
            files.insert(line.substr(static_cast<std::size_t>(file)));
        }
    }
    return files;
}

double secondsOf(const timespec& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// The letter of its state, and when it was started, in seconds of this system's time.
std::pair<char, double> stateOf(const std::string& pid) {
    std::string text;
    std::getline(std::ifstream("/proc/" + pid + "/stat"), text, '\0');
    std::istringstream fields(text.substr(text.rfind(')') + 1)); // behind the name
    char state = '?';
    fields >> state;
    constexpr int kBetween = 18; // fields
    for (int i = 0; i < kBetween; ++i) {
        fields >> text;
    }
    double ticks = 0; // since the system was started
    fields >> ticks;
    timespec now{};
    timespec sinceBoot{};
    clock_gettime(CLOCK_REALTIME, &now);
    clock_gettime(CLOCK_BOOTTIME, &sinceBoot);
    return {state, secondsOf(now) - secondsOf(sinceBoot) +
                       (ticks + 1) / static_cast<double>(sysconf(_SC_CLK_TCK))};
}

/// The mapping files, and the manifests that the embedded handler reads.
std::vector<std::string> filesOf(const Discovery& discovery) {
    std::vector<std::string> files = discovery.mappingFiles;
    const std::string chosen = common::environment(kManifestFolder);
    for (const std::string category : common::kLoadModuleCategories) {
        files.push_back((chosen.empty() ? common::kDefaultManifestDirectory : chosen) + '/' +
                        category + ".xml");
    }
    return files;
}

} // namespace

std::string takeOnVariables(const std::string& pid) {
    if (pid.empty() || pid.find_first_not_of("0123456789") != std::string::npos) {
        throw CommandError("--pid: " + inQuotes(pid) + " is no process id");
    }
    std::ifstream variables("/proc/" + pid + "/environ");
    if (!variables) {
        throw CommandError("the variables of process " + pid +
                           " cannot be read: " + std::strerror(errno));
    }
    if (mapped(pid, kDolqLibrary).empty()) {
        throw CommandError("process " + pid + " has not loaded " + kDolqLibrary +
                           ": it raises no alarms through it");
    }
    for (char** each = environ; *each != nullptr;) {
        const std::string name(*each, std::strcspn(*each, "="));
        if (isRead(name)) {
            unsetenv(name.c_str()); // the next one takes its place
        } else {
            ++each;
        }
    }
    for (std::string text; std::getline(variables, text, '\0');) {
        const std::string name = text.substr(0, text.find('='));
        if (isRead(name) && name.size() < text.size()) {
            setenv(name.c_str(), &text[name.size() + 1], 0); // the first of a name counts
        }
    }
    std::error_code ignored;
    return "Variables of process " + pid + " (" +
           std::filesystem::read_symlink("/proc/" + pid + "/exe", ignored).string() +
           ") as it was started. Not seen: what it read at its start, what its adapters were "
           "answered, what it set itself.";
}

void checkProgram(Diagnosis& diagnosis, const std::string& pid, const Discovery& discovery) {
    if (pid.empty()) {
        return;
    }
    constexpr char kCheck[] = "program";
    constexpr char kMeaning[] = "what is found here may not hold for it";
    const std::filesystem::path folder = "/proc/" + pid;
    const auto [state, start] = stateOf(pid);
    const auto fail = [&](const std::string& finding, const std::string& advice) {
        diagnosis.fail(kCheck, finding, kMeaning, advice);
    };
    struct stat status {};
    if (::stat(folder.c_str(), &status) != 0 || std::strchr("ZX?", state) != nullptr) {
        fail("it has ended", "find out why");
        return;
    }
    if (status.st_uid != ::geteuid()) {
        diagnosis.warn(kCheck, "it runs as user " + std::to_string(status.st_uid), kMeaning,
                       "run dolqctl as that user");
    }
    for (const std::string& file : filesOf(discovery)) {
        if (::stat(file.c_str(), &status) == 0 && secondsOf(status.st_ctim) > start) {
            fail(file + " has changed since it was started", "start it anew");
        }
    }
    std::error_code ignored;
    for (const char* const name : {kManifestFolder, "RUXA_NTF_LOG"}) {
        const std::string value = common::environment(name);
        if (!value.empty() && value.front() != '/' &&
            !std::filesystem::equivalent(folder / "cwd", ".", ignored)) {
            fail(name + (" counts from its folder: " + value), "run dolqctl in that folder");
        }
    }
    for (const auto& [part, soname] : kParts) {
        for (const std::string& file : mapped(pid, soname)) {
            if (mapped("self", soname).count(file) == 0) {
                fail("it has " + file.substr(file.find('/')) + ", this command another " + soname,
                     "run dolqctl with the program's loader path (LD_LIBRARY_PATH)");
            }
        }
    }
    if (std::filesystem::read_symlink(folder / "root", ignored) != "/" ||
        !std::filesystem::equivalent(folder / "ns/mnt", "/proc/self/ns/mnt", ignored)) {
        fail("it has another root folder or mount namespace, and other files", "run dolqctl there");
    }
    if (std::strchr("Tt", state) != nullptr) {
        diagnosis.fail(kCheck, "it is stopped", "it sends nothing",
                       "let it go on: kill -CONT " + pid);
    }
}

} // namespace dolqctl
