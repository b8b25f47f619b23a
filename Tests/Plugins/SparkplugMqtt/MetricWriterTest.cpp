#include "Plugins/SparkplugMqtt/MetricWriter.h"
#include "Support/AllocationCounter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <string>
#include <vector>

namespace SparkplugMqtt
{

using Bytes = std::vector<uint8>;

namespace
{

Bytes Encoded(Metric const& metric)
{
    MetricWriter writer(1024);
    EXPECT_TRUE(writer.Add(metric));
    return {writer.Bytes().begin(), writer.Bytes().end()};
}

Metric Datum(uint64 alias, MetricValue value)
{
    return {.name = {}, .alias = alias, .timestampMsec = 300, .type = {}, .value = value};
}

} // namespace

TEST(MetricWriter, EncodesEachKindOfValue)
{
    struct Case
    {
        MetricValue value;
        Bytes bytes; // behind alias 1 and timestamp 300
    };
    Case const cases[] = {
        {true, {0x70, 1}},
        {false, {0x70, 0}},
        {uint32{0xFFFFFFFF}, {0x50, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F}},
        {uint64{1} << 35, {0x58, 0x80, 0x80, 0x80, 0x80, 0x80, 0x01}},
        {1.5, {0x69, 0, 0, 0, 0, 0, 0, 0xF8, 0x3F}},
        {std::string_view("ab"), {0x7A, 2, 'a', 'b'}},
        {std::string_view(""), {0x7A, 0}},
        {std::monostate{}, {0x38, 1}},
    };
    for (Case const& one : cases)
    {
        Bytes expected = {0x12, static_cast<uint8>(5 + one.bytes.size()), 0x10, 1, 0x18, 0xAC, 0x02};
        expected.insert(expected.end(), one.bytes.begin(), one.bytes.end());
        EXPECT_EQ(Encoded(Datum(1, one.value)), expected);
    }
}

TEST(MetricWriter, EncodesTheMetricOfABirthWithNameTypeAndQuality)
{
    EXPECT_EQ(Encoded({.name = "zMax",
                       .alias = 7,
                       .timestampMsec = 1,
                       .type = DataType::DOUBLE,
                       .value = 2.0,
                       .quality = Quality::GOOD}),
              (Bytes{0x12, 39,                                                  // a metric
                     0x0A, 4,  'z',  'M', 'a',  'x',                            // its name
                     0x10, 7,  0x18, 1,   0x20, 10,                             // alias, timestamp, datatype
                     0x4A, 16, 0x0A, 7,   'Q',  'u',  'a',  'l', 'i', 't', 'y', // properties: the key
                     0x12, 5,  0x08, 3,   0x18, 0xC0, 0x01,                     // its value, an Int32
                     0x69, 0,  0,    0,   0,    0,    0,    0,   0x40}));
}

TEST(MetricWriter, EncodesUnitAndLimitsAsProperties)
{
    EXPECT_EQ(Encoded({.name = {},
                       .alias = 7,
                       .timestampMsec = 1,
                       .type = {},
                       .value = true,
                       .unit = "mm",
                       .limits = ValueLimits{1.0, 2.0}}),
              (Bytes{0x12, 68,                                           // a metric
                     0x10, 7,    0x18, 1,                                // alias, timestamp
                     0x4A, 60,                                           // properties
                     0x0A, 7,    'e',  'n', 'g',  'U', 'n', 'i', 't',    // the keys
                     0x0A, 6,    'e',  'n', 'g',  'L', 'o', 'w',         //
                     0x0A, 7,    'e',  'n', 'g',  'H', 'i', 'g', 'h',    //
                     0x12, 6,    0x08, 12,  0x42, 2,   'm', 'm',         // the values: a String
                     0x12, 11,   0x08, 10,  0x31, 0,   0,   0,   0,   0, // two Doubles
                     0,    0xF0, 0x3F,                                   //
                     0x12, 11,   0x08, 10,  0x31, 0,   0,   0,   0,   0, //
                     0,    0,    0x40,                                   //
                     0x70, 1}));
}

TEST(MetricWriter, CutsALongUnitOff)
{
    std::string const unit(40, 'u');
    Bytes const bytes = Encoded({.name = {}, .alias = 1, .timestampMsec = 1, .type = {}, .value = true, .unit = unit});
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 'u'), 31);
}

TEST(MetricWriter, CutsALongTextOff)
{
    Bytes const bytes = Encoded(Datum(1, std::string_view(std::string(300, 'x').c_str())));
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 'x'), 255);
}

TEST(MetricWriter, CutsBetweenTwoCharacters)
{
    std::string const text = std::string(254, 'x') + "\xC3\xA4";
    Bytes const bytes = Encoded(Datum(1, std::string_view(text)));
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 'x'), 254);
    EXPECT_EQ(bytes.back(), 'x');
}

