#include "ZuRest/ResponseInfo.h"

#include "ZuRest/Reference.h"
#include "ZuRest/RequestInfo.h"

#include <gtest/gtest.h>

namespace ZuRest
{

TEST(ResponseInfo, KeepsWhatWasSaidInOrder)
{
    ResponseInfo response;

    response.Embed("item", "/b", true, nullptr);
    response.Link("zu:command", "/a", false, nlohmann::json{{"title", "A"}});

    ASSERT_EQ(response.References().size(), 2U);
    Reference const& first = response.References()[0];
    EXPECT_TRUE(first.isEmbedded && first.asList && first.extra.is_null());
    EXPECT_EQ(first.key, "item");
    EXPECT_EQ(first.path, "/b");
    Reference const& second = response.References()[1];
    EXPECT_FALSE(second.isEmbedded || second.asList);
    EXPECT_EQ(second.extra.at("title"), "A");
}

TEST(RequestInfo, FindsTheKeysOfTheRoute)
{
    RequestInfo const request("/controls/x", {{"protocol", "x"}}, false);

    ASSERT_NE(request.FindKey("protocol"), nullptr);
    EXPECT_EQ(*request.FindKey("protocol"), "x");
    EXPECT_EQ(request.FindKey("command"), nullptr);
}

} // namespace ZuRest
