#include "Spelling.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <vector>

namespace dolqctl {

namespace {

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

bool isMisspelt(std::string name, const char* meant) {
    constexpr std::size_t kMostMistakes = 2;
    if (name.size() > std::strlen(meant) + kMostMistakes) {
        return false;
    }
    std::transform(name.begin(), name.end(), name.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c == '-' ? '_' : c;
    });
    return distance(name, meant) <= kMostMistakes;
}

} // namespace dolqctl
