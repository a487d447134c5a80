#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

/// Ends the process, which the fuzzer reports together with the input.
inline void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

/// A file in memory that holds the input.
class InputFile {
public:
    InputFile(const std::uint8_t* data, std::size_t size)
        : m_descriptor(memfd_create("input", MFD_CLOEXEC)),
          m_path("/proc/self/fd/" + std::to_string(m_descriptor)) {
        require(write(m_descriptor, data, size) == static_cast<ssize_t>(size), "a file in memory");
    }
    ~InputFile() { close(m_descriptor); }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    const std::string& path() const { return m_path; }

private:
    int m_descriptor;
    std::string m_path;
};
