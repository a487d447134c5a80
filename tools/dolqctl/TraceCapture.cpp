#include "TraceCapture.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <system_error>

#include <sys/mman.h>
#include <syslog.h>
#include <unistd.h>

#include "Context.h"

namespace dolqctl {

namespace {

constexpr char kSinkVariable[] = "RUXA_TRACE_SINK";
constexpr char kGroupsVariable[] = "RUXA_TRACE_GROUPS";
constexpr char kFileScheme[] = "file:";

std::optional<std::string> environment(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

int createMemoryFile() {
    const int file = memfd_create("dolqctl-traces", MFD_CLOEXEC);
    if (file < 0) {
        throw std::system_error(errno, std::generic_category(), "no memory file for the traces");
    }
    return file;
}

std::string pathOf(int file) { return "/proc/self/fd/" + std::to_string(file); }

void appendTo(const std::string& path, const std::vector<std::string>& lines) {
    std::ofstream file(path, std::ios::app);
    for (const std::string& line : lines) {
        file << line + '\n';
    }
    if (!file.flush()) {
        tell("the traces could not be written to " + printable(path) + ", see " + kSinkVariable);
    }
}

} // namespace

TraceCapture::TraceCapture(bool details)
    : m_sinkBefore(environment(kSinkVariable)), m_file(createMemoryFile()) {
    setenv(kSinkVariable, (kFileScheme + pathOf(m_file)).c_str(), 1);
    setenv(kGroupsVariable, details ? "0,4,8" : "0,4", 1);
}

TraceCapture::~TraceCapture() { ::close(m_file); }

std::vector<std::string> TraceCapture::lines() const {
    std::ifstream file(pathOf(m_file)); // opened anew: read from its beginning
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

void TraceCapture::passOn() const {
    const std::string sink = m_sinkBefore.value_or("");
    if (sink.rfind(kFileScheme, 0) == 0) {
        appendTo(sink.substr(sizeof(kFileScheme) - 1), lines());
    } else if (sink == "syslog") {
        for (const std::string& line : lines()) {
            syslog(LOG_USER | LOG_INFO, "%s", line.c_str());
        }
    }
}

} // namespace dolqctl
