#pragma once

#include <string>

namespace dolqctl {

/// For `CLI::Option::check` of a fault or event id: empty for a decimal number or a hexadecimal one
/// with 0x, otherwise what is wrong. A leading 0 is refused, for it would be read as octal.
std::string checkId(const std::string& text);

} // namespace dolqctl
