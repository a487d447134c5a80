#include "Output.h"

#include <algorithm>
#include <cctype>
#include <iomanip>
#include <iostream>
#include <numeric>
#include <vector>

#include <nlohmann/json.hpp>

#include "common/Escape.h"

namespace dolqctl {

namespace {

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

void printTable(std::vector<std::vector<std::string>> rows) {
    std::vector<int> widths(rows.front().size());
    for (std::vector<std::string>& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            row[i] = row[i].empty() ? "-" : common::escapedText(row[i]);
            widths[i] = std::max(widths[i], static_cast<int>(row[i].size()) + 2);
        }
    }
    for (const std::vector<std::string>& row : rows) {
        for (std::size_t i = 0; i + 1 < row.size(); ++i) {
            std::cout << std::left << std::setw(widths[i]) << row[i];
        }
        std::cout << row.back() << '\n';
    }
}

void printJson(const nlohmann::ordered_json& json) {
    constexpr auto kReplace = nlohmann::ordered_json::error_handler_t::replace;
    std::cout << json.dump(2, ' ', true, kReplace) << '\n';
}

void tell(std::string_view text) {
    std::cout.flush();
    std::cerr << "dolqctl: " << common::escapedText(text) << '\n';
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
