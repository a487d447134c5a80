// The only file that includes the argument parser: its header takes longer than all else here.
#include "Options.h"

#include <algorithm>
#include <utility>

#include <CLI/CLI.hpp>

#include "Commands.h"

namespace dolqctl {

namespace {

/// Empty for an id, otherwise what is wrong with it.
std::string checkId(const std::string& text) {
    const bool isHexadecimal = text.size() > 2 && text[0] == '0' &&
                               (text[1] == 'x' || text[1] == 'X') &&
                               text.find_first_not_of("0123456789abcdefABCDEF", 2) == text.npos;
    if (isHexadecimal) {
        return {};
    }
    if (text.empty() || text.find_first_not_of("0123456789") != text.npos) {
        return inQuotes(text) + " is no id: give a number, decimal or hexadecimal with 0x";
    }
    if (text.size() > 1 && text.front() == '0') {
        return inQuotes(text) + " begins with 0: give the id without it, or hexadecimal with 0x";
    }
    return {};
}

/// What is wrong with the command line, and where help is.
std::string usageError(const CLI::App& app, const CLI::ParseError& error) {
    const auto chosen = app.get_subcommands();
    const auto rest = app.remaining();
    if (chosen.empty() && !rest.empty()) {
        const std::string kind = rest.front()[0] == '-' ? "option" : "command";
        return "unknown " + kind + ' ' + inQuotes(rest.front()) + "\nTry 'dolqctl --help'.";
    }
    if (chosen.empty()) {
        return "name a command\nTry 'dolqctl --help'.";
    }
    return std::string(error.what()) + "\nTry 'dolqctl " + chosen.front()->get_name() + " --help'.";
}

} // namespace

Options::Option Options::Option::required() const { return Option(m_option->required()); }

Options::Option Options::Option::orFrom(const char* variable) const {
    return Option(m_option->envname(variable));
}

Options::Option Options::Option::excludes(const Option& other) const {
    return Option(m_option->excludes(other.m_option));
}

Options::Option Options::flag(const char* name, bool& value, const char* help) {
    return Option(m_command.add_flag(name, value, help));
}

template <typename Value>
Options::Option Options::value(const char* name, const std::string& type, Value& value,
                               const char* help) {
    return Option(
        m_command.add_option(name, value, help)->type_name(type)->allow_extra_args(false));
}
template Options::Option Options::value(const char*, const std::string&, std::string&, const char*);
template Options::Option Options::value(const char*, const std::string&,
                                        std::optional<std::string>&, const char*);
template Options::Option Options::value(const char*, const std::string&, std::vector<std::string>&,
                                        const char*);

Options::Option Options::choice(const char* name, const std::vector<std::string>& names,
                                std::optional<std::uint32_t>& index, const char* help) {
    const auto choose = [names, &index](const std::string& text) {
        index =
            static_cast<std::uint32_t>(std::find(names.begin(), names.end(), text) - names.begin());
        return true;
    };
    const auto check = [names](const std::string& text) {
        return std::find(names.begin(), names.end(), text) != names.end()
                   ? std::string()
                   : inQuotes(text) + " is none of " + joined(names);
    };
    return Option(m_command.add_option_function<std::string>(name, choose, help)
                      ->type_name(joined(names, "|"))
                      ->check(check));
}

template <typename Value>
Options::Option Options::id(const char* name, Value& value, const char* help, const char* type) {
    return Option(m_command.add_option(name, value, help)
                      ->type_name(type)
                      ->allow_extra_args(false)
                      ->check(checkId));
}
template Options::Option Options::id(const char*, std::uint32_t&, const char*, const char*);
template Options::Option Options::id(const char*, std::optional<std::uint32_t>&, const char*,
                                     const char*);
template Options::Option Options::id(const char*, std::vector<std::uint32_t>&, const char*,
                                     const char*);

Options::Option Options::files(std::vector<std::string>& paths, const char* help) {
    return Option(m_command.add_option("FILE", paths, help)->type_name(""));
}

CommandLine::CommandLine(const char* description, const char* footer,
                         std::function<std::string()> version)
    : m_app(std::make_unique<CLI::App>(description, "dolqctl")), m_exitCode(kFine) {
    constexpr std::size_t kColumnWidth = 36; // FILE ... Excludes: --discovered fits
    m_app->get_formatter()->column_width(kColumnWidth);
    m_app->footer(footer);
    m_app->set_version_flag("--version", std::move(version));
    m_app->require_subcommand(1);
}

CommandLine::~CommandLine() = default;

Options CommandLine::add(const char* command, const char* help, const char* footer,
                         std::function<int(Output&)> run) {
    CLI::App* const added = m_app->add_subcommand(command, help);
    added->footer(footer);
    added->callback([this, run = std::move(run)] { m_exitCode = run(m_output); });
    return Options(*added);
}

int CommandLine::run(int argc, char** argv) {
    try {
        m_app->parse(argc, argv);
    } catch (const CLI::Success& request) { // --help or --version
        m_app->exit(request);
    } catch (const CLI::ParseError& error) {
        throw CommandError(usageError(*m_app, error));
    }
    if (!m_output.flush()) {
        throw CommandError("standard output cannot be written");
    }
    return m_exitCode;
}

} // namespace dolqctl
