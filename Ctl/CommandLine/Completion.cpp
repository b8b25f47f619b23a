#include "Ctl/CommandLine/Completion.h"

#include <algorithm>
#include <iterator>

namespace ZuCtl
{

namespace
{

using Values = Argument::Values;

void AppendWord(std::string& list, std::string const& word, char const* separator = " ")
{
    list += (list.empty() ? "" : separator) + word;
}

std::vector<Argument> AllOptions(Commands commands)
{
    std::vector<Argument> options(CommonOptions().begin(), CommonOptions().end());
    for (Command const& command : commands)
    {
        std::ranges::copy_if(command.arguments, std::back_inserter(options),
                             [](Argument const& argument) { return !argument.IsPositional(); });
    }
    return options;
}

/// What an argument sets in the script: files, or a list of words.
std::string Proposal(Argument const& argument)
{
    std::string words;
    std::ranges::for_each(argument.choices, [&](std::string const& choice) { AppendWord(words, choice); });
    return argument.values == Values::FILES ? "files=1" : "candidates=\"" + words + '"';
}

/// "A|B)" for the options with a value, which the next word then is.
std::string OptionsWithValues(Commands commands)
{
    std::string pattern;
    for (Argument const& option : AllOptions(commands))
    {
        if (option.kind == Argument::Kind::OPTION)
        {
            AppendWord(pattern, option.name, "|");
        }
    }
    return pattern;
}

std::string CommandPattern(Commands commands)
{
    std::string pattern;
    for (Command const& command : commands)
    {
        bool const isOfGroup = command.name.find(' ') != std::string::npos;
        AppendWord(pattern, (isOfGroup ? "\"" : "\" ") + command.name + '"', "|");
    }
    return pattern;
}

std::string ValueCases(Commands commands)
{
    std::string cases;
    for (Argument const& option : AllOptions(commands))
    {
        if (option.values != Values::TEXT)
        {
            cases += "        " + option.name + ") " + Proposal(option) + " ;;\n";
        }
    }
    return cases;
}

/// The words that may follow a command: its own options, the common ones, the choices of its words, and its commands.
std::string CaseOf(Command const& command, Commands commands)
{
    std::string words;
    bool takesFiles = false;
    for (Argument const& argument : command.arguments)
    {
        takesFiles = takesFiles || (argument.IsPositional() && argument.values == Values::FILES);
        if (!argument.IsPositional())
        {
            AppendWord(words, argument.name);
            continue;
        }
        std::ranges::for_each(argument.choices, [&](std::string const& choice) { AppendWord(words, choice); });
    }
    for (Command const& other : commands)
    {
        if (!command.name.empty() && other.name.starts_with(command.name + ' '))
        {
            AppendWord(words, other.name.substr(command.name.size() + 1));
        }
        else if (command.name.empty() && other.name.find(' ') == std::string::npos)
        {
            AppendWord(words, other.name);
        }
    }
    std::ranges::for_each(CommonOptions(), [&](Argument const& option) { AppendWord(words, option.name); });
    AppendWord(words, "--help");
    return "        \"" + command.name + "\") candidates=\"" + words + '"' + (takesFiles ? "; files=1" : "") + " ;;\n";
}

/// Finds, from the array `seen` of the words before the cursor, the words (`candidates`) that may follow, and whether files may.
/// It is of the part of the language that bash and zsh share.
std::string Body(Commands commands)
{
    std::string body = "    local word command=\"\" option=\"\" candidates=\"\" files=\"\"\n"
                       "    for word in \"${seen[@]}\"; do\n"
                       "        if [ -n \"$option\" ]; then option=\"\"; continue; fi\n"
                       "        case \"$word\" in\n"
                       "        " +
                       OptionsWithValues(commands) +
                       ") option=\"$word\"; continue ;;\n"
                       "        esac\n"
                       "        case \"$command $word\" in\n"
                       "        " +
                       CommandPattern(commands) +
                       ") command=\"${command:+$command }$word\" ;;\n"
                       "        esac\n"
                       "    done\n"
                       "    if [ -n \"$option\" ]; then\n"
                       "        case \"$option\" in\n" +
                       ValueCases(commands) +
                       "        esac\n"
                       "    else\n"
                       "        case \"$command\" in\n" +
                       CaseOf({"", "", "", {}, nullptr}, commands);
    std::ranges::for_each(commands, [&](Command const& command) { body += CaseOf(command, commands); });
    return body + "        esac\n"
                  "    fi\n";
}

} // namespace

std::string BashCompletion(Commands commands)
{
    return "# bash completion for zucontrolctl; made by: zucontrolctl completion bash\n"
           "_zucontrolctl() {\n"
           "    local -a seen=(\"${COMP_WORDS[@]:1:COMP_CWORD-1}\")\n"
           "    local current=\"${COMP_WORDS[COMP_CWORD]}\"\n" +
           Body(commands) +
           "    COMPREPLY=($(compgen -W \"$candidates\" -- \"$current\"))\n"
           "    if [ -n \"$files\" ]; then\n"
           "        compopt -o filenames 2>/dev/null\n"
           "        local file\n"
           "        while IFS= read -r file; do COMPREPLY+=(\"$file\"); done < <(compgen -f -- \"$current\")\n"
           "    fi\n"
           "}\n"
           "complete -F _zucontrolctl zucontrolctl\n";
}

std::string ZshCompletion(Commands commands)
{
    return "#compdef zucontrolctl\n"
           "# zsh completion for zucontrolctl; made by: zucontrolctl completion zsh\n"
           "_zucontrolctl() {\n"
           "    local -a seen=(\"${(@)words[2,CURRENT-1]}\")\n" +
           Body(commands) +
           "    [ -z \"$candidates\" ] || compadd -- ${=candidates}\n"
           "    [ -z \"$files\" ] || _files\n"
           "}\n"
           "compdef _zucontrolctl zucontrolctl\n";
}

} // namespace ZuCtl
