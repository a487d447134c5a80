#pragma once

#include <cstddef>
#include <string>

namespace common {

/// Reads the regular file `path` up to its end, or through the first four NULs in a row: no parser
/// gets past these, and a sparse file may have any size. Returns 0, or the errno value that says
/// why not: EISDIR or EINVAL for anything that is no regular file (a FIFO is not waited for), EFBIG
/// for more than `maxSize` bytes, ENODATA for a file that got shorter meanwhile. Takes memory only
/// as bytes arrive.
int readRegularFile(const std::string& path, std::size_t maxSize, std::string& content);

} // namespace common
