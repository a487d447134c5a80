#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <regex>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <ruxa/trace/v2/TraceBackend.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "Diagnosis.h"
#include "SharedObject.h"
#include "common/Descriptor.h"
#include "common/Environment.h"
#include "platform/ntf/log/LogPath.h"

namespace dolqctl {

namespace {

namespace fs = std::filesystem;
using ruxa::trace::v2::TraceBackend;

constexpr auto kFailures = static_cast<ruxa::trace::v2::TraceGroup::e>(0);
constexpr char kLog[] = "notification log";

/// `harm`: a pattern that is found in values that do harm, which `flaw` and `advice` are about.
void checkVariable(Diagnosis& diagnosis, const char* name, const char* without, const char* harm,
                   const char* flaw, const char* advice) {
    const char* const value = common::environment(name, nullptr);
    if (value == nullptr || *value == '\0') {
        diagnosis.fail(name, value != nullptr ? "set to nothing" : "not set",
                       std::string("set it: without it ") + without);
    } else if (std::regex_search(value, std::regex(harm))) {
        diagnosis.warn(name, '\'' + std::string(value) + "', " + flaw, advice);
    } else {
        diagnosis.ok(name, value);
    }
}

/// The nearest folder above `path` that exists.
fs::path folderOf(const fs::path& path) {
    std::error_code error;
    fs::path folder = fs::absolute(path, error).parent_path();
    while (::access(folder.c_str(), F_OK) != 0 && folder.has_relative_path()) {
        folder = folder.parent_path();
    }
    return folder;
}

/// Why the embedded platform cannot append to `path`, or make it; empty when it can. It opens files
/// just so: it waits for no reader of a FIFO, and follows no link where others could have put it.
/// Opening tells more than permissions, which the superuser has where nothing can be written.
std::string obstacleTo(const fs::path& path) {
    const fs::path folder = folderOf(path);
    struct stat status {};
    const bool isShared =
        ::stat(folder.c_str(), &status) == 0 && (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
    const int flags =
        O_RDWR | O_APPEND | O_NONBLOCK | O_CLOEXEC | O_NOCTTY | (isShared ? O_NOFOLLOW : 0);
    const common::Descriptor file(::open(path.c_str(), flags));
    if (file.number() < 0 && errno == ENOENT && path.has_filename()) {
        std::error_code ignored;
        std::string probe = // a folder can be made where a file can
            folderOf(fs::weakly_canonical(path, ignored)) / ".dolqctl-XXXXXX";
        return ::mkdtemp(probe.data()) != nullptr && ::rmdir(probe.c_str()) == 0
                   ? ""
                   : std::strerror(errno);
    }
    if (file.number() < 0 && errno != ENXIO) { // which a FIFO gives
        return errno == ELOOP && isShared ? "it is a symbolic link in a folder others can write to"
                                          : std::strerror(errno);
    }
    return ::fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode)
               ? ""
               : "it is no regular file";
}

/// `size`: of the log.
void checkRoom(Diagnosis& diagnosis, const std::string& log, const fs::path& folder,
               std::uintmax_t size) {
    constexpr std::uintmax_t kOneAlarm = 1024;
    constexpr std::uintmax_t kEnough = 65536; // for the lines of some alarms
    std::error_code error;
    const fs::space_info disk = fs::space(folder, error);
    struct rlimit limit {};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const std::uintmax_t allowed = limit.rlim_cur > size ? limit.rlim_cur - size : 0;
    const std::uintmax_t onDisk = disk.capacity == 0 ? kEnough // not told
                                  : ::geteuid() == 0 ? disk.free
                                                     : disk.available;
    const bool isLimit = allowed < onDisk;
    const std::string finding =
        log + " has room for " + std::to_string(std::min(allowed, onDisk)) + " bytes only" +
        (isLimit ? ", by the limit on file sizes (ulimit -f)" : " on its disk");
    const char* const advice =
        isLimit ? "raise the limit, or rotate the log: SIGXFSZ kills programs that reach it"
                : "make room, or set RUXA_NTF_LOG: the service refuses alarms on a full disk";
    if (std::min(allowed, onDisk) < kOneAlarm) {
        diagnosis.fail(kLog, finding, advice);
    } else if (allowed < kEnough || onDisk < kEnough) {
        diagnosis.warn(kLog, finding, advice);
    } else {
        diagnosis.ok(kLog, log);
    }
}

} // namespace

void checkTraces(Diagnosis& diagnosis) {
    constexpr char kCheck[] = "trace backend";
    constexpr char kSinkVariable[] = "RUXA_TRACE_SINK";
    const std::string chosen = common::environment(kSinkVariable, "stderr");
    // The doctor tells what it finds itself: what the checks trace goes nowhere.
    setenv(kSinkVariable, "file:/dev/null", 1);
    const SharedObject backend(kTraceLibrary);
    const bool isEmbedded = backend.contains(kSinkVariable);
    if (TraceBackend::isTraceGroupEnabled(TraceBackend::getDefaultTraceObject(), kFailures)) {
        diagnosis.ok(kCheck, backend.file() + ": group 0 (failures) is on" +
                                 (isEmbedded ? ", sink: " + chosen + " (not tried)" : ""));
    } else {
        diagnosis.warn(kCheck, backend.file() + ": group 0 (failures) is off",
                       "switch it on (RUXA_TRACE_GROUPS, or this platform's way): without it lost "
                       "alarms leave no sign");
    }
}

void checkIdentity(Diagnosis& diagnosis) {
    for (const char* const name : {"ZBN_NO", "ZBN_REV"}) {
        checkVariable(diagnosis, name, "no load module is found, and so no mapping", R"(\s)",
                      "with white space in it",
                      "compare it with the load modules': white space counts");
    }
}

void checkReporter(Diagnosis& diagnosis) {
    constexpr char kNoIdentity[] = "alarms whose program does not name its system are refused";
    checkVariable(diagnosis, "SYSTEM_UUID", kNoIdentity,
                  "^(?![0-9a-fA-F]{8}(-[0-9a-fA-F]{4}){3}-[0-9a-fA-F]{12}$)", "which is no UUID",
                  "set the system's UUID: systems without one share their correlation UUIDs");
    checkVariable(diagnosis, "COMPUTE_NAME", kNoIdentity, R"(["\\])", "with a quote or backslash",
                  "take it out: no receiver can decode the correlation with it");
}

void checkNotificationLog(Diagnosis& diagnosis) {
    const fs::path path = platform::ntf::notificationLogPath();
    const bool isChosen = *common::environment("RUXA_NTF_LOG") != '\0';
    const std::string log = path.string() + (isChosen ? "" : " (RUXA_NTF_LOG is not set)");
    struct stat status {};
    const bool isNull = ::stat(path.c_str(), &status) == 0 && S_ISCHR(status.st_mode) &&
                        status.st_rdev == makedev(1, 3);
    const std::string obstacle = isNull ? "" : obstacleTo(path);
    if (path.empty()) {
        diagnosis.fail(kLog, "RUXA_NTF_LOG, XDG_STATE_HOME and HOME name no place for it",
                       "set RUXA_NTF_LOG: the service refuses every session");
    } else if (!obstacle.empty()) {
        diagnosis.fail(kLog, log + " cannot be written: " + obstacle,
                       "correct RUXA_NTF_LOG or the permissions: the service refuses every alarm");
    } else if (isNull) {
        diagnosis.warn(kLog, log + " keeps nothing", "set RUXA_NTF_LOG to a file");
    } else {
        checkRoom(diagnosis, log, folderOf(path), static_cast<std::uintmax_t>(status.st_size));
    }
}

} // namespace dolqctl
