#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Output.h"

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace dolqctl {

/// The options of one command. What stands here is the help, which the man page and the completion
/// are made of: there is no other list of options. Values outlive the run of the command.
class Options {
public:
    explicit Options(CLI::App& command) : m_command(command) {}

    class Option {
    public:
        explicit Option(CLI::Option* option) : m_option(option) {}
        Option required() const;
        /// Takes its value from an environment variable when it is not given.
        Option orFrom(const char* variable) const;
        Option excludes(const Option& other) const;

    private:
        CLI::Option* m_option;
    };

    Option flag(const char* name, bool& value, const char* help);

    /// `type` stands for the value in the help: a word in capitals, or all values there are, joined
    /// by '|'. `Value`: std::string, an optional one, or a vector of them for a repeatable option.
    template <typename Value>
    Option value(const char* name, const std::string& type, Value& value, const char* help);

    /// One of `names`; `index` tells which one.
    Option choice(const char* name, const std::vector<std::string>& names,
                  std::optional<std::uint32_t>& index, const char* help);

    /// A fault or event id, or another number, decimal or hexadecimal with 0x. One with a leading 0
    /// is refused: it would be octal to some and decimal to others. `Value`: std::uint32_t, in the
    /// same forms.
    template <typename Value>
    Option id(const char* name, Value& value, const char* help, const char* type = "ID");

    /// The files named without an option.
    Option files(std::vector<std::string>& paths, const char* help);

private:
    CLI::App& m_command;
};

/// The program's command line: one command with its options.
class CommandLine {
public:
    /// `version` makes the answer to --version.
    CommandLine(const char* description, const char* footer, std::function<std::string()> version);
    ~CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    /// `run` prints the command's answer and returns the exit code.
    Options add(const char* command, const char* help, const char* footer,
                std::function<int(Output&)> run);

    /// Runs the command that the arguments name and returns its exit code. Throws CommandError, and
    /// what the command throws.
    int run(int argc, char** argv);

private:
    std::unique_ptr<CLI::App> m_app;
    Output m_output;
    int m_exitCode;
};

} // namespace dolqctl
