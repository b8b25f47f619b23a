#include "Host/Description/OpenApiPage.h"

#include "ZuRest/ResourceRequestProcessor.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace ZuHost
{

namespace
{

class OpenApiPageTest : public testing::Test
{
protected:
    ZuRest::Answer Get(std::string const& ifNoneMatch = {})
    {
        ZuRest::Request request;
        request.method = "GET";
        request.path = "/openapi.json";
        request.ifNoneMatch = ifNoneMatch;
        return processor.Process(request).answer;
    }

    OpenApi::Service Service()
    {
        return {"1.0", [this](auto const& route) { return processor.MethodsAt(route); },
                [](auto const& /*path*/) { return nlohmann::json::object(); }};
    }

    ZuRest::ResourceRouter router;
    ZuRest::ResourceRequestProcessor processor{router};
};

} // namespace

TEST_F(OpenApiPageTest, ShowsTheDescriptionOfWhatIsRegistered)
{
    OpenApiPage const page(router, Service());

    ZuRest::Answer const answer = Get();

    EXPECT_EQ(answer.status, 200U);
    EXPECT_EQ(answer.contentType, "application/json");
    nlohmann::json const description = nlohmann::json::parse(answer.body);
    EXPECT_EQ(description.at("openapi"), "3.1.0");
    EXPECT_EQ(description.at("paths").size(), 1U);
    EXPECT_TRUE(description.at("paths").contains("/openapi.json"));
}

TEST_F(OpenApiPageTest, HasATag)
{
    OpenApiPage const page(router, Service());
    ZuRest::Answer const answer = Get();
    ASSERT_EQ(answer.headers.at(0).first, "ETag");
    std::string const tag = answer.headers.at(0).second;

    ZuRest::Answer const again = Get(tag);

    EXPECT_EQ(again.status, 304U);
    EXPECT_EQ(again.body, "");
    EXPECT_EQ(again.headers.at(0).second, tag);
    EXPECT_EQ(Get("\"other\"").status, 200U);
}

TEST_F(OpenApiPageTest, TakesItsRouteAway)
{
    {
        OpenApiPage const page(router, Service());
    }
    EXPECT_EQ(Get().status, 404U);
}

TEST_F(OpenApiPageTest, LeavesNoRouteBehindAFailure)
{
    OpenApi::Service service = Service();
    service.findMethods = [](auto const& /*route*/) -> std::string { throw std::runtime_error("no methods"); };
    EXPECT_THROW(OpenApiPage(router, service), std::runtime_error);
    EXPECT_EQ(Get().status, 404U);
}

} // namespace ZuHost
