// The running program that `--pid` names.
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <system_error>

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

/// By soname, which files a process has mapped as the library and the parts of its platform:
/// device, inode and path.
std::map<std::string, std::string> mappedParts(const std::string& process) {
    std::map<std::string, std::string> parts;
    std::ifstream maps("/proc/" + process + "/maps");
    for (std::string line; std::getline(maps, line);) {
        int file = 0; // behind addresses, permissions and offset
        std::sscanf(line.c_str(), "%*s %*s %*s %n", &file);
        const std::string name = line.substr(line.rfind('/') + 1);
        for (const auto& part : kParts) {
            const std::string soname = part.soname; // the file may have more numbers
            if (name.rfind(soname.substr(0, soname.rfind('.')), 0) == 0) {
                parts.emplace(soname, line.substr(static_cast<std::size_t>(file)));
            }
        }
    }
    return parts;
}

bool isSame(const std::string& one, const std::string& other) {
    struct stat first {};
    struct stat second {};
    return ::stat(one.c_str(), &first) == 0 && ::stat(other.c_str(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

double secondsOf(const timespec& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

struct State {
    char letter = '?';
    double start = 0; ///< in seconds of this system's time
};

State stateOf(const std::string& folder) {
    std::string text;
    std::getline(std::ifstream(folder + "stat"), text, '\0');
    std::istringstream fields(text.substr(text.rfind(')') + 1)); // behind the name
    State state;
    fields >> state.letter;
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
    state.start = secondsOf(now) - secondsOf(sinceBoot) +
                  (ticks + 1) / static_cast<double>(sysconf(_SC_CLK_TCK));
    return state;
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
    if (mappedParts(pid).count(kDolqLibrary) == 0) {
        throw CommandError("process " + pid + " has not loaded " + kDolqLibrary +
                           ": it raises no alarms through it");
    }
    std::vector<std::string> own;
    for (char** each = environ; *each != nullptr; ++each) {
        own.push_back(std::string(*each).substr(0, std::strcspn(*each, "=")));
    }
    for (const std::string& name : own) {
        isRead(name) ? unsetenv(name.c_str()) : 0;
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
    const std::string folder = "/proc/" + pid + '/';
    const State state = stateOf(folder);
    const auto fail = [&](const std::string& finding, const std::string& advice) {
        diagnosis.fail(kCheck, finding, kMeaning, advice);
    };
    struct stat status {};
    if (::stat(folder.c_str(), &status) != 0 || std::strchr("ZX?", state.letter) != nullptr) {
        fail("it has ended", "find out why");
        return;
    }
    if (status.st_uid != ::geteuid()) {
        diagnosis.warn(kCheck, "it runs as user " + std::to_string(status.st_uid), kMeaning,
                       "run dolqctl as that user");
    }
    for (const std::string& file : filesOf(discovery)) {
        if (::stat(file.c_str(), &status) == 0 && secondsOf(status.st_ctim) > state.start) {
            fail(file + " has changed since it was started", "start it anew");
        }
    }
    for (const char* const name : {kManifestFolder, "RUXA_NTF_LOG"}) {
        const std::string value = common::environment(name);
        if (!value.empty() && value.front() != '/' && !isSame(folder + "cwd", ".")) {
            fail(name + (" counts from its folder: " + value), "run dolqctl in that folder");
        }
    }
    std::map<std::string, std::string> own = mappedParts("self");
    for (const auto& [soname, file] : mappedParts(pid)) {
        const std::string id = file.substr(0, file.find('/'));
        if (own[soname].substr(0, id.size()) != id) {
            fail("it has " + file.substr(id.size()) + ", this command another " + soname,
                 "run dolqctl with the program's loader path (LD_LIBRARY_PATH)");
        }
    }
    std::error_code ignored;
    if (std::filesystem::read_symlink(folder + "root", ignored) != "/" ||
        !isSame(folder + "ns/mnt", "/proc/self/ns/mnt")) {
        fail("it has another root folder or mount namespace, and other files", "run dolqctl there");
    }
    if (std::strchr("Tt", state.letter) != nullptr) {
        diagnosis.fail(kCheck, "it is stopped", "it sends nothing",
                       "let it go on: kill -CONT " + pid);
    }
}

} // namespace dolqctl
