#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "common/Joined.h"

namespace dolqctl {

using common::joined;

// All that commands print goes through here, as the raw text that it is: the functions that print
// write control characters, broken UTF-8 and backslashes as `\n`, `\t`, `\xNN` or `\\`, so that
// foreign texts can neither end a line nor change how a terminal shows it.

/// What a command answers, on standard output.
void printLine(std::string_view text = {});
/// Columns under headings, "-" for nothing. Meant for ASCII: other characters shift what follows.
void printTable(std::vector<std::vector<std::string>> rows);
/// Indented, in ASCII: other characters are escaped. Bytes that are not UTF-8 become U+FFFD.
void printJson(const nlohmann::ordered_json& json);

/// "dolqctl: <text>" on standard error, behind what was printed before.
void tell(std::string_view text);

/// In quotes also when it is empty.
std::string inQuotes(std::string_view text);

/// `text`, or the beginning of a long one and "...".
std::string shortened(std::string_view text);

/// "3 files", "1 file".
std::string counted(std::size_t count, const std::string& what);

/// How many letters have to be changed, added or removed to make one name of the other, letter case
/// and punctuation not counted.
std::size_t distance(const std::string& one, const std::string& other);

/// Whether somebody who wrote `name` may have meant `meant`: at most two letters differ.
bool isMisspelt(const std::string& name, const std::string& meant);

} // namespace dolqctl
