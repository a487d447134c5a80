#include "platform/ntf/AlarmReading.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/CancellationHeld.h"
#include "common/Descriptor.h"
#include "common/Escape.h"
#include "common/ReportOnce.h"

namespace platform::ntf {

namespace {

constexpr std::size_t kPiece = 65536;
constexpr std::size_t kLongestLine = 16 << 20; // an alarm's is never as long

/// Of a name, as the log shows it.
std::string logText(const SaNameT& name) {
    const std::string json = common::jsonString(toText(name));
    return json.substr(1, json.size() - 2);
}

[[noreturn]] void fail(const std::filesystem::path& log, int error, const std::string& cause) {
    common::reportOnce("ruxa-ntf: the alarms in '" + common::escapedText(log.string()) +
                       "' cannot be read: " + cause + '\n');
    throw std::system_error(error, std::generic_category());
}

[[noreturn]] void fail(const std::filesystem::path& log) {
    const int error = errno;
    fail(log, error, std::generic_category().message(error));
}

/// O_NONBLOCK: nothing waits for the other end of a FIFO.
int openForReading(const std::filesystem::path& log) {
    return ::open(log.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
}

} // namespace

AlarmReading::AlarmReading(HandleTable::LogPath log, const AlarmFilter& filter)
    : m_log(std::move(log)) {
    for (const SaNameT& object : filter.objects()) {
        m_objects.push_back(logText(object));
    }
    const common::CancellationHeld held;
    const common::Descriptor file(openForReading(*m_log));
    struct stat status {};
    if (file.number() < 0 && errno == ENOENT) {
        return;
    }
    if (file.number() < 0 || ::fstat(file.number(), &status) != 0) {
        fail(*m_log);
    }
    if (!S_ISREG(status.st_mode) && *m_log != "/dev/null") {
        fail(*m_log, EINVAL, "it is no regular file");
    }
    m_device = status.st_dev;
    m_file = status.st_ino;
    m_end = status.st_size;
}

std::shared_ptr<AlarmNotification> AlarmReading::next() {
    while (const auto line = nextLine()) {
        if (!isWanted(*line)) { // which is much cheaper to see than to read the line
            continue;
        }
        auto notification = AlarmNotification::ofLine(*line);
        if (notification && isWanted(logText(notification->object()))) {
            return notification;
        }
    }
    return nullptr;
}

/// The text of the last line, which has no newline when a writer was cut short, counts as well.
std::optional<std::string_view> AlarmReading::nextLine() {
    std::size_t end = m_text.find('\n', m_nextLine);
    while (end == std::string::npos) {
        m_text.erase(0, m_text.size() - m_nextLine > kLongestLine ? std::string::npos : m_nextLine);
        m_nextLine = 0;
        const std::size_t searched = m_text.size();
        if (!readOn()) {
            end = searched;
            break;
        }
        end = m_text.find('\n', searched);
    }
    if (m_nextLine >= m_text.size()) {
        return std::nullopt;
    }
    const auto line = std::string_view(m_text).substr(m_nextLine, end - m_nextLine);
    m_nextLine = std::min(end + 1, m_text.size());
    return line;
}

/// False at the end.
bool AlarmReading::readOn() {
    if (m_at == m_end) {
        return false;
    }
    const common::CancellationHeld held;
    const common::Descriptor file(openForReading(*m_log));
    struct stat status {};
    if (file.number() < 0 || ::fstat(file.number(), &status) != 0) {
        fail(*m_log);
    }
    const std::size_t had = m_text.size();
    m_text.resize(had + std::min(kPiece, static_cast<std::size_t>(m_end - m_at)));
    const ssize_t got = ::pread(file.number(), &m_text[had], m_text.size() - had, m_at);
    m_text.resize(had + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    if (got < 0) {
        fail(*m_log);
    }
    if (got == 0 || status.st_dev != m_device || status.st_ino != m_file) {
        m_text.resize(had);
        fail(*m_log, ESTALE, "it was renamed or cut meanwhile");
    }
    m_at += got;
    return true;
}

bool AlarmReading::isWanted(std::string_view text) const {
    return m_objects.empty() ||
           std::any_of(m_objects.begin(), m_objects.end(), [text](const std::string& object) {
               return text.find(object) != std::string_view::npos;
           });
}

} // namespace platform::ntf
