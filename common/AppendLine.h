#pragma once

#include <filesystem>
#include <string>

namespace common {

/// Appends `line`, which ends with a newline, to the file `path` as a line of its own: half a line
/// that a full disk or a killed process left is ended first. Any number of threads and processes
/// may append to one file; of two that do so at the same moment, one can leave a blank line.
///
/// The file is opened, written with one write and closed each time, so that a renamed file, a
/// forked process and an application that closes all its descriptors need no care. Missing folders
/// are created with mode 0700, the file with 0640. It has to be readable, and a regular file or
/// /dev/null. Is never cancelled, and raises no SIGXFSZ.
///
/// Returns 0, or the errno value that says why the line is not there as a whole: EINVAL for another
/// kind of file (a FIFO is not waited for), ELOOP for a symbolic link in a folder that its group or
/// others can write to, ENOSPC when only a part of the line had room, EFBIG at the process's file
/// size limit.
int appendLine(const std::filesystem::path& path, std::string line);

/// Such an errno value in words, for the operator.
std::string appendFailure(int error);

} // namespace common
