#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <ruxa/trace/v2/TraceBackend.h>
#include <ruxa/zum2/v1/CorrelationApi.h>
#include <unistd.h>

#include "Library.h"
#include "common/Environment.h"
#include "common/TraceGroups.h"
#include "doctor/Diagnosis.h"
#include "platform/ntf/log/LogPath.h"

namespace dolqctl {

namespace {

using ruxa::trace::v2::TraceBackend;

constexpr char kGroupsVariable[] = "RUXA_TRACE_GROUPS";
constexpr char kSinkVariable[] = "RUXA_TRACE_SINK";
constexpr char kFileScheme[] = "file:";

bool isOn(int group) {
    return TraceBackend::isTraceGroupEnabled(TraceBackend::getDefaultTraceObject(),
                                             static_cast<ruxa::trace::v2::TraceGroup::e>(group));
}

void checkGroups(Diagnosis& diagnosis) {
    const std::string file = fileOf(&TraceBackend::isTraceGroupEnabled);
    if (!isOn(0)) {
        diagnosis.warn("trace backend", "group 0 is off, in " + file,
                       "switch it on (RUXA_TRACE_GROUPS, or this platform's way): lost alarms "
                       "leave no sign without it");
        return;
    }
    const char* const chosen = common::environment(kGroupsVariable, nullptr);
    if (chosen != nullptr && !common::parseTraceGroups(chosen)) {
        diagnosis.warn(
            "trace backend", std::string(kGroupsVariable) + " is '" + chosen + "'",
            "set it to all, none, or numbers from 0 to 8 joined by commas: with anything "
            "else the embedded backend traces group 0 alone");
        return;
    }
    diagnosis.ok("trace backend", std::string("group 0 (failures) is on, 4 (calls) ") +
                                      (isOn(4) ? "on" : "off") + ", 8 (details) " +
                                      (isOn(8) ? "on" : "off") + ", in " + file);
}

/// Whether an existing file can be appended to. It is opened, since the superuser is granted access
/// to what cannot be written; without waiting for the reader of a FIFO.
bool canAppend(const std::filesystem::path& path) {
    const int file = ::open(path.c_str(), O_WRONLY | O_APPEND | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (file < 0) {
        return false;
    }
    ::close(file);
    return true;
}

/// Whether a file can be appended to, or made: by the nearest thing of its path that exists.
bool isWritable(const std::filesystem::path& path) {
    if (::access(path.c_str(), F_OK) == 0) {
        return canAppend(path);
    }
    std::error_code error;
    std::filesystem::path folder = std::filesystem::absolute(path, error).parent_path();
    if (error || !path.has_filename()) {
        return false;
    }
    while (::access(folder.c_str(), F_OK) != 0 && folder.has_relative_path()) {
        folder = folder.parent_path();
    }
    return std::filesystem::is_directory(folder, error) &&
           ::access(folder.c_str(), W_OK | X_OK) == 0;
}

void checkSink(Diagnosis& diagnosis, const std::string& sink) {
    const bool isFile = sink.rfind(kFileScheme, 0) == 0;
    if (!isFile && sink != "stderr" && sink != "syslog") {
        diagnosis.warn("trace sink", std::string(kSinkVariable) + " is '" + sink + "'",
                       "set it to stderr, file:PATH or syslog: anything else counts as stderr");
    } else if (isFile && !isWritable(sink.substr(sizeof(kFileScheme) - 1))) {
        diagnosis.warn("trace sink", sink + " cannot be written",
                       "correct the path or its permissions: the traces go to stderr instead");
    } else {
        diagnosis.ok("trace sink", "is " + sink);
    }
}

} // namespace

void checkNotificationLog(Diagnosis& diagnosis) {
    constexpr char kCheck[] = "notification log";
    const std::string chosen = common::environment("RUXA_NTF_LOG");
    const bool isChosen = !chosen.empty();
    const std::string log = isChosen ? chosen : platform::ntf::notificationLogPath().string();
    if (isWritable(log)) {
        diagnosis.ok(kCheck, "is " + log + (isChosen ? "" : ", as RUXA_NTF_LOG is not set"));
    } else if (isChosen) {
        diagnosis.fail(kCheck, log + " cannot be written",
                       "correct RUXA_NTF_LOG or the permissions: the embedded notification "
                       "service refuses every alarm");
    } else { // which only the embedded service minds, and nobody chose that one here
        diagnosis.warn(kCheck, log + " cannot be written, and RUXA_NTF_LOG is not set",
                       "with the embedded notification service set it, or every alarm is refused; "
                       "another service needs no log");
    }
}

void checkLibraryAndTraces(Diagnosis& diagnosis) {
    if (const Library library(kDolqLibrary); library.isLoaded()) {
        diagnosis.ok("library", "is " + library.file());
    } else {
        diagnosis.fail("library", "cannot be loaded: " + library.error(),
                       "install or replace the file that this names: no program that uses the "
                       "library starts");
    }
    const std::string chosen = common::environment(kSinkVariable, "stderr");
    // The doctor tells what it finds itself: what the checks trace goes nowhere.
    setenv(kSinkVariable, "file:/dev/null", 1);
    checkGroups(diagnosis);
    checkSink(diagnosis, chosen);
}

void checkCorrelationService(Diagnosis& diagnosis) {
    constexpr char kCheck[] = "correlation service";
    constexpr char kGetApi[] = "_ZN4ruxa4zum22v16getAPIEv";
    Library library(kCorrelationLibrary);
    if (!library.has(kGetApi)) {
        diagnosis.fail(kCheck, "cannot be loaded: " + library.error(),
                       "install the platform's own, or correct the loader path");
        return;
    }
    const std::string file = library.file();
    auto* const api = library.function<decltype(ruxa::zum2::v1::getAPI)>(kGetApi)();
    std::string uuid;
    if (api == nullptr) {
        diagnosis.fail(kCheck, "does not run, says " + file,
                       "start it: alarms with event ids are refused without it");
    } else if (!api->getDerivedCorrelationUUID(1, uuid) || uuid.empty()) {
        diagnosis.warn(kCheck, "gives event 1 no correlation UUID, in " + file,
                       "see its own log: primary alarms go out without correlation, secondary ones "
                       "are refused");
    } else {
        diagnosis.ok(kCheck, "answers (event 1 is " + uuid + "), from " + file);
    }
}

} // namespace dolqctl
