#pragma once

/// Whether the program's environment is one that is not trusted, as that of a program which runs
/// with another user's rights: the C library's `secure_getenv` then finds nothing in it.
extern bool runsWithOthersRights;
