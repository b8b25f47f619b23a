#pragma once

#include "wApi/wTypes.h"

#include <span>
#include <string>
#include <vector>

namespace ZuHost
{

struct Options;

/// An option of the command line, which may also be a key of the configuration file.
struct OptionForm
{
    enum class Kind : uint8
    {
        SWITCH, ///< has no value; true or false in the file
        VALUE,  ///< of several values the last one holds
        LIST    ///< may be repeated
    };

    enum class Scope : uint8
    {
        COMMAND_LINE, ///< no key of the file
        START,        ///< a new value in the file takes effect at the next start
        RUN           ///< a new value in the file takes effect at a hang-up signal, too
    };

    char const* name;
    Kind kind;
    Scope scope;
    char const* value; ///< what stands for the value in the help, such as "SECONDS"; empty for a SWITCH
    char const* help;  ///< with the default value in parentheses

    /// Takes the option over. `label` is its name in errors, `text` is empty for a SWITCH. Throws `Zu::Status::BAD_ARGUMENT`.
    void (*apply)(std::string const& label, std::string const& text, Options& options);
};

/// All options, in the order of the help.
std::span<OptionForm const> OptionForms();

/// An option to which a user has given a value.
struct GivenOption
{
    OptionForm const* form; ///< of `OptionForms`
    std::string label;      ///< where it was given: "option '--rate'", or "host.toml, line 3: 'rate'"
    std::string text;

    /// Whether both say the same, in whatever place.
    bool operator==(GivenOption const& other) const
    {
        return form == other.form && text == other.text;
    }
};

} // namespace ZuHost
