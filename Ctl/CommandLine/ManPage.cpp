#include "Ctl/CommandLine/ManPage.h"

#include "Ctl/CommandLine/ParsedWords.h"
#include "Ctl/Outcome/ExitStatus.h"

#include <algorithm>

namespace ZuCtl
{

namespace
{

/// A text as roff shows it: hyphens that can be copied, and no line that is a request.
std::string Roff(std::string const& text)
{
    std::string shown = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
    for (char const letter : text)
    {
        shown += letter == '\\' ? "\\e" : letter == '-' ? "\\-" : std::string(1, letter);
    }
    return shown;
}

std::string Entry(std::string const& term, std::string const& text)
{
    return ".TP\n" + term + '\n' + Roff(text) + '\n';
}

std::string OptionEntry(Argument const& option)
{
    std::string const value = option.value.empty() ? "" : " \\fI" + Roff(option.value) + "\\fR";
    return Entry("\\fB" + Roff(option.name) + "\\fR" + value, option.text);
}

std::string WordOf(Argument const& argument)
{
    using enum Argument::Kind;
    std::string const name = "\\fI" + Roff(argument.name) + "\\fR";
    bool const isRepeated = argument.kind == WORDS || argument.kind == OPTIONAL_WORDS;
    bool const isOptional = argument.kind == OPTIONAL_WORD || argument.kind == OPTIONAL_WORDS;
    std::string const word = isRepeated ? name + "..." : name;
    return isOptional ? '[' + word + ']' : word;
}

std::string CommandSection(Command const& command)
{
    std::string text = ".SS \\fB" + Roff(command.name) + "\\fR";
    for (Argument const& argument : command.arguments)
    {
        text += argument.IsPositional() ? ' ' + WordOf(argument) : "";
    }
    text += '\n' + Roff(command.summary) + ".\n";
    if (!command.details.empty())
    {
        text += Roff(command.details) + '\n';
    }
    for (Argument const& argument : command.arguments)
    {
        text += argument.IsPositional() ? Entry("\\fI" + Roff(argument.name) + "\\fR", argument.text)
                                        : OptionEntry(argument);
    }
    return text;
}

} // namespace

std::string ManPage(Commands commands)
{
    std::string const version = VersionText().substr(0, VersionText().size() - 1);
    std::string page = ".TH ZUCONTROLCTL 1 \"\" \"" + Roff(version) +
                       "\" \"User Commands\"\n"
                       ".SH NAME\nzucontrolctl \\- show and change ZuControl sensors over REST\n"
                       ".SH SYNOPSIS\n.B zucontrolctl\n[\\fIOPTION\\fR]... \\fICOMMAND\\fR [\\fIARGUMENT\\fR]...\n"
                       ".SH OPTIONS\n";
    std::ranges::for_each(CommonOptions(), [&](Argument const& option) { page += OptionEntry(option); });
    page += OptionEntry({Argument::Kind::FLAG, "--help", "", "show the help of the program, or of a command", {}, {}});
    page += OptionEntry({Argument::Kind::FLAG, "--version", "", "show the version", {}, {}});
    page += ".SH COMMANDS\n";
    std::ranges::for_each(commands, [&](Command const& command) { page += CommandSection(command); });
    page += ".SH EXIT STATUS\n";
    for (ExitStatusText const& status : ExitStatuses())
    {
        page += Entry("\\fB" + std::to_string(static_cast<int>(status.status)) + "\\fR", status.text);
    }
    page += ".SH FILES\n" +
            Entry("\\fI~/.config/zucontrol/sensors.toml\\fR",
                  "the file of sensors: names, addresses and tokens. Only its owner may have access to it.") +
            ".SH ENVIRONMENT\n" + Entry("NO_COLOR", "if it is set and not empty, the program prints no colours") +
            Entry("XDG_CONFIG_HOME", "the folder to take in place of ~/.config") +
            ".SH SEE ALSO\n.BR zucontrol\\-host (8)\n";
    return page;
}

} // namespace ZuCtl
