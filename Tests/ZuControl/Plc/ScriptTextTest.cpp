#include "ZuControl/Plc/ScriptText.h"

#include <gtest/gtest.h>

namespace ZuControl::Plc
{

TEST(ScriptText, MakesCommentsOfOneLine)
{
    EXPECT_EQ(CommentText("profile/zMax"), "profile/zMax");
    EXPECT_EQ(CommentText("a\nb\r\tc\x7F"), "a b  c ");
    EXPECT_EQ(CommentText("$(id) `id` \"'\\"), "$(id) `id` \"'\\");
    EXPECT_EQ(CommentText("H\xC3\xB6he"), "H\xC3\xB6he");
    EXPECT_EQ(CommentText("\xC2\x85"), " ");       // next line
    EXPECT_EQ(CommentText("a\xE2\x80\xA8"), "a?"); // line separator
    EXPECT_EQ(CommentText("\xE2\x80\xAE"
                          "b"),
              "?b"); // right to left from here
    EXPECT_EQ(CommentText("\xF0\x9F\x98\x80"), "?");
}

TEST(ScriptText, MakesLiteralsOfPythonFromASCII)
{
    EXPECT_EQ(PythonLiteral("profile/zMax"), R"("profile/zMax")");
    EXPECT_EQ(PythonLiteral("\"\\'"), R"("\"\\'")");
    EXPECT_EQ(PythonLiteral("a\nb"), R"("a\U0000000ab")");
    EXPECT_EQ(PythonLiteral("\xC3\xB6"), R"("\U000000f6")");
    EXPECT_EQ(PythonLiteral("\xF0\x9F\x98\x80"), R"("\U0001f600")");
}

TEST(ScriptText, MarksBytesThatAreNoUtf8)
{
    EXPECT_EQ(PythonLiteral("\x80"), R"("?")");
    EXPECT_EQ(PythonLiteral("\xC3"), R"("?")");
    EXPECT_EQ(PythonLiteral("\xC3z"), R"("?z")");
    EXPECT_EQ(PythonLiteral("\xF7\xBF\xBF\xBF"), R"("?")"); // beyond the last character
    EXPECT_EQ(CommentText("\xE2\x28\xA1"), "?(?");
}

} // namespace ZuControl::Plc
