#include "ProgramEnvironment.h"

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

/// The texts of a file of /proc, each ended by a NUL.
std::vector<std::string> textsOf(const std::string& path) {
    std::ifstream file(path);
    std::vector<std::string> texts;
    for (std::string text; std::getline(file, text, '\0');) {
        texts.push_back(text);
    }
    return texts;
}

/// `values` as execve(2) takes them.
std::vector<char*> pointersTo(std::vector<std::string>& values) {
    std::vector<char*> pointers;
    pointers.reserve(values.size() + 1);
    for (std::string& value : values) {
        pointers.push_back(value.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

/// "Uid:", "Gid:" or "Groups:" of the program's status.
std::vector<unsigned> idsOf(const std::string& folder, const std::string& field) {
    std::ifstream status(folder + "/status");
    for (std::string line; std::getline(status, line);) {
        std::istringstream words(line);
        std::string name;
        if (words >> name && name == field) {
            return {std::istream_iterator<unsigned>(words), {}};
        }
    }
    return {};
}

/// Becomes the program's user: what it may not read or write, and whose libraries it loads, is not
/// for the superuser to try.
bool takeOnUser(const std::string& folder) {
    const std::vector<unsigned> users = idsOf(folder, "Uid:");
    const std::vector<unsigned> groups = idsOf(folder, "Gid:");
    const std::vector<unsigned> others = idsOf(folder, "Groups:");
    if (users.size() < 2 || groups.size() < 2) { // real, effective, ...
        return false;
    }
    const uid_t user = users[1];
    const gid_t group = groups[1];
    if (user == ::geteuid() && user == ::getuid()) {
        return true;
    }
    return ::setgroups(others.size(), others.data()) == 0 &&
           ::setresgid(group, group, group) == 0 && ::setresuid(user, user, user) == 0;
}

bool isOfTerminal(const std::string& variable) {
    return variable.rfind("TERM=", 0) == 0 || variable.rfind("NO_COLOR=", 0) == 0;
}

} // namespace

void takeOnProgram(const std::string& pid) {
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
    if (::access((folder + "/environ").c_str(), R_OK) != 0) {
        throw failure("its environment cannot be read");
    }
    std::vector<std::string> variables = {std::string(kTakenOn) + '=' + pid};
    for (const char* const name : {"TERM", "NO_COLOR"}) {
        if (const char* const value = common::environment(name, nullptr)) {
            variables.push_back(std::string(name) + '=' + value);
        }
    }
    for (const std::string& variable : textsOf(folder + "/environ")) {
        if (!isOfTerminal(variable)) {
            variables.push_back(variable);
        }
    }
    std::vector<std::string> arguments = textsOf("/proc/self/cmdline");
    if (::chdir((folder + "/cwd").c_str()) != 0) {
        throw failure("its current folder cannot be entered");
    }
    if (!takeOnUser(folder)) {
        throw failure("its user cannot be taken on");
    }
    ::execve("/proc/self/exe", pointersTo(arguments).data(), pointersTo(variables).data());
    throw failure("no program can be run as its user");
}

} // namespace dolqctl
