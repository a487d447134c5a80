#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

#include <grp.h>
#include <unistd.h>

#include "Commands.h"
#include "Output.h"
#include "common/Environment.h"

namespace dolqctl {

namespace {

constexpr char kTakenOn[] = "DOLQCTL_PID"; // the program whose surroundings this process has

/// What stands behind "Uid:", "Gid:" or "Groups:" in the program's status.
std::vector<unsigned> idsOf(const std::string& folder, const std::string& field) {
    std::ifstream status(folder + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(field, 0) == 0) {
            std::istringstream ids(line.substr(field.size()));
            return {std::istream_iterator<unsigned>(ids), {}};
        }
    }
    return {};
}

/// Becomes the program's user: what it may not read or write, and whose libraries it loads, is not
/// for the superuser to try.
bool takeOnUser(const std::string& folder) {
    const std::vector<unsigned> users = idsOf(folder, "Uid:"); // real, effective, ...
    const std::vector<unsigned> groups = idsOf(folder, "Gid:");
    const std::vector<unsigned> others = idsOf(folder, "Groups:");
    if (users.size() < 2 || groups.size() < 2) {
        return false;
    }
    return (users[1] == ::geteuid() && users[1] == ::getuid()) ||
           (::setgroups(others.size(), others.data()) == 0 &&
            ::setresgid(groups[1], groups[1], groups[1]) == 0 &&
            ::setresuid(users[1], users[1], users[1]) == 0);
}

} // namespace

void takeOnProgram(const std::string& pid, char** argv) {
    if (common::environment(kTakenOn) == pid) {
        unsetenv(kTakenOn);
        return;
    }
    if (pid.empty() || pid.find_first_not_of("0123456789") != std::string::npos) {
        throw CommandError("--pid: " + inQuotes(pid) + " is no process id");
    }
    const std::string folder = "/proc/" + pid;
    const auto failure = [&](const std::string& what) {
        return CommandError("process " + pid + ": " + what + ": " + std::strerror(errno));
    };
    std::ostringstream variables;
    std::ifstream environment(folder + "/environ");
    if (!environment) {
        throw failure("its environment cannot be read");
    }
    variables << kTakenOn << '=' << pid << '\0' << environment.rdbuf(); // which may be empty
    if (::chdir((folder + "/cwd").c_str()) != 0) {
        throw failure("its current folder cannot be entered");
    }
    if (!takeOnUser(folder)) {
        throw failure("its user cannot be taken on");
    }
    std::string texts = variables.str() + '\0'; // each ended by a NUL
    std::vector<char*> pointers;
    for (std::size_t at = 0; at < texts.size(); at = texts.find('\0', at) + 1) {
        pointers.push_back(&texts[at]);
    }
    pointers.push_back(nullptr);
    ::execve("/proc/self/exe", argv, pointers.data());
    throw failure("no program can be run as its user");
}

} // namespace dolqctl
