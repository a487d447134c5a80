#include "platform/trace/Sink.h"

#include <cerrno>
#include <chrono>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include "common/AppendLine.h"
#include "common/Descriptor.h"

namespace platform::trace {

namespace {

using common::Descriptor;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::string_view kFileScheme = "file:";
constexpr milliseconds kPatience{100};

bool hasRoom(int descriptor, milliseconds patience) {
    pollfd room{descriptor, POLLOUT, 0};
    return ::poll(&room, 1, static_cast<int>(patience.count())) == 1 &&
           (room.revents & POLLOUT) != 0;
}

ssize_t writeOnce(int descriptor, std::string_view text) {
    const ssize_t count = ::send(descriptor, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    return count < 0 && errno == ENOTSOCK ? ::write(descriptor, text.data(), text.size()) : count;
}

/// Fills a pipe that is not O_NONBLOCK without waiting for its reader, as write(2) would.
ssize_t spliceOnce(int pipe, std::string_view text) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
        return -1;
    }
    const Descriptor out(ends[0]);
    const Descriptor in(ends[1]);
    const ssize_t count = ::write(in.number(), text.data(), text.size());
    return count <= 0 ? count
                      : ::splice(out.number(), nullptr, pipe, nullptr,
                                 static_cast<std::size_t>(count), SPLICE_F_NONBLOCK);
}

/// Returns how many bytes got through; errno says why the others did not.
std::size_t writeAll(int descriptor, std::string_view text, milliseconds patience,
                     ssize_t (*attempt)(int, std::string_view) = writeOnce) {
    const auto end = Clock::now() + patience;
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t count = attempt(descriptor, text.substr(done));
        if (count > 0) {
            done += static_cast<std::size_t>(count);
            continue;
        }
        const auto left = std::chrono::ceil<milliseconds>(end - Clock::now());
        if (count == 0 || (errno != EINTR && (errno != EAGAIN || left.count() <= 0))) {
            break;
        }
        if (errno == EAGAIN) {
            hasRoom(descriptor, left);
        }
    }
    return done;
}

std::size_t writeToStderr(std::string_view text, milliseconds patience) {
    struct stat status {};
    if (::fstat(STDERR_FILENO, &status) != 0) {
        return 0;
    }
    if (S_ISREG(status.st_mode) || S_ISSOCK(status.st_mode)) {
        return writeAll(STDERR_FILENO, text, patience);
    }
    // Opened anew, a pipe or a terminal is written without waiting, and nothing changes for those
    // who share the descriptor. Each time: kept open, its reader would wait for its end.
    const Descriptor anew(::open("/proc/self/fd/2", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (anew.number() >= 0) {
        return writeAll(anew.number(), text, patience);
    }
    // It is another user's.
    if (S_ISFIFO(status.st_mode)) {
        return writeAll(STDERR_FILENO, text, patience, spliceOnce);
    }
    return hasRoom(STDERR_FILENO, patience) ? writeAll(STDERR_FILENO, text, patience) : 0;
}

/// syslog(3) waits for the log daemon with a lock held that a forked process may find taken.
/// Returns 0 or an errno value.
int sendToSyslog(int priority, const std::string& line, milliseconds patience) {
    const std::string message = "<" + std::to_string(LOG_USER | priority) + ">" +
                                program_invocation_short_name + "[" + std::to_string(getpid()) +
                                "]: " + line;
    const Descriptor log(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const sockaddr_un address{AF_UNIX, "/dev/log"};
    const bool isSent =
        ::connect(log.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        writeAll(log.number(), message, patience) == message.size();
    return isSent ? 0 : errno;
}

} // namespace

Sink::Sink(const std::string& choice, std::string& reason)
    : m_hasStderr(::fcntl(STDERR_FILENO, F_GETFD) >= 0), m_isSyslog(choice == "syslog") {
    if (choice.compare(0, kFileScheme.size(), kFileScheme) == 0 &&
        choice.size() > kFileScheme.size()) {
        std::error_code ignored; // an empty path is refused
        // Absolute: a daemon changes its folder.
        const auto file = std::filesystem::absolute(choice.substr(kFileScheme.size()), ignored);
        if (const int error = common::appendLine(file, ""); error != 0) {
            reason = common::appendFailure(error);
        } else {
            m_file = file;
        }
    } else if (choice != "stderr" && choice != "syslog") {
        reason = "it must be stderr, file:PATH or syslog";
    }
}

bool Sink::write(int priority, const std::string& line) {
    const milliseconds patience = m_failing ? milliseconds(0) : kPatience;
    if (!m_isSyslog && m_file.empty()) {
        const bool isWhole = toStderr(line, patience);
        m_failing = !isWhole;
        return isWhole;
    }
    const int error = m_isSyslog ? sendToSyslog(priority, line, patience)
                                 : common::appendLine(m_file, line + "\n");
    if (!m_failing.exchange(error != 0) && error != 0) {
        tell("messages are lost: " + common::appendFailure(error));
    }
    return error == 0;
}

void Sink::tell(const std::string& text) { toStderr("ruxa-trace: " + text, kPatience); }

bool Sink::toStderr(const std::string& line, milliseconds patience) {
    const std::string text = (m_torn ? "\n" : "") + line + "\n";
    const std::size_t done = m_hasStderr ? writeToStderr(text, patience) : 0;
    if (done > 0) {
        m_torn = done < text.size();
    }
    return done == text.size();
}

} // namespace platform::trace
