#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include <nlohmann/json_fwd.hpp>

#include "Table.h"

namespace dolqctl {

/// What a command prints on standard output: lines, tables aligned for a terminal, or JSON. Colours
/// are for terminals only, and never used when `NO_COLOR` is set.
class Output {
public:
    Output();

    /// `text` in the colour of `style`, or as it stands where there are no colours.
    std::string styled(Style style, std::string_view text) const;

    void line(std::string_view text = {});
    /// In lines that a terminal has room for, the others indented; whole for scripts.
    void wrapped(const std::string& text, const std::string& indent = {});
    void print(const Table& table) { table.write(*this); }
    /// Indented. Bytes that are not UTF-8 become U+FFFD.
    void print(const nlohmann::ordered_json& json);

    /// For what is neither. Foreign text goes through `printable` first.
    std::ostream& stream();

    /// False when something of what was printed could not be written.
    bool flush();

private:
    bool m_colours;
};

/// `text` in lines that are at most so wide, all but the first indented. It may have lines itself.
std::string wrapped(const std::string& text, std::size_t width, const std::string& indent = {});

/// "dolqctl: <text>" on standard error, behind what was printed before, wrapped for a terminal.
void tell(const std::string& text);

/// `text` made fit for a terminal, in quotes also when it is empty.
std::string inQuotes(std::string_view text);

/// Foreign text (of a file, an environment variable, the command line) made fit for a terminal: no
/// control character, no broken UTF-8, "-" in place of nothing.
std::string printable(std::string_view text);

/// "3 files", "1 file".
std::string counted(std::size_t count, const std::string& what);

/// The letters and digits of `name`, in lower case.
std::string blurred(const std::string& name);

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
