#include "Host/Http/PagePath.h"

#include <gtest/gtest.h>

namespace ZuHost
{

namespace
{

constexpr char const* BROWSER = "text/html,application/xhtml+xml,application/xml;q=0.9,*/*;q=0.8";

} // namespace

TEST(PagePath, LeadsBrowsersFromTheRootToTheConsole)
{
    EXPECT_EQ(PagePath::Of("GET", "/", BROWSER), "/ui");
    EXPECT_EQ(PagePath::Of("HEAD", "/", BROWSER), "/ui");
}

TEST(PagePath, LeavesTheRootToPrograms)
{
    EXPECT_EQ(PagePath::Of("GET", "/", ""), "/");
    EXPECT_EQ(PagePath::Of("GET", "/", "*/*"), "/");
    EXPECT_EQ(PagePath::Of("GET", "/", "application/hal+json"), "/");
    EXPECT_EQ(PagePath::Of("OPTIONS", "/", BROWSER), "/");
}

TEST(PagePath, NamesTheStartPageOfTheConsole)
{
    EXPECT_EQ(PagePath::Of("GET", "/ui/", ""), "/ui/index.html");
    EXPECT_EQ(PagePath::Of("POST", "/ui/", ""), "/ui/");
}

TEST(PagePath, KeepsEveryOtherPath)
{
    for (char const* const path : {"/ui", "/ui/index.html", "/ui//", "/controls", "/controls/", "", "*"})
    {
        EXPECT_EQ(PagePath::Of("GET", path, BROWSER), path);
    }
}

} // namespace ZuHost
