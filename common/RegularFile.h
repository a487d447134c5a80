#pragma once

#include <cstddef>
#include <string>

namespace common {

/// Reads the whole regular file `path`. Returns 0, or the errno value that says why not: EISDIR or
/// EINVAL for anything that is no regular file (a FIFO is not waited for), EFBIG for more than
/// `maxSize` bytes, ENODATA for a file that gets shorter meanwhile. Waits while another process
/// holds a lease on the file. Throws when memory has no room for it.
int readRegularFile(const std::string& path, std::size_t maxSize, std::string& content);

} // namespace common
