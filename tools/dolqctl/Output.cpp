#include "Output.h"

#include <clocale>
#include <iostream>

#include <nlohmann/json.hpp>
#include <unistd.h>

#include "common/Environment.h"
#include "common/Escape.h"

namespace dolqctl {

namespace {

bool wantsColours() {
    return common::environment("NO_COLOR", nullptr) == nullptr &&
           std::string_view(common::environment("TERM", "dumb")) != "dumb";
}

/// Indexed by `Style`: the number of the terminal's attribute.
constexpr const char* kAttributes[] = {"0", "1", "2", "32", "33", "31"};

} // namespace

Output::Output()
    : m_isTerminal(isatty(STDOUT_FILENO) == 1), m_colours(m_isTerminal && wantsColours()),
      m_stream(std::cout) {
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

void Output::line(std::string_view text) { m_stream << text << '\n'; }

void Output::print(const nlohmann::ordered_json& json) {
    constexpr int kIndent = 2;
    m_stream << json.dump(kIndent, ' ', false, nlohmann::ordered_json::error_handler_t::replace)
             << '\n';
}

bool Output::flush() { return static_cast<bool>(m_stream.flush()); }

void tell(const std::string& text) {
    std::cout.flush();
    std::cerr << "dolqctl: " << text << '\n';
}

std::string inQuotes(std::string_view text) { return '"' + common::escapedText(text) + '"'; }

std::string printable(std::string_view text) {
    return text.empty() ? "-" : common::escapedText(text);
}

std::string counted(std::size_t count, const std::string& what) {
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

} // namespace dolqctl
