#include "Output.h"

#include <algorithm>
#include <cctype>
#include <clocale>
#include <iostream>
#include <limits>
#include <numeric>
#include <sstream>
#include <vector>

#include <nlohmann/json.hpp>
#include <sys/ioctl.h>
#include <unistd.h>

#include "common/Environment.h"
#include "common/Escape.h"

namespace dolqctl {

namespace {

/// Indexed by `Style`: the number of the terminal's attribute.
constexpr const char* kAttributes[] = {"0", "1", "2", "32", "33", "31"};

/// How many characters a line of the terminal has room for; no bound for what is no terminal.
std::size_t widthOf(int file) {
    winsize size{};
    if (ioctl(file, TIOCGWINSZ, &size) != 0) {
        return std::numeric_limits<std::size_t>::max();
    }
    return size.ws_col != 0 ? size.ws_col : 80;
}

/// How many characters have to be changed, added or removed to make `to` of `from`.
std::size_t distance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t changed = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

} // namespace

Output::Output()
    : m_colours(isatty(STDOUT_FILENO) == 1 && common::environment("NO_COLOR", nullptr) == nullptr &&
                std::string_view(common::environment("TERM", "dumb")) != "dumb") {
    // Widths are those of UTF-8 whatever the user's locale; white space stays that of ASCII.
    std::setlocale(LC_CTYPE, "C.UTF-8");
}

std::string Output::styled(Style style, std::string_view text) const {
    if (!m_colours || style == Style::Plain) {
        return std::string(text);
    }
    return std::string("\033[") + kAttributes[static_cast<std::size_t>(style)] + 'm' +
           std::string(text) + "\033[0m";
}

void Output::line(std::string_view text) { std::cout << text << '\n'; }

void Output::wrapped(const std::string& text, const std::string& indent) {
    line(dolqctl::wrapped(text, widthOf(STDOUT_FILENO), indent));
}

void Output::print(const nlohmann::ordered_json& json) {
    line(json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

std::ostream& Output::stream() { return std::cout; }

bool Output::flush() { return static_cast<bool>(std::cout.flush()); }

std::string wrapped(const std::string& text, std::size_t width, const std::string& indent) {
    if (const std::size_t end = text.find('\n'); end != text.npos) {
        return wrapped(text.substr(0, end), width, indent) + '\n' +
               wrapped(text.substr(end + 1), width, indent);
    }
    std::string lines;
    std::size_t column = indent.size();
    std::istringstream words(text);
    for (std::string word; std::getline(words, word, ' ');) { // blanks inside quotes stay
        const bool fits = column + 1 + displayWidth(word) <= width;
        if (!lines.empty()) {
            lines += fits ? " " : '\n' + indent;
            column = fits ? column + 1 : indent.size();
        }
        lines += word;
        column += displayWidth(word);
    }
    return lines;
}

void tell(const std::string& text) {
    std::cout.flush();
    std::cerr << wrapped("dolqctl: " + text, widthOf(STDERR_FILENO)) << '\n';
}

std::string inQuotes(std::string_view text) { return '"' + common::escapedText(text) + '"'; }

std::string printable(std::string_view text) {
    return text.empty() ? "-" : common::escapedText(text);
}

std::string counted(std::size_t count, const std::string& what) {
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

std::string blurred(const std::string& name) {
    std::string letters;
    for (const char c : name) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
            letters += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
    }
    return letters;
}

bool isMisspelt(const std::string& name, const std::string& meant) {
    constexpr std::size_t kMostMistakes = 2;
    return name.size() <= meant.size() + 2 * kMostMistakes &&
           distance(blurred(name), blurred(meant)) <= kMostMistakes;
}

} // namespace dolqctl
