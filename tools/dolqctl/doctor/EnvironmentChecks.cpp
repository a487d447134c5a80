#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <ruxa/trace/v2/TraceBackend.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "Library.h"
#include "common/Environment.h"
#include "doctor/Diagnosis.h"
#include "platform/ntf/log/LogPath.h"

namespace dolqctl {

namespace {

namespace fs = std::filesystem;
using ruxa::trace::v2::TraceBackend;

/// The value of a variable; empty after a failure when there is none.
std::string needed(Diagnosis& diagnosis, const char* name, const char* without) {
    std::string value = common::environment(name);
    if (value.empty()) {
        const bool isSet = common::environment(name, nullptr) != nullptr;
        diagnosis.fail(name, isSet ? "set to nothing" : "not set",
                       std::string("set it: without it ") + without);
    }
    return value;
}

/// They are compared letter for letter with those of the load modules.
void checkIdentity(Diagnosis& diagnosis, const char* name) {
    const std::string value = needed(diagnosis, name, "no load module is found, and so no mapping");
    if (value.find_first_of(" \t\n\v\f\r") != std::string::npos) {
        diagnosis.warn(name, "'" + value + "', with white space in it",
                       "compare it with the load modules': white space counts");
    } else if (!value.empty()) {
        diagnosis.ok(name, value);
    }
}

bool isUuid(std::string text) {
    const auto isDigit = [](unsigned char c) { return std::isxdigit(c) != 0; };
    std::replace_if(text.begin(), text.end(), isDigit, '0');
    return text == "00000000-0000-0000-0000-000000000000";
}

void checkReporter(Diagnosis& diagnosis, const char* name) {
    const std::string value =
        needed(diagnosis, name, "alarms whose program does not name its system are refused");
    if (value.find_first_of("\"\\") != std::string::npos) {
        diagnosis.warn(name, "'" + value + "'",
                       "take the quotes and backslashes out: no receiver can decode the "
                       "correlation with them");
    } else if (!value.empty() && name == std::string("SYSTEM_UUID") && !isUuid(value)) {
        diagnosis.warn(name, "'" + value + "', which is no UUID",
                       "set the system's UUID: systems without one share their correlation UUIDs");
    } else if (!value.empty()) {
        diagnosis.ok(name, value);
    }
}

void checkGroups(Diagnosis& diagnosis) {
    constexpr char kCheck[] = "trace backend";
    const std::string file = Library(kTraceLibrary).file();
    if (!TraceBackend::isTraceGroupEnabled(TraceBackend::getDefaultTraceObject(),
                                           static_cast<ruxa::trace::v2::TraceGroup::e>(0))) {
        diagnosis.warn(kCheck, file + ": group 0 (failures) is off",
                       "switch it on (RUXA_TRACE_GROUPS, or this platform's way): without it lost "
                       "alarms leave no sign");
    } else {
        diagnosis.ok(kCheck, file + ": group 0 (failures) is on");
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

bool isNullDevice(const struct stat& status) {
    return S_ISCHR(status.st_mode) && status.st_rdev == makedev(1, 3);
}

/// Why the embedded platform cannot append to `path`, or make it; empty when it can. It opens files
/// just so: it waits for no reader of a FIFO, and follows no link where others could have put it.
/// Opening tells more than permissions, which the superuser has where nothing can be written.
std::string obstacleTo(const fs::path& path, bool isLog) {
    const fs::path folder = folderOf(path);
    struct stat status {};
    const bool isShared =
        ::stat(folder.c_str(), &status) == 0 && (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
    const int flags = O_APPEND | O_NONBLOCK | O_CLOEXEC | O_NOCTTY | (isShared ? O_NOFOLLOW : 0);
    const int file = ::open(path.c_str(), flags | (isLog ? O_RDWR : O_WRONLY));
    if (file >= 0) {
        const bool isRegular = ::fstat(file, &status) == 0 && S_ISREG(status.st_mode);
        ::close(file);
        return isRegular || (isLog ? isNullDevice(status) : S_ISCHR(status.st_mode))
                   ? ""
                   : "it is no regular file";
    }
    if (errno == ENOENT && path.has_filename() && ::access(folder.c_str(), W_OK | X_OK) == 0) {
        return "";
    }
    return errno == ELOOP && isShared ? "it is a symbolic link in a folder others can write to"
           : errno == ENXIO           ? "it is no regular file"
                                      : std::strerror(errno);
}

void checkSink(Diagnosis& diagnosis, const std::string& sink) {
    constexpr char kCheck[] = "trace sink";
    constexpr std::string_view kScheme = "file:";
    const bool isFile = sink.rfind(kScheme, 0) == 0;
    const std::string obstacle = isFile ? obstacleTo(sink.substr(kScheme.size()), false) : "";
    if (!isFile && sink != "stderr" && sink != "syslog") {
        diagnosis.warn(kCheck, "RUXA_TRACE_SINK is '" + sink + "'",
                       "set it to stderr, file:PATH or syslog: anything else counts as stderr");
    } else if (!obstacle.empty()) {
        diagnosis.warn(kCheck, sink + " cannot be written: " + obstacle,
                       "correct RUXA_TRACE_SINK or the permissions: the embedded backend traces to "
                       "stderr instead");
    } else {
        diagnosis.ok(kCheck, sink);
    }
}

} // namespace

void checkTraces(Diagnosis& diagnosis) {
    constexpr char kSinkVariable[] = "RUXA_TRACE_SINK";
    const std::string chosen = common::environment(kSinkVariable, "stderr");
    // The doctor tells what it finds itself: what the checks trace goes nowhere.
    setenv(kSinkVariable, "file:/dev/null", 1);
    checkGroups(diagnosis);
    if (Library(kTraceLibrary).contains(kSinkVariable)) { // the embedded one
        checkSink(diagnosis, chosen);
    }
}

void checkEnvironment(Diagnosis& diagnosis) {
    checkIdentity(diagnosis, "ZBN_NO");
    checkIdentity(diagnosis, "ZBN_REV");
    checkReporter(diagnosis, "SYSTEM_UUID");
    checkReporter(diagnosis, "COMPUTE_NAME");
}

void checkNotificationLog(Diagnosis& diagnosis) {
    constexpr char kCheck[] = "notification log";
    constexpr std::uintmax_t kRoom = 65536; // for the lines of some alarms
    const fs::path path = platform::ntf::notificationLogPath();
    if (path.empty()) {
        diagnosis.fail(kCheck, "RUXA_NTF_LOG, XDG_STATE_HOME and HOME name no place for it",
                       "set RUXA_NTF_LOG: the service refuses every session");
        return;
    }
    const std::string log =
        path.string() +
        (*common::environment("RUXA_NTF_LOG") != '\0' ? "" : " (RUXA_NTF_LOG is not set)");
    const std::string obstacle = obstacleTo(path, true);
    struct stat status {};
    const bool isThere = ::stat(path.c_str(), &status) == 0;
    struct statvfs disk {};
    const bool isDisk = ::statvfs(folderOf(path).c_str(), &disk) == 0 && disk.f_blocks != 0;
    const std::uintmax_t room = disk.f_frsize * (::geteuid() == 0 ? disk.f_bfree : disk.f_bavail);
    if (!obstacle.empty()) {
        diagnosis.fail(kCheck, log + " cannot be written: " + obstacle,
                       "correct RUXA_NTF_LOG or the permissions: the service refuses every alarm");
    } else if (isThere && isNullDevice(status)) {
        diagnosis.warn(kCheck, log + " keeps nothing", "set RUXA_NTF_LOG to a file");
    } else if (isDisk && (room == 0 || (!isThere && disk.f_files != 0 && disk.f_ffree == 0))) {
        diagnosis.fail(kCheck, log + " has no room: its disk is full",
                       "make room, or set RUXA_NTF_LOG: the service refuses alarms");
    } else if (isDisk && room < kRoom) {
        diagnosis.warn(kCheck, log + " has room for " + std::to_string(room) + " bytes only",
                       "make room, or set RUXA_NTF_LOG: the service refuses alarms on a full disk");
    } else {
        diagnosis.ok(kCheck, log);
    }
}

} // namespace dolqctl
