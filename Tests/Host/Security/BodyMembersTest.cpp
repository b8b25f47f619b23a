#include "Host/Security/BodyMembers.h"

#include "Support/Refusal.h"

#include <gtest/gtest.h>

namespace ZuHost
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

TEST(BodyMembers, ReadsTextsAndFlags)
{
    BodyMembers body(R"({"name": "anna", "enabled": false, "empty": ""})");
    EXPECT_EQ(body.Text("name"), "anna");
    EXPECT_EQ(body.OptionalText("empty"), "");
    EXPECT_EQ(body.OptionalFlag("enabled"), false);
    EXPECT_FALSE(body.OptionalText("role").has_value());
    EXPECT_FALSE(body.OptionalFlag("locked").has_value());
    body.CheckAllKnown();
}

TEST(BodyMembers, ShowsNothingOfABodyThatIsNoJson)
{
    for (std::string const& body : {std::string(), std::string("{\"password\": \"secret"), std::string("secret"),
                                    std::string("{\"password\": \"\xFF\"}"), std::string(100'000, '[')})
    {
        EXPECT_EQ(RefusalOf([&] { BodyMembers const members(body); }),
                  (Refusal{Zu::Status::BAD_FORMAT, "The body is no JSON."}))
            << body.substr(0, 50);
    }
}

TEST(BodyMembers, RefusesMembersThatAreNotAsExpected)
{
    auto const refused = [](char const* text) { return Refusal{Zu::Status::BAD_ARGUMENT, text}; };
    EXPECT_EQ(RefusalOf([] { BodyMembers const members("[\"secret\"]"); }), refused("The body is no JSON object."));
    BodyMembers body(R"({"password": 1, "enabled": "yes", "role": null, "secret": 1})");
    EXPECT_EQ(RefusalOf([&] { body.Text("name"); }), refused("The body lacks the member 'name'."));
    EXPECT_EQ(RefusalOf([&] { body.Text("password"); }), refused("The member 'password' of the body is no string."));
    EXPECT_EQ(RefusalOf([&] { body.OptionalText("role"); }), refused("The member 'role' of the body is no string."));
    EXPECT_EQ(RefusalOf([&] { body.OptionalFlag("enabled"); }),
              refused("The member 'enabled' of the body is neither true nor false."));
    EXPECT_EQ(RefusalOf([&] { body.CheckAllKnown(); }), refused("The body has a member that is not known here."));
}

} // namespace ZuHost
