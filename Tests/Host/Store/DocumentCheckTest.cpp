#include "Host/Store/DocumentCheck.h"

#include <gtest/gtest.h>

namespace ZuHost
{

namespace
{

std::string Nested(std::size_t depth)
{
    return std::string(depth, '[') + std::string(depth, ']');
}

} // namespace

TEST(DocumentCheck, PassesJsonOfEveryKind)
{
    for (char const* const text : {"{}", "[]", "null", "1", "-2.5e3", "\"text\"", "true",
                                   R"({"a":[1,2,{"b":null}],"c":"\u00fc","d":1e400})", " {\n} "})
    {
        bool const isOutOfRange = std::string_view(text).find("1e400") != std::string_view::npos;
        EXPECT_EQ(DocumentCheck::FaultOf(text).empty(), !isOutOfRange) << text;
    }
}

TEST(DocumentCheck, SaysWhatIsNoJson)
{
    for (char const* const text : {"", "{", "{\"a\":}", "[1,]", "nul", "{} {}", "\"\xFF\""})
    {
        EXPECT_EQ(DocumentCheck::FaultOf(text).rfind("it is not valid JSON: ", 0), 0U) << text;
    }
    EXPECT_EQ(DocumentCheck::FaultOf(std::string_view("{}\0x", 4)), "it has a zero byte");
}

TEST(DocumentCheck, BoundsTheDepth)
{
    EXPECT_EQ(DocumentCheck::FaultOf(Nested(64)), "");
    EXPECT_EQ(DocumentCheck::FaultOf(Nested(65)), "it is nested deeper than 64 levels");
    EXPECT_EQ(DocumentCheck::FaultOf(Nested(1'000'000)), "it is nested deeper than 64 levels");
}

TEST(DocumentCheck, BoundsTheSize)
{
    EXPECT_EQ(DocumentCheck::FaultOf(std::string(DocumentCheck::MAX_BYTES, ' ') + "1"),
              "it is longer than 16777216 bytes");
}

TEST(DocumentCheck, BoundsTheNumberOfValues)
{
    std::string const pairs(2 * (DocumentCheck::MAX_VALUES - 2), '1'); // becomes "1,1,...": each second byte a comma
    std::string most = pairs;
    for (std::size_t i = 1; i < most.size(); i += 2)
    {
        most[i] = ',';
    }

    EXPECT_EQ(DocumentCheck::FaultOf("[" + most + "1]"), ""); // the list counts too
    EXPECT_EQ(DocumentCheck::FaultOf("[" + most + "1,1]"), "it has more than 250000 values");
}

} // namespace ZuHost