TEST(MetricWriter, LeavesOutTheMetricThatDoesNotFit)
{
    MetricWriter writer(20);
    EXPECT_TRUE(writer.Add(Datum(1, true)));
    Bytes const first(writer.Bytes().begin(), writer.Bytes().end());
    EXPECT_FALSE(writer.Add(Datum(2, 1.5)));
    EXPECT_EQ(Bytes(writer.Bytes().begin(), writer.Bytes().end()), first);
    EXPECT_EQ(writer.Count(), 1U);
    EXPECT_TRUE(writer.Add(Datum(2, false)));
    writer.Clear();
    EXPECT_EQ(writer.Count(), 0U);
    EXPECT_TRUE(writer.Bytes().empty());
}

TEST(MetricWriter, AllocatesNothingInSteadyState)
{
    MetricWriter writer(4096);
    Bytes payload;
    payload.reserve(8192);
    ZuTest::AllocationCounter const counter;
    for (uint64 alias = 0; alias < 20; ++alias)
    {
        writer.Add({.name = "name",
                    .alias = alias,
                    .timestampMsec = 1,
                    .type = DataType::DOUBLE,
                    .value = 2.0,
                    .quality = Quality::BAD,
                    .unit = "mm",
                    .limits = ValueLimits{1, 2}});
    }
    FramePayload(payload, 1, writer.Bytes(), 5);
    EXPECT_EQ(counter.Count(), 0U);
}

TEST(FramePayload, PutsTimestampAndSequenceNumberAroundTheMetrics)
{
    MetricWriter writer(64);
    writer.Add(Datum(1, true));
    Bytes payload = {9, 9, 9};
    FramePayload(payload, 300, writer.Bytes(), 200);
    EXPECT_EQ(payload, (Bytes{0x08, 0xAC, 0x02, 0x12, 7, 0x10, 1, 0x18, 0xAC, 0x02, 0x70, 1, 0x18, 0xC8, 0x01}));
    FramePayload(payload, 1, {}, std::nullopt);
    EXPECT_EQ(payload, (Bytes{0x08, 1}));
}

TEST(MarkHistorical, MarksEachMetricThatHasAKnownAlias)
{
    Bytes const metrics = {0x12, 2, 0x10, 1, 0x12, 4, 0x10, 2, 0x70, 1, 0x12, 3, 0x10, 0x80, 0x01};
    std::vector<uint64> const all = {1, 2, 128};
    Bytes marked;
    EXPECT_EQ(MarkHistorical(marked, metrics, all), 0U);
    EXPECT_EQ(marked, (Bytes{0x12, 4,    0x10, 1,    0x28, 1,    0x12, 6,    0x10, 2, 0x70,
                             1,    0x28, 1,    0x12, 5,    0x10, 0x80, 0x01, 0x28, 1}));
    EXPECT_EQ(MarkHistorical(marked, metrics, std::span(all).subspan(1, 1)), 2U);
    EXPECT_EQ(marked, (Bytes{0x12, 6, 0x10, 2, 0x70, 1, 0x28, 1}));
    EXPECT_EQ(MarkHistorical(marked, metrics, {}), 3U);
    EXPECT_EQ(marked, Bytes{});
    EXPECT_EQ(MarkHistorical(marked, {}, all), 0U);
}

TEST(MarkHistorical, WritesALengthThatGrowsByAByte)
{
    Bytes metrics = {0x12, 127, 0x10, 1};
    metrics.resize(129, 'x');
    Bytes marked;
    EXPECT_EQ(MarkHistorical(marked, metrics, std::vector<uint64>{1}), 0U);
    EXPECT_EQ(marked.size(), 132U);
    EXPECT_EQ(Bytes(marked.begin(), marked.begin() + 5), (Bytes{0x12, 0x81, 0x01, 0x10, 1}));
    EXPECT_EQ(Bytes(marked.end() - 3, marked.end()), (Bytes{'x', 0x28, 1}));
}

TEST(MarkHistorical, RefusesBytesThatAreNoMetricsWithAnAlias)
{
    Bytes marked;
    std::vector<uint64> const aliases = {1};
    for (Bytes const& wrong : {Bytes{0x12}, Bytes{0x12, 0}, Bytes{0x12, 5, 1}, Bytes{0x18, 0}, Bytes{0x12, 0x80},
                               Bytes{0x12, 2, 0x10, 1, 7}, Bytes{0x12, 2, 0x70, 1}, Bytes{0x12, 2, 0x10, 0x80},
                               Bytes{0x12, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x01}})
    {
        EXPECT_EQ(MarkHistorical(marked, wrong, aliases), std::nullopt);
    }
}

} // namespace SparkplugMqtt
