#include "Host/Log/LogLine.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <regex>
#include <utility>

namespace ZuHost
{

TEST(LogLine, EscapesWhatIsNoPrintableText)
{
    struct Case
    {
        char const* text;
        char const* shown;
    };
    for (Case const& tested : {
             Case{"plain text, \"quoted\\\"", "plain text, \"quoted\\\""},
             Case{"gr\xC3\xB6\xC3\x9F"
                  "er \xE2\x82\xAC \xF0\x9F\x98\x80",
                  "gr\xC3\xB6\xC3\x9F"
                  "er \xE2\x82\xAC \xF0\x9F\x98\x80"},
             Case{"one\ntwo\r\tthree", "one\\ntwo\\r\\tthree"}, Case{"\x1B[31mred\x07\x7F", "\\x1b[31mred\\x07\\x7f"},
             Case{"\xC2\x9B"
                  "31m",
                  "\\u009b31m"},                                 // a control sequence in one character
             Case{"\x9B\xFF\xC3", "\\x9b\\xff\\xc3"},            // no UTF-8
             Case{"\xE2\x80\xAE\xE2\x81\xA6", "\\u202e\\u2066"}, // change the direction of the text
             Case{"\xE2\x80\xA8", "\\u2028"},                    // a line separator
         })
    {
        EXPECT_EQ(Printable(tested.text), tested.shown);
    }
}

TEST(LogLine, IsOneLineWhateverLabelAndTextAre)
{
    std::string const line = LogLine(LogLevel::INFO, "a\nb", "c\nd");

    EXPECT_TRUE(line.ends_with(" info    [a\\nb] c\\nd\n")) << line;
    EXPECT_EQ(line.find('\n'), line.size() - 1);
}

TEST(LogLine, BeginsWithTheTimeAndItsZone)
{
    std::regex const form(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}(.\d\d:\d\d) error   \[a\] b\n)");
    for (auto const& [zone, shown] : {std::pair{"Somewhere-5:45", "+05:45"}, std::pair{"Elsewhere3:30", "-03:30"}})
    {
        setenv("TZ", zone, 1);
        tzset();

        std::string const line = LogLine(LogLevel::ERROR, "a", "b");

        std::smatch parts;
        EXPECT_TRUE(std::regex_match(line, parts, form)) << line;
        EXPECT_EQ(parts.str(1), shown);
    }
    unsetenv("TZ");
    tzset();
}

} // namespace ZuHost
