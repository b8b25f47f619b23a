#pragma once

#include <span>
#include <string>
#include <vector>

namespace ZuCtl
{

class Call;

/// One word, option or flag of a command. The parser, the help, the man page and the completion are made from it.
struct Argument
{
    enum class Kind
    {
        WORD,          ///< a positional argument that must be there
        OPTIONAL_WORD, ///< a positional argument that may be missing
        WORDS,         ///< one positional argument or more
        OPTIONAL_WORDS,
        OPTION, ///< "--name VALUE"
        FLAG    ///< "--name"
    };
    enum class Values
    {
        TEXT,
        FILES, ///< the completion proposes files
        CHOICES
    };

    Kind kind = Kind::WORD;
    std::string name;  ///< "--rate", or "PATH" for a positional argument
    std::string value; ///< of an option, such as "HZ"
    std::string text;  ///< what it means
    Values values = Values::TEXT;
    std::vector<std::string> choices;

    bool IsPositional() const noexcept
    {
        return kind != Kind::OPTION && kind != Kind::FLAG;
    }
};

/// One command of the program.
struct Command
{
    std::string name; ///< "status", or "jobs load" for a command of a group
    std::string summary;
    std::string details; ///< further sentences for the help and the man page; may be empty
    std::vector<Argument> arguments;
    void (*run)(Call& call); ///< throws `Failure`; null for a group, which has no work of its own
};

using Commands = std::span<Command const>;

/// The options that each command has.
std::span<Argument const> CommonOptions();

} // namespace ZuCtl
