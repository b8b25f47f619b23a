#include "ZuApi/FunctionLabel.h"

#include <gtest/gtest.h>

#include <string>

namespace Station
{

namespace
{

struct Hidden
{
    std::string label;

    Hidden() : label(ZU_FUNCTION_LABEL)
    {
    }

    char const* Name(int) const
    {
        static std::string const kept = ZU_FUNCTION_LABEL;
        return kept.c_str();
    }

    operator std::string() const
    {
        return ZU_FUNCTION_LABEL;
    }

    std::string operator()(int) const
    {
        return ZU_FUNCTION_LABEL;
    }

    std::string InLambda() const
    {
        return [](int) -> std::string { return ZU_FUNCTION_LABEL; }(1);
    }
};

template <typename T>
struct Box
{
    std::string Put(T const&) const
    {
        return ZU_FUNCTION_LABEL;
    }

    template <typename U>
    static std::string Make(U const&)
    {
        return ZU_FUNCTION_LABEL;
    }
};

} // namespace

TEST(FunctionLabel, LeavesOutReturnTypeArgumentsAndUnnamedNamespace)
{
    EXPECT_EQ(Hidden().label, "Station::Hidden::Hidden");
    EXPECT_STREQ(Hidden().Name(1), "Station::Hidden::Name");
}

TEST(FunctionLabel, KeepsTheNamesOfOperators)
{
    EXPECT_EQ(Hidden()(1), "Station::Hidden::operator()");
    EXPECT_TRUE(static_cast<std::string>(Hidden()).starts_with("Station::Hidden::operator "));
}

TEST(FunctionLabel, InALambdaIsTheFunctionAroundIt)
{
    EXPECT_EQ(Hidden().InLambda(), "Station::Hidden::InLambda");
}

TEST(FunctionLabel, LeavesOutTemplateArguments)
{
    EXPECT_EQ(Box<int>().Put(1), "Station::Box::Put");
    EXPECT_EQ(Box<Box<int>>::Make(std::string()), "Station::Box::Make");
}

} // namespace Station
