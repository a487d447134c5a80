#include "Output.h"

#include <algorithm>
#include <cctype>
#include <cwchar>
#include <iostream>
#include <limits>
#include <numeric>
#include <sstream>
#include <vector>

#include <nlohmann/json.hpp>
#include <sys/ioctl.h>
#include <unistd.h>

#include "common/Escape.h"

namespace dolqctl {

namespace {

/// How many characters a line of the terminal has room for; no bound for what is no terminal.
std::size_t widthOf(int file) {
    winsize size{};
    if (ioctl(file, TIOCGWINSZ, &size) != 0) {
        return std::numeric_limits<std::size_t>::max();
    }
    return size.ws_col != 0 ? size.ws_col : 80;
}

/// Takes the first character off `text`, and returns how many places of a terminal it takes: none
/// for a combining one, two for a wide one.
std::size_t takeCharacter(std::string_view& text) {
    std::mbstate_t state{};
    wchar_t character = 0;
    const std::size_t length = std::mbrtowc(&character, text.data(), text.size(), &state);
    const bool isBroken = length == 0 || length > text.size(); // NUL, malformed or cut off
    text.remove_prefix(isBroken ? 1 : length);
    return isBroken ? 1 : static_cast<std::size_t>(std::max(0, wcwidth(character)));
}

std::size_t displayWidth(std::string_view text) {
    std::size_t width = 0;
    while (!text.empty()) {
        width += takeCharacter(text);
    }
    return width;
}

/// As much of it as there is room for.
std::string endOf(std::string_view text, std::size_t room) {
    std::size_t width = displayWidth(text);
    if (width <= room) {
        return std::string(text);
    }
    while (width + 1 > room) {
        width -= takeCharacter(text);
    }
    return "…" + std::string(text);
}

/// In lines that are at most so wide, all but the first indented. Blanks inside quotes stay.
std::string wrapped(const std::string& text, std::size_t width, const std::string& indent) {
    std::string lines;
    std::size_t column = indent.size();
    std::istringstream words(text);
    for (std::string word; std::getline(words, word, ' ');) {
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

/// Its letters and digits, in lower case.
std::string blurred(const std::string& name) {
    std::string letters;
    for (const char c : name) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
            letters += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
    }
    return letters;
}

} // namespace

void printLine(std::string_view text) { std::cout << common::escapedText(text) << '\n'; }

void printWrapped(std::string_view text, const std::string& indent) {
    std::cout << wrapped(common::escapedText(text), widthOf(STDOUT_FILENO), indent) << '\n';
}

void printTable(std::vector<std::vector<std::string>> rows) {
    std::vector<std::size_t> widths(rows.front().size());
    std::vector<bool> isNumber(widths.size(), rows.size() > 1);
    for (std::vector<std::string>& row : rows) {
        for (std::size_t i = 0; i < widths.size(); ++i) {
            row[i] = row[i].empty() ? "-" : common::escapedText(row[i]);
            widths[i] = std::max(widths[i], displayWidth(row[i]));
            isNumber[i] = isNumber[i] && (&row == &rows.front() ||
                                          row[i].find_first_not_of("0123456789") == row[i].npos);
        }
    }
    constexpr std::size_t kLeastWidth = 20; // of the last column
    const std::size_t before =
        std::accumulate(widths.begin(), widths.end() - 1, 2 * (widths.size() - 1));
    const std::size_t room = std::max(widthOf(STDOUT_FILENO), before + kLeastWidth) - before;
    for (const std::vector<std::string>& row : rows) {
        std::string line;
        for (std::size_t i = 0; i + 1 < row.size(); ++i) {
            const std::string blanks(widths[i] - displayWidth(row[i]), ' ');
            line += (isNumber[i] ? blanks + row[i] : row[i] + blanks) + "  ";
        }
        std::cout << line << endOf(row.back(), room) << '\n';
    }
}

void printJson(const nlohmann::ordered_json& json) {
    constexpr auto kReplace = nlohmann::ordered_json::error_handler_t::replace;
    std::cout << json.dump(2, ' ', true, kReplace) << '\n';
}

void tell(const std::string& text) {
    std::cout.flush();
    const std::string line = "dolqctl: " + common::escapedText(text);
    std::cerr << wrapped(line, widthOf(STDERR_FILENO), {}) << '\n';
}

std::string inQuotes(std::string_view text) { return '"' + std::string(text) + '"'; }

std::string shortened(std::string_view text) {
    std::size_t length = 80;
    if (text.size() <= length) {
        return std::string(text);
    }
    while ((static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80 && length > 0) {
        --length;
    }
    return std::string(text.substr(0, length)) + "...";
}

std::string counted(std::size_t count, const std::string& what) {
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

std::size_t distance(const std::string& one, const std::string& other) {
    const std::string from = blurred(one);
    const std::string to = blurred(other);
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (const char letter : from) {
        std::size_t diagonal = row[0]++;
        for (std::size_t i = 0; i < to.size(); ++i) {
            const std::size_t changed = diagonal + (letter == to[i] ? 0 : 1);
            diagonal = row[i + 1];
            row[i + 1] = std::min({changed, row[i] + 1, diagonal + 1});
        }
    }
    return row.back();
}

bool isMisspelt(const std::string& name, const std::string& meant) {
    constexpr std::size_t kMostMistakes = 2;
    return name.size() <= meant.size() + 2 * kMostMistakes &&
           distance(name, meant) <= kMostMistakes;
}

} // namespace dolqctl
