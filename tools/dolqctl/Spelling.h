#pragma once

#include <string>

namespace dolqctl {

/// Whether somebody who wrote `name` may have meant `meant` (in lower case, words joined by "_"):
/// at most two characters differ, letter case and hyphens not counted.
bool isMisspelt(std::string name, const char* meant);

} // namespace dolqctl
