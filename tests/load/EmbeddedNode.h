#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/ntf/log/AlarmRecord.h"
#include "ruxa/fm/dolq/v1/FmiFactory.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

#ifdef __OPTIMIZE__
constexpr bool kOptimised = true;
#else
constexpr bool kOptimised = false;
#endif

/// A tenth of the load is as much as a sanitizer does in the same time.
constexpr unsigned scaled(unsigned count) { return kSanitized ? count / 10 : count; }

/// A folder with a notification log and a trace file of its own. The library runs in forked
/// processes only, each of which reads the environment anew.
class EmbeddedNode : public testing::Test {
protected:
    EmbeddedNode() {
        std::string name = (std::filesystem::temp_directory_path() / "load.XXXXXX").string();
        m_folder = mkdtemp(name.data());
        m_log = m_folder / "log.jsonl";
        m_trace = m_folder / "trace.log";
        setenv("RUXA_NTF_LOG", m_log.c_str(), 1);
        setenv("RUXA_TRACE_SINK", ("file:" + m_trace.string()).c_str(), 1);
        setenv("VELK_MANIFEST_DIR", m_folder.c_str(), 1); // which holds no manifest
    }
    ~EmbeddedNode() override { std::filesystem::remove_all(m_folder); }

    /// Runs `process` in a process of its own, which ends with 1 if an expectation failed in it.
    template <typename Process> static pid_t start(Process process) {
        const pid_t child = fork();
        if (child == 0) {
            process();
            std::fflush(nullptr);
            _exit(HasFailure() ? 1 : 0);
        }
        return child;
    }

    static int exitStatus(pid_t child) {
        int status = -1;
        waitpid(child, &status, 0);
        return status;
    }

    static std::vector<std::string> linesOf(const std::filesystem::path& path) {
        std::ifstream file(path);
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    std::filesystem::path m_folder;
    std::filesystem::path m_log;
    std::filesystem::path m_trace;
};

/// One thread's client. Each alarm says who raised it, and as which of its alarms.
class Client {
public:
    Client() {
        namespace v1 = ruxa::fm::dolq::v1;
        v1::getFmiFactory()->getConfiguration()->setMapping(7, 0x10002, "Alarm");
        m_adapter.reset(v1::getFmiFactory()->createFaultManagement());
    }
    ~Client() {
        m_adapter.reset();
        ruxa::fm::dolq::v1::freeFmiFactory();
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    static constexpr char kText[] = "a text that a torn line would not hold whole";

    void raise(unsigned client, unsigned alarm) {
        m_adapter->raisePrimaryAlarm(
            "Client=" + std::to_string(client) + ",Alarm=" + std::to_string(alarm), 7, "fault",
            kText, {"first entry", "second entry"}, 2, std::string("uuid"), "system", "compute", 3);
    }

private:
    std::unique_ptr<ruxa::fm::fmi::v1::FaultManagementI> m_adapter;
};

/// Who raised the alarm of a line of the log. {0, 0} is nobody's.
struct Origin {
    unsigned client = 0;
    unsigned alarm = 0;
};

inline Origin originOf(const std::string& line) {
    const auto record = platform::ntf::parseLine(line);
    Origin origin;
    const bool known = record &&
                       std::sscanf(record->notificationObject.c_str(), "Client=%u,Alarm=%u",
                                   &origin.client, &origin.alarm) == 2 &&
                       record->additionalText == Client::kText &&
                       record->additionalInfo.size() == 3;
    return known ? origin : Origin{};
}
