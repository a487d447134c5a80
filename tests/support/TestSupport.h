#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

/// Sets (or, with null, unsets) a variable until the end of the scope.
class ScopedEnvironment {
public:
    ScopedEnvironment(const char* name, const char* value) : m_name(name) {
        if (const char* const before = std::getenv(name)) {
            m_before = before;
        }
        set(value);
    }
    ~ScopedEnvironment() { set(m_before ? m_before->c_str() : nullptr); }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    void set(const char* value) { value != nullptr ? setenv(m_name, value, 1) : unsetenv(m_name); }
    const char* m_name;
    std::optional<std::string> m_before;
};

/// A folder of its own, removed at the end with all that it holds.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "dolq-test.XXXXXX").string();
        m_path = mkdtemp(name.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(m_path); }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

inline std::vector<std::string> linesOf(const std::filesystem::path& path) {
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// Of the files that this process has open, for instance: "/proc/self/fd".
inline std::size_t entriesIn(const char* folder) {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

/// What this process has in memory now.
inline long residentKiB() {
    std::ifstream statm("/proc/self/statm");
    long total = 0;
    long resident = 0;
    statm >> total >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

/// Calls `work` on a thread with a stack of `kib` KiB; a sanitizer's build gets the usual one.
/// Returns null, or PTHREAD_CANCELED.
inline void* onStackOf(std::size_t kib, std::function<void()> work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    if (!kSanitized) {
        pthread_attr_setstacksize(&attributes, kib * 1024);
    }
    const auto run = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    pthread_t thread{};
    void* result = &thread;
    EXPECT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
    EXPECT_EQ(pthread_join(thread, &result), 0);
    pthread_attr_destroy(&attributes);
    return result;
}

/// The stack on which a document of the most levels can be read, as the documents say.
constexpr std::size_t kDocumentedStackKib = 96;

/// Waits for a child and returns its wait status: 0 when it ended well.
inline int statusOf(pid_t child) {
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}
