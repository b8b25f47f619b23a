#include "Ctl/CommandLine/ParsedWords.h"

#include "Ctl/Commands/CommandTable.h"
#include "Ctl/Outcome/Failure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ZuCtl
{

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;

ParsedWords Parse(std::vector<std::string> const& words)
{
    return ParseWords(words, CommandTable());
}

} // namespace

TEST(ParsedWords, HaveTheCommandAndItsArguments)
{
    ParsedWords const parsed = Parse({"jobs", "upload", "line7.zpjob", "line 7"});
    EXPECT_EQ(parsed.command->name, "jobs upload");
    EXPECT_THAT(parsed.values.at("FILE"), ElementsAre("line7.zpjob"));
    EXPECT_THAT(parsed.values.at("NAME"), ElementsAre("line 7"));
    EXPECT_FALSE(parsed.values.contains("--json"));
}

TEST(ParsedWords, TakeCommonOptionsBeforeAndBehindTheCommand)
{
    ParsedWords const parsed = Parse({"--host", "http://a", "set", "A.b=1", "A.c=", "--json", "--timeout=3"});
    EXPECT_EQ(parsed.command->name, "set");
    EXPECT_THAT(parsed.values.at("SETTING"), ElementsAre("A.b=1", "A.c="));
    EXPECT_THAT(parsed.values.at("--host"), ElementsAre("http://a"));
    EXPECT_THAT(parsed.values.at("--timeout"), ElementsAre("3"));
    EXPECT_TRUE(parsed.values.contains("--json"));
}

TEST(ParsedWords, GiveATextForHelpAndVersion)
{
    EXPECT_EQ(Parse({"--help"}).command, nullptr);
    EXPECT_THAT(Parse({"--help"}).text, HasSubstr("Exit status:\n  0  done\n"));
    EXPECT_THAT(Parse({"jobs", "load", "--help"}).text, HasSubstr("load a job, and tell what was not taken over"));
    EXPECT_EQ(Parse({"--version"}).text, VersionText());
}

TEST(ParsedWords, AreRefusedWithTheReason)
{
    std::vector<std::vector<std::string>> const wrong{{},
                                                      {"nothing"},
                                                      {"jobs"},
                                                      {"get"},
                                                      {"set"},
                                                      {"get", "/", "more"},
                                                      {"status", "--no-such-option"},
                                                      {"status", "--host"},
                                                      {"status", "--host", "a", "--host", "b"}};
    for (std::vector<std::string> const& words : wrong)
    {
        try
        {
            Parse(words);
            ADD_FAILURE() << testing::PrintToString(words);
        }
        catch (Failure const& failure)
        {
            EXPECT_EQ(failure.Status(), ExitStatus::USAGE);
            EXPECT_THAT(failure.what(), HasSubstr("Try --help"));
        }
    }
}

} // namespace ZuCtl
