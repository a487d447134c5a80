#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

namespace common {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// Opens the regular file `path` for reading; anything else (a directory, a FIFO) is not waited
/// for. Null, with errno saying why: EISDIR or EINVAL for what is no regular file.
File openRegularFile(const std::string& path);

/// Reads `file` whole and leaves its position at the beginning. Returns 0, or the errno value that
/// says why not: EFBIG for more than `maxSize` bytes.
int readWhole(std::FILE* file, std::size_t maxSize, std::string& content);

} // namespace common
