#pragma once

#include <string>

namespace dolqctl {

/// For `--pid`: returns in a process that has the surroundings which the running program `pid` was
/// started with, so that everything in it is found, loaded and permitted as it is there: this
/// program executes itself anew, with its arguments `argv` and with the environment, the loader
/// path in it, the current folder and the user of that one. Only the terminal stays this shell's.
/// What a program has changed in its own environment since cannot be seen. Call it before anything
/// is printed. Throws CommandError.
void takeOnProgram(const std::string& pid, char** argv);

} // namespace dolqctl
