// The only file that includes the argument parser: its header takes longer than all else here.
#include "Options.h"

#include <algorithm>
#include <charconv>
#include <regex>
#include <utility>

#include <CLI/CLI.hpp>

#include "Commands.h"

namespace dolqctl {

namespace {

constexpr std::size_t kHelpColumn = 30; // where help texts begin
constexpr std::size_t kLineWidth = 80;

/// In lines that fit behind the names of options.
std::string wrapped(std::string text) {
    std::size_t begin = 0;
    while (text.size() - begin > kLineWidth - kHelpColumn) {
        const std::size_t blank = text.rfind(' ', begin + kLineWidth - kHelpColumn);
        text[blank] = '\n';
        begin = blank + 1;
    }
    return text;
}

/// Empty for an id, otherwise what is wrong with it.
std::string checkId(const std::string& text) {
    const bool isHexadecimal = text.rfind("0x", 0) == 0 || text.rfind("0X", 0) == 0;
    const char* const end = text.data() + text.size();
    std::uint32_t number = 0;
    const auto result = std::from_chars(text.data() + (isHexadecimal ? 2 : 0), end, number,
                                        isHexadecimal ? 16 : 10);
    if (result.ec == std::errc::invalid_argument || result.ptr != end) {
        return inQuotes(text) + " is no number: give a decimal one, or hexadecimal with 0x";
    }
    if (result.ec != std::errc{}) {
        return inQuotes(text) + " is too large: 4294967295 is the largest";
    }
    return isHexadecimal || text == "0" || text.front() != '0'
               ? std::string()
               : inQuotes(text) + " begins with 0: give it without, or hexadecimal with 0x";
}

/// What is wrong with the command line, in this program's words.
std::string problemOf(const CLI::App& command, const CLI::ParseError& error) {
    const bool isCommand = command.get_parent() != nullptr;
    const std::vector<std::string> rest = command.remaining();
    auto unknown = std::find_if(rest.begin(), rest.end(),
                                [](const std::string& word) { return word.rfind('-', 0) == 0; });
    const bool isOption = unknown != rest.end();
    unknown = isOption ? unknown : rest.begin();
    if (unknown != rest.end()) {
        std::vector<std::string> names;
        if (isOption) {
            for (const CLI::Option* const option : command.get_options()) {
                names.push_back(option->get_name());
            }
        } else {
            for (const CLI::App* const each : command.get_subcommands({})) {
                names.push_back(each->get_name());
            }
        }
        const auto isOther = [&](const std::string& name) { return !isMisspelt(*unknown, name); };
        names.erase(std::remove_if(names.begin(), names.end(), isOther), names.end());
        const char* const kind = isOption ? "option " : isCommand ? "argument " : "command ";
        return std::string("unknown ") + kind + inQuotes(*unknown) +
               (names.empty() ? "" : ": did you mean " + joined(names, " or ") + '?');
    }
    std::string text = error.what();
    if (!isCommand) {
        return "name a command";
    }
    if (error.get_name() == "ArgumentMismatch") {
        return text.substr(0, text.find(':')) +
               (text.find("missing") != text.npos ? " needs a value" : " is given more than once");
    }
    if (error.get_name() == "ConversionError") { // values are checked before, so it is a flag's
        return "an option that takes no value has one" + text.substr(text.find(':'));
    }
    if (error.get_name() == "ExcludesError") {
        return std::regex_replace(text, std::regex("excludes"), "cannot be given with");
    }
    return text;
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
    return Option(m_command.add_flag(name, value, wrapped(help)));
}

template <typename Value>
Options::Option Options::value(const char* name, const std::string& type, Value& value,
                               const char* help) {
    return Option(
        m_command.add_option(name, value, wrapped(help))->type_name(type)->allow_extra_args(false));
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
    return Option(m_command.add_option_function<std::string>(name, choose, wrapped(help))
                      ->type_name(joined(names, "|"))
                      ->check(check));
}

template <typename Value>
Options::Option Options::id(const char* name, Value& value, const char* help, const char* type) {
    return Option(m_command.add_option(name, value, wrapped(help))
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
    return Option(m_command.add_option("FILE", paths, wrapped(help))->type_name(""));
}

CommandLine::CommandLine(const char* description, const char* footer,
                         std::function<std::string()> version)
    : m_app(std::make_unique<CLI::App>(description, "dolqctl")), m_exitCode(kFine) {
    m_app->get_formatter()->column_width(kHelpColumn);
    m_app->footer(footer);
    m_app->set_version_flag("-V,--version", std::move(version));
    m_app->require_subcommand(1);
}

CommandLine::~CommandLine() = default;

Options CommandLine::add(const char* command, const char* help, const char* footer,
                         std::function<int(Output&)> run) {
    CLI::App* const added = m_app->add_subcommand(command, wrapped(help));
    added->footer(footer);
    added->callback([this, run = std::move(run)] { m_exitCode = run(m_output); });
    return Options(*added);
}

int CommandLine::run(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    if (!arguments.empty() && arguments.front() == "help") { // COMMAND: as COMMAND --help
        arguments.erase(arguments.begin());
        arguments.push_back("--help");
    }
    std::reverse(arguments.begin(), arguments.end()); // the order that the parser takes
    try {
        m_app->parse(arguments);
    } catch (const CLI::ParseError& error) {
        const auto chosen = m_app->get_subcommands();
        const CLI::App& command = chosen.empty() ? *m_app : *chosen.front();
        const bool isRequest = error.get_exit_code() == 0; // --help or --version
        if (!isRequest || !command.remaining().empty()) {
            throw CommandError(problemOf(command, error) + "\nTry 'dolqctl " +
                               (chosen.empty() ? "" : command.get_name() + ' ') + "--help'.");
        }
        m_app->exit(error);
    }
    if (!m_output.flush()) {
        throw CommandError("standard output cannot be written");
    }
    return m_exitCode;
}

} // namespace dolqctl
