#include "ZuRest/RequestPreferences.h"

#include <gtest/gtest.h>

namespace ZuRest::RequestPreferences
{

TEST(RequestPreferences, FindTheTypeInTheRanges)
{
    constexpr char const* TYPE = "text/event-stream";
    for (char const* const accept :
         {"", " ", "text/event-stream", "Text/Event-Stream", "text/*", "*/*", "a/b, */*;q=0.1",
          "text/html,text/event-stream;q=0.5", "a/b;q=0 , text/*;level=1", "*/*;q=0.001"})
    {
        EXPECT_TRUE(Admits(accept, TYPE)) << accept;
    }
    for (char const* const accept :
         {"application/hal+json", "text", "text/", "text/html", "*/event-stream", "application/*", "text/event-streams",
          "text/event-stream;q=0", "*/*; q=0.000", ",", "xtext/*"})
    {
        EXPECT_FALSE(Admits(accept, TYPE)) << accept;
    }
}

TEST(RequestPreferences, FindTheHandling)
{
    for (char const* const prefer :
         {"handling=strict", "Handling=strict", "handling=\"strict\"", "handling = strict",
          "respond-async, handling=strict", "handling=strict;foo=1", "wait=1,handling=strict,handling=lenient"})
    {
        EXPECT_TRUE(IsStrict(prefer)) << prefer;
    }
    for (char const* const prefer : {"", "handling", "handling=lenient", "strict", "handling=strictly",
                                     "handling=lenient, handling=strict", "x;handling=strict", "xhandling=strict"})
    {
        EXPECT_FALSE(IsStrict(prefer)) << prefer;
    }
}

} // namespace ZuRest::RequestPreferences
