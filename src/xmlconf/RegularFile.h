#pragma once

#include <cstddef>
#include <string>

namespace dolq::xmlconf {

/// Reads the regular file `path` whole; anything else (a directory, a FIFO) is not waited for.
/// Returns 0, or the errno value that says why not: EISDIR or EINVAL for what is no regular file,
/// EFBIG for more than `maxSize` bytes.
int readRegularFile(const std::string& path, std::size_t maxSize, std::string& content);

} // namespace dolq::xmlconf
