#include "platform/trace/Sink.h"

#include <cerrno>
#include <climits>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

namespace platform::trace {

namespace {

using common::Descriptor;

constexpr std::string_view kFileScheme = "file:";
constexpr int kPatience = 100; // milliseconds

std::string textOfErrno() { return std::generic_category().message(errno); }

bool hasRoom(int descriptor, int patience) {
    pollfd room{descriptor, POLLOUT, 0};
    return ::poll(&room, 1, patience) == 1 && (room.revents & POLLOUT) != 0;
}

/// Returns how many bytes got through; errno says why the others did not.
std::size_t writeAll(int descriptor, std::string_view text, int patience) {
    std::size_t done = 0;
    for (bool waited = false; done < text.size();) {
        const std::string_view rest = text.substr(done);
        ssize_t count = ::send(descriptor, rest.data(), rest.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count < 0 && errno == ENOTSOCK) {
            count = ::write(descriptor, rest.data(), rest.size());
        }
        if (count > 0) {
            done += static_cast<std::size_t>(count);
            waited = false;
        } else if (count < 0 && errno == EAGAIN && !waited) {
            hasRoom(descriptor, patience);
            waited = true;
        } else if (count == 0 || errno != EINTR) {
            break;
        }
    }
    return done;
}

std::size_t writeToStderr(std::string_view text, int patience) {
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
    // Another user's: with room for one byte, a pipe takes this much at once.
    errno = EAGAIN;
    return hasRoom(STDERR_FILENO, patience)
               ? writeAll(STDERR_FILENO, text.substr(0, PIPE_BUF), patience)
               : 0;
}

/// syslog(3) waits for the log daemon with a lock held that a forked process may find taken.
bool sendToSyslog(int priority, const std::string& line, int patience) {
    const std::string message = "<" + std::to_string(LOG_USER | priority) + ">" +
                                program_invocation_short_name + "[" + std::to_string(getpid()) +
                                "]: " + line;
    const Descriptor log(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const sockaddr_un address{AF_UNIX, "/dev/log"};
    return ::connect(log.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
               0 &&
           writeAll(log.number(), message, patience) == message.size();
}

int openFile(const std::filesystem::path& path, std::string& reason) {
    constexpr int kFlags = O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    constexpr mode_t kMode = S_IRUSR | S_IWUSR | S_IRGRP;
    using std::filesystem::perms;
    const auto folder = path.has_parent_path() ? path.parent_path() : ".";
    std::error_code error;
    create_directories(folder, error);
    int file = ::open(path.c_str(), kFlags | O_NOFOLLOW, kMode);
    if (file < 0 && errno == ELOOP) {
        const perms others = perms::group_write | perms::others_write;
        if ((status(folder, error).permissions() & others) != perms::none) {
            reason = "it is a symbolic link in a folder that others can write to";
            return -1;
        }
        file = ::open(path.c_str(), kFlags, kMode);
    }
    struct stat opened {};
    if (file < 0 && errno != ENXIO) {
        reason = textOfErrno();
    } else if (::fstat(file, &opened) != 0 ||
               !(S_ISREG(opened.st_mode) || S_ISCHR(opened.st_mode))) {
        ::close(file);
        file = -1;
        reason = "it is neither a file nor a device";
    }
    return file;
}

int openChoice(const std::string& choice, std::string& reason) {
    if (choice.compare(0, kFileScheme.size(), kFileScheme) == 0 &&
        choice.size() > kFileScheme.size()) {
        return openFile(choice.substr(kFileScheme.size()), reason);
    }
    if (choice != "stderr" && choice != "syslog") {
        reason = "it must be stderr, file:PATH or syslog";
    }
    return -1;
}

} // namespace

Sink::Sink(const std::string& choice, std::string& reason)
    : m_hasStderr(::fcntl(STDERR_FILENO, F_GETFD) >= 0), m_isSyslog(choice == "syslog"),
      m_file(openChoice(choice, reason)) {
    ::fstat(m_file.number(), &m_identity);
}

bool Sink::write(int priority, const std::string& line) {
    const std::string text = (m_torn ? "\n" : "") + line + "\n";
    errno = EBADF; // what is left of it when there is nothing to write to
    const std::size_t done = deliver(priority, line, text);
    const bool whole = done == text.size();
    if (done > 0) {
        m_torn = !whole;
    }
    const bool isFirst = !whole && !m_failing;
    if (isFirst && (m_isSyslog || m_file.number() >= 0)) {
        tell("messages are lost: " + textOfErrno());
    }
    m_failing = !whole;
    return whole;
}

void Sink::tell(const std::string& text) const {
    if (m_hasStderr) {
        writeToStderr("ruxa-trace: " + text + "\n", kPatience);
    }
}

std::size_t Sink::deliver(int priority, const std::string& line, std::string_view text) const {
    const int patience = m_failing ? 0 : kPatience;
    if (m_isSyslog) {
        return sendToSyslog(priority, line, patience) ? text.size() : 0;
    }
    if (m_file.number() < 0) {
        return m_hasStderr ? writeToStderr(text, patience) : 0;
    }
    // An application that closes all descriptors may have opened another file under the number.
    struct stat current {};
    const bool isOwn = ::fstat(m_file.number(), &current) == 0 &&
                       current.st_dev == m_identity.st_dev && current.st_ino == m_identity.st_ino;
    return isOwn ? writeAll(m_file.number(), text, patience) : 0;
}

} // namespace platform::trace
