#include "Ctl/CommandLine/ParsedWords.h"

#include "Ctl/Outcome/Failure.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <utility>

namespace ZuCtl
{

namespace
{

/// Where CLI11 leaves the values of one command, or of the program.
using ValueMap = std::map<std::string, std::vector<std::string>>;

void AddPositional(CLI::App& app, Argument const& argument, ValueMap& values)
{
    using enum Argument::Kind;
    CLI::Option* const option = app.add_option(argument.name, values[argument.name], argument.text);
    bool const isRepeated = argument.kind == WORDS || argument.kind == OPTIONAL_WORDS;
    option->option_text(isRepeated ? "..." : " ");
    option->expected(1, isRepeated ? CLI::detail::expected_max_vector_size : 1);
    option->allow_extra_args(isRepeated); // else the next word is for the next argument
    option->required(argument.kind == WORD || argument.kind == WORDS);
    if (!argument.choices.empty())
    {
        option->check(CLI::IsMember(argument.choices));
    }
}

void AddArgument(CLI::App& app, Argument const& argument, ValueMap& values)
{
    if (argument.kind == Argument::Kind::FLAG)
    {
        app.add_flag(argument.name, argument.text);
        return;
    }
    if (argument.IsPositional())
    {
        AddPositional(app, argument, values);
        return;
    }
    CLI::Option* const option = app.add_option(argument.name, values[argument.name], argument.text);
    option->option_text(argument.value)
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::Throw);
    if (!argument.choices.empty())
    {
        option->check(CLI::IsMember(argument.choices));
    }
}

std::string Footer()
{
    std::string text = "\nExit status:\n";
    for (ExitStatusText const& status : ExitStatuses())
    {
        text += "  " + std::to_string(static_cast<int>(status.status)) + "  " + status.text + '\n';
    }
    return text;
}

/// The program as CLI11 knows it, with what it finds in the words.
class Parser final
{
public:
    explicit Parser(Commands commands)
    {
        app.name("zucontrolctl");
        app.description("Shows and changes ZuControl sensors over REST.");
        app.set_help_flag("--help", "show this text");
        app.set_version_flag("--version", VersionText().substr(0, VersionText().size() - 1), "show the version");
        app.fallthrough();
        app.require_subcommand(1);
        app.get_formatter()->column_width(34);
        app.footer(Footer());
        std::ranges::for_each(CommonOptions(), [this](Argument const& option) { AddArgument(app, option, common); });
        for (Command const& command : commands)
        {
            Add(command);
        }
    }

    ParsedWords Parse(std::vector<std::string> const& words)
    {
        ParsedWords parsed;
        try
        {
            app.parse(std::vector<std::string>(words.rbegin(), words.rend())); // CLI11 takes the last word first
        }
        catch (CLI::CallForHelp const&)
        {
            parsed.text = app.help();
            return parsed;
        }
        catch (CLI::CallForVersion const&)
        {
            parsed.text = VersionText();
            return parsed;
        }
        catch (CLI::ParseError const& error)
        {
            throw Failure(ExitStatus::USAGE, std::string(error.what()) + "\nTry --help");
        }
        auto const chosen = std::ranges::find_if(
            nodes, [](Node const& node) { return node.command->run != nullptr && node.app->parsed(); });
        parsed.command = chosen->command;
        Take(app, CommonOptions(), common, parsed);
        Take(*chosen->app, chosen->command->arguments, *chosen->values, parsed);
        return parsed;
    }

private:
    struct Node
    {
        Command const* command;
        CLI::App* app;
        std::unique_ptr<ValueMap> values;
    };

    void Add(Command const& command)
    {
        CLI::App* parent = &app;
        std::string name = command.name;
        if (std::size_t const space = name.find(' '); space != std::string::npos)
        {
            parent = app.get_subcommand(name.substr(0, space));
            name = name.substr(space + 1);
        }
        CLI::App* const own = parent->add_subcommand(name, command.summary);
        own->footer(command.details.empty() ? "" : '\n' + command.details + '\n');
        own->require_subcommand(command.run == nullptr ? 1 : 0);
        nodes.push_back({&command, own, std::make_unique<ValueMap>()});
        Node const& node = nodes.back();
        std::ranges::for_each(command.arguments,
                              [&](Argument const& argument) { AddArgument(*own, argument, *node.values); });
    }

    static void Take(CLI::App const& app, std::span<Argument const> arguments, ValueMap const& values,
                     ParsedWords& parsed)
    {
        for (Argument const& argument : arguments)
        {
            if (app.count(argument.name) != 0)
            {
                bool const isFlag = argument.kind == Argument::Kind::FLAG;
                parsed.values[argument.name] = isFlag ? std::vector<std::string>{""} : values.at(argument.name);
            }
        }
    }

    CLI::App app;
    ValueMap common;
    std::vector<Node> nodes;
};

} // namespace

ParsedWords ParseWords(std::vector<std::string> const& words, Commands commands)
{
    return Parser(commands).Parse(words);
}

std::string VersionText()
{
    return "zucontrolctl " ZU_VERSION "\n";
}

} // namespace ZuCtl
