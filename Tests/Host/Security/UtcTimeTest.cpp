#include "Host/Security/UtcTime.h"

#include <gtest/gtest.h>

namespace ZuHost
{

TEST(UtcTime, ReadsWhatItWrites)
{
    EXPECT_EQ(UtcTime::Text(0), "1970-01-01T00:00:00Z");
    EXPECT_EQ(UtcTime::Text(1'801'396'800), "2027-01-31T12:00:00Z");
    EXPECT_EQ(UtcTime::Parse("2027-01-31T12:00:00Z"), 1'801'396'800);
    EXPECT_EQ(UtcTime::Parse("2028-02-29T23:59:59Z"), UtcTime::Parse("2028-03-01T00:00:00Z").value_or(0) - 1);
}

TEST(UtcTime, TakesNoOtherForm)
{
    for (char const* text :
         {"", "2027-01-31", "2027-01-31T12:00:00", "2027-01-31T12:00:00+00:00", "2027-01-31T12:00:00.5Z",
          "2027-01-31 12:00:00Z", "2027-1-31T12:00:00Z", "2027-02-31T12:00:00Z", "2027-01-31T24:00:00Z",
          "2027-01-31T12:00:60Z", "2027-01-31T12:00:00Z ", " 2027-01-31T12:00:00Z", "-027-01-31T12:00:00Z"})
    {
        EXPECT_EQ(UtcTime::Parse(text), std::nullopt) << text;
    }
}

TEST(UtcTime, KnowsThePresent)
{
    EXPECT_GT(UtcTime::Now(), 1'700'000'000);
}

} // namespace ZuHost
