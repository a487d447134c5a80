#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace dolqctl {

/// What a command answers, on standard output. Foreign text goes through `printable` or `inQuotes`
/// first, except for JSON.
void printLine(std::string_view text = {});
/// In lines that a terminal has room for, all but the first indented; whole for scripts.
void printWrapped(const std::string& text, const std::string& indent = {});
/// Columns under headings, two blanks apart: numbers and what stands above them to the right, "-"
/// for nothing. Where a terminal has no room, the beginnings of the last column's texts are left
/// out.
void printTable(std::vector<std::vector<std::string>> rows);
/// Indented, in ASCII: other characters are escaped. Bytes that are not UTF-8 become U+FFFD.
void printJson(const nlohmann::ordered_json& json);

/// "dolqctl: <text>" on standard error, behind what was printed before, wrapped for a terminal.
void tell(const std::string& text);

/// `text` in lines that are at most so wide, all but the first indented. It may have lines itself.
std::string wrapped(const std::string& text, std::size_t width, const std::string& indent = {});

/// `text` made fit for a terminal, in quotes also when it is empty.
std::string inQuotes(std::string_view text);

/// Foreign text (of a file, an environment variable, the command line) made fit for a terminal: no
/// control character, no broken UTF-8, "-" in place of nothing.
std::string printable(std::string_view text);

/// "3 files", "1 file".
std::string counted(std::size_t count, const std::string& what);

/// Whether somebody who wrote `name` may have meant `meant`: at most two letters differ, letter
/// case and punctuation not counted.
bool isMisspelt(const std::string& name, const std::string& meant);

/// "minor, major": the texts of any list.
template <typename Texts> std::string joined(const Texts& texts, const char* separator = ", ") {
    std::string all;
    for (const auto& text : texts) {
        all += (all.empty() ? "" : separator) + std::string(text);
    }
    return all;
}

} // namespace dolqctl
