#include "Host/Metrics/PrometheusText.h"

#include <gtest/gtest.h>

#include <limits>

namespace ZuHost
{

using Type = PrometheusText::Type;

TEST(PrometheusText, WritesTheSamplesOfANameTogetherUnderOneHelpAndType)
{
    PrometheusText text;
    text.Add("b_total", Type::COUNTER, "All b.", {{"protocol", "X"}}, "1");
    text.Add("a", Type::GAUGE, "Now a.", {}, "2.5");
    text.Add("b_total", Type::COUNTER, "Another help.", {{"protocol", "Y"}, {"code", "2"}}, "3");

    EXPECT_EQ(text.Write(), "# HELP a Now a.\n"
                            "# TYPE a gauge\n"
                            "a 2.5\n"
                            "# HELP b_total All b.\n"
                            "# TYPE b_total counter\n"
                            "b_total{protocol=\"X\"} 1\n"
                            "b_total{protocol=\"Y\",code=\"2\"} 3\n");
}

TEST(PrometheusText, PutsASuffixBehindTheNameInASampleAlone)
{
    PrometheusText text;
    text.Add("age_seconds", Type::SUMMARY, "Ages.", {}, "1.5", "_sum");
    text.Add("age_seconds", Type::SUMMARY, "Ages.", {}, "3", "_count");
    text.Add("x", Type::UNTYPED, "X.", {}, "0");

    EXPECT_EQ(text.Write(), "# HELP age_seconds Ages.\n"
                            "# TYPE age_seconds summary\n"
                            "age_seconds_sum 1.5\n"
                            "age_seconds_count 3\n"
                            "# HELP x X.\n"
                            "# TYPE x untyped\n"
                            "x 0\n");
}

TEST(PrometheusText, EscapesWhatWouldEndATextEarly)
{
    PrometheusText text;
    text.Add("a", Type::GAUGE, "One \\ \"two\"\nthree", {{"protocol", "q\"\\\n"}}, "1");

    EXPECT_EQ(text.Write(), "# HELP a One \\\\ \"two\"\\nthree\n"
                            "# TYPE a gauge\n"
                            "a{protocol=\"q\\\"\\\\\\n\"} 1\n");
}

TEST(PrometheusText, IsEmptyWithoutSamples)
{
    EXPECT_EQ(PrometheusText().Write(), "");
}

TEST(PrometheusText, MakesNamesOfKeys)
{
    EXPECT_EQ(PrometheusText::NameOf("resultSets"), "result_sets");
    EXPECT_EQ(PrometheusText::NameOf("lastHandlingUsec"), "last_handling_usec");
    EXPECT_EQ(PrometheusText::NameOf("Upper"), "upper");
    EXPECT_EQ(PrometheusText::NameOf("ID"), "id");
    EXPECT_EQ(PrometheusText::NameOf("port2Bytes"), "port2_bytes");
    EXPECT_EQ(PrometheusText::NameOf("a-b.c \xC3\xA4"), "a_b_c___");
}

TEST(PrometheusText, WritesAlsoWhatIsNoNumber)
{
    EXPECT_EQ(PrometheusText::Number(0.1), "0.1");
    EXPECT_EQ(PrometheusText::Number(-1e300), "-1e+300");
    EXPECT_EQ(PrometheusText::Number(-std::numeric_limits<double>::max()), "-1.7976931348623157e+308");
    EXPECT_EQ(PrometheusText::Number(std::numeric_limits<double>::quiet_NaN()), "NaN");
    EXPECT_EQ(PrometheusText::Number(std::numeric_limits<double>::infinity()), "+Inf");
    EXPECT_EQ(PrometheusText::Number(-std::numeric_limits<double>::infinity()), "-Inf");
}

TEST(PrometheusText, WritesMicrosecondsAsSeconds)
{
    EXPECT_EQ(PrometheusText::Seconds(0), "0.000000");
    EXPECT_EQ(PrometheusText::Seconds(1), "0.000001");
    EXPECT_EQ(PrometheusText::Seconds(12'345'678), "12.345678");
    EXPECT_EQ(PrometheusText::Seconds(18446744073709551615u), "18446744073709.551615");
}

} // namespace ZuHost
