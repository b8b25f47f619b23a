#include "Ctl/Commands/CommandTable.h"

#include "Ctl/CommandLine/Completion.h"
#include "Ctl/CommandLine/ManPage.h"
#include "Ctl/CommandLine/ParsedWords.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace ZuCtl
{

using testing::HasSubstr;

TEST(CommandTable, HasAGroupBeforeItsCommands)
{
    std::set<std::string> names;
    for (Command const& command : CommandTable())
    {
        EXPECT_TRUE(names.insert(command.name).second) << command.name;
        EXPECT_FALSE(command.summary.empty()) << command.name;
        std::size_t const space = command.name.find(' ');
        if (space != std::string::npos)
        {
            EXPECT_TRUE(names.contains(command.name.substr(0, space))) << command.name;
        }
    }
}

TEST(CommandTable, IsInHelpManPageAndCompletion)
{
    std::string const page = ManPage(CommandTable());
    std::string const bash = BashCompletion(CommandTable());
    std::string const zsh = ZshCompletion(CommandTable());
    for (Command const& command : CommandTable())
    {
        std::vector<std::string> words;
        std::string const name = command.name;
        std::size_t const space = name.find(' ');
        words.push_back(name.substr(0, space));
        if (space != std::string::npos)
        {
            words.push_back(name.substr(space + 1));
        }
        words.emplace_back("--help");
        std::string const help = ParseWords(words, CommandTable()).text;
        EXPECT_THAT(help, HasSubstr(command.summary)) << name;
        EXPECT_THAT(page, HasSubstr(".SS \\fB" + name + "\\fR")) << name;
        EXPECT_THAT(bash, HasSubstr("        \"" + name + "\") candidates=")) << name;
        EXPECT_THAT(zsh, HasSubstr("        \"" + name + "\") candidates=")) << name;
        for (Argument const& argument : command.arguments)
        {
            EXPECT_THAT(help, HasSubstr(argument.name)) << name;
            EXPECT_EQ(bash.find(argument.name) != std::string::npos, !argument.IsPositional()) << argument.name;
        }
    }
}

TEST(CommandTable, HasNoRequestOfRoffWithinATextOfTheManPage)
{
    Command const command{
        "x", ".summary", "'details", {{Argument::Kind::FLAG, "--a-b", "", "back\\slash", {}, {}}}, nullptr};
    std::string const page = ManPage(std::span(&command, 1));
    EXPECT_THAT(page, HasSubstr("\n\\&.summary.\n\\&'details\n"));
    EXPECT_THAT(page, HasSubstr("\\fB\\-\\-a\\-b\\fR\nback\\eslash\n"));
}

} // namespace ZuCtl
