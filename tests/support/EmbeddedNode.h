#pragma once

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/ntf/log/AlarmRecord.h"
#include "support/TestSupport.h"

/// A folder with a notification log and a trace file of its own. The library runs in forked
/// processes only, each of which reads the environment anew.
class EmbeddedNode : public testing::Test {
protected:
    EmbeddedNode() {
        setenv("RUXA_NTF_LOG", m_log.c_str(), 1);
        setenv("RUXA_TRACE_SINK", ("file:" + m_trace.string()).c_str(), 1);
        setenv("VELK_MANIFEST_DIR", m_folder.path().c_str(), 1); // which holds no manifest
    }

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

    /// What the service received, and nothing for whatever else stands in its log.
    std::vector<std::optional<platform::ntf::AlarmRecord>> received() const {
        std::vector<std::optional<platform::ntf::AlarmRecord>> records;
        for (const std::string& line : linesOf(m_log)) {
            if (!line.empty()) { // two had seen a third one in the middle of its line
                records.push_back(platform::ntf::parseLine(line));
            }
        }
        return records;
    }

    const TemporaryFolder m_folder;
    const std::filesystem::path m_log = m_folder.path() / "log.jsonl";
    const std::filesystem::path m_trace = m_folder.path() / "trace.log";
};
