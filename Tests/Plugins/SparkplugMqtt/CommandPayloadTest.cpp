#include "Plugins/SparkplugMqtt/CommandPayload.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace SparkplugMqtt
{

using Bytes = std::vector<uint8>;
using Metrics = std::vector<CommandMetric>;

namespace
{

/// A payload with one metric of these bytes, up to 127.
Bytes WithMetric(Bytes const& metric)
{
    Bytes payload = {0x08, 1, 0x12, static_cast<uint8>(metric.size())};
    payload.insert(payload.end(), metric.begin(), metric.end());
    return payload;
}

Bytes Joined(Bytes first, Bytes const& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// A payload with one metric that has one text of 128 to 16000 bytes.
Bytes WithText(uint8 tag, Bytes const& text)
{
    auto const low = [](std::size_t length) { return static_cast<uint8>((length & 0x7F) | 0x80); };
    auto const high = [](std::size_t length) { return static_cast<uint8>(length >> 7); };
    std::size_t const length = text.size();
    return Joined({0x12, low(length + 3), high(length + 3), tag, low(length), high(length)}, text);
}

} // namespace

TEST(DecodeCommand, TakesEachKindOfValue)
{
    struct Case
    {
        Bytes bytes;
        CommandMetric metric;
    };
    Bytes const name = {0x0A, 1, 'a'};
    Case const cases[] = {
        {{0x70, 1}, {"a", {}, true}},
        {{0x50, 7}, {"a", {}, uint64{7}}},
        {{0x58, 0x80, 0x01}, {"a", {}, uint64{128}}},
        {{0x65, 0, 0, 0xC0, 0x3F}, {"a", {}, 1.5}},
        {{0x69, 0, 0, 0, 0, 0, 0, 0xF8, 0x3F}, {"a", {}, 1.5}},
        {{0x7A, 2, 'j', '1'}, {"a", {}, "j1"}},
        {{0x10, 9, 0x38, 1}, {"a", 9, std::monostate{}}},
        {{0x82, 0x01, 2, 1, 2}, {"a", {}, std::monostate{}}},    // a value of bytes
        {{0x8A, 0x01, 2, 0x08, 0}, {"a", {}, std::monostate{}}}, // a data set
        {{0x50, 7, 0x38, 1}, {"a", {}, std::monostate{}}},       // null, whatever the value
        {{}, {"a", {}, std::monostate{}}},
    };
    for (Case const& one : cases)
    {
        Metrics metrics;
        ASSERT_TRUE(DecodeCommand(WithMetric(Joined(name, one.bytes)), metrics));
        EXPECT_EQ(metrics, Metrics{one.metric});
    }
}

TEST(DecodeCommand, TakesPayloadsWithoutMetrics)
{
    Metrics metrics = {CommandMetric{}};
    EXPECT_TRUE(DecodeCommand(Bytes{}, metrics));
    EXPECT_EQ(metrics, Metrics{});
    EXPECT_TRUE(DecodeCommand(Bytes{0x08, 5, 0x18, 3, 0x22, 1, 'u', 0x2A, 1, 'b'}, metrics));
}

TEST(DecodeCommand, RefusesDamagedPayloads)
{
    Bytes const wrong[] = {
        {0x12},                  // no length
        {0x12, 5, 0x0A},         // cut off
        {0x12, 3, 0x0A, 9, 'a'}, // a name that is longer than its metric
        {0x12, 2, 0x0A, 0xFF},   // a length without end
        {0x08},                  // no number
        {0x08, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x01},
        {0x12, 3, 0x6F, 0, 0}, // no wire type
        {0x12, 2, 0x51, 0},    // an integer in 8 bytes
        {'G', 'E', 'T', ' ', '/'},
    };
    for (Bytes const& payload : wrong)
    {
        Metrics metrics = {CommandMetric{}};
        EXPECT_FALSE(DecodeCommand(payload, metrics));
        EXPECT_EQ(metrics, Metrics{});
    }
}

TEST(DecodeCommand, RefusesWhatIsBeyondTheLimits)
{
    auto const name = [](std::size_t length) { return WithText(0x0A, Bytes(length, 'n')); };
    auto const text = [](std::size_t length) { return WithText(0x7A, Bytes(length, 't')); };
    auto const metrics = [](std::size_t count) {
        Bytes payload;
        for (std::size_t i = 0; i < count; ++i)
        {
            payload = Joined(payload, {0x12, 0});
        }
        return payload;
    };
    auto const padded = [](std::size_t size) {
        Bytes payload;
        for (std::size_t i = 0; i < size; i += 2)
        {
            payload = Joined(payload, {0x18, 0});
        }
        return payload;
    };
    Metrics decoded;
    EXPECT_TRUE(DecodeCommand(name(CommandLimits::LONGEST_NAME), decoded));
    EXPECT_EQ(decoded.at(0).name.size(), CommandLimits::LONGEST_NAME);
    EXPECT_FALSE(DecodeCommand(name(CommandLimits::LONGEST_NAME + 1), decoded));
    EXPECT_TRUE(DecodeCommand(text(CommandLimits::LONGEST_TEXT), decoded));
    EXPECT_FALSE(DecodeCommand(text(CommandLimits::LONGEST_TEXT + 1), decoded));
    EXPECT_TRUE(DecodeCommand(metrics(CommandLimits::MOST_METRICS), decoded));
    EXPECT_EQ(decoded.size(), CommandLimits::MOST_METRICS);
    EXPECT_FALSE(DecodeCommand(metrics(CommandLimits::MOST_METRICS + 1), decoded));
    EXPECT_TRUE(DecodeCommand(padded(CommandLimits::MOST_BYTES), decoded));
    EXPECT_FALSE(DecodeCommand(padded(CommandLimits::MOST_BYTES + 2), decoded));
}

} // namespace SparkplugMqtt
