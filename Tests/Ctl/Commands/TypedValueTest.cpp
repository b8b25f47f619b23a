#include "Ctl/Commands/TypedValue.h"

#include "Ctl/Outcome/Failure.h"

#include <gtest/gtest.h>

namespace ZuCtl
{

using nlohmann::json;

TEST(TypedValue, HasTheTypeOfThePresentValue)
{
    EXPECT_EQ(TypedValue("a", "502", 1502), json(502));
    EXPECT_EQ(TypedValue("a", "1.5", 1), json(1.5));
    EXPECT_EQ(TypedValue("a", "502", ""), json("502"));
    EXPECT_EQ(TypedValue("a", "", "x"), json(""));
    EXPECT_EQ(TypedValue("a", "true", false), json(true));
    EXPECT_EQ(TypedValue("a", "[1]", json::array()), json::array({1}));
    EXPECT_EQ(TypedValue("a", "{}", json::object()), json::object());
    EXPECT_EQ(TypedValue("a", "1", nullptr), json(1));
}

TEST(TypedValue, RefusesATextOfAnotherType)
{
    struct Case
    {
        char const* text;
        json present;
        char const* sentence;
    };
    Case const cases[] = {
        {"x", 1, "port: 'x' is not a number"},
        {"", 1, "port: '' is not a number"},
        {"1", true, "port: '1' is not true or false"},
        {"1", json::array(), "port: '1' is not a list in JSON"},
        {"[]", json::object(), "port: '[]' is not a document in JSON"},
    };
    for (Case const& one : cases)
    {
        try
        {
            TypedValue("port", one.text, one.present);
            ADD_FAILURE() << one.sentence;
        }
        catch (Failure const& failure)
        {
            EXPECT_EQ(failure.Status(), ExitStatus::USAGE);
            EXPECT_STREQ(failure.what(), one.sentence);
        }
    }
}

} // namespace ZuCtl
