#include "Host/Http/WrongTokens.h"

#include "Host/Http/ClientSource.h"
#include "Support/RecordingSink.h"

#include <gtest/gtest.h>

namespace ZuHost
{

using boost::asio::ip::make_address;

class WrongTokensTest : public testing::Test
{
protected:
    static constexpr uint64 SECOND = 1'000'000;
    static constexpr uint64 NOW = 100 * SECOND;

    WrongTokens tokens;
    boost::asio::ip::address const one = make_address("192.0.2.1");
    boost::asio::ip::address const other = make_address("192.0.2.2");
};

TEST_F(WrongTokensTest, SpacesTheRefusalsToOneSource)
{
    for (uint64 i = 0; i < WrongTokens::PROMPT_REFUSALS; ++i)
    {
        EXPECT_EQ(tokens.Note(one, NOW), 0U) << i;
    }
    EXPECT_EQ(tokens.Note(one, NOW), SECOND);
    EXPECT_EQ(tokens.Note(one, NOW), 2 * SECOND);
    EXPECT_EQ(tokens.Note(other, NOW), 0U);
    EXPECT_EQ(tokens.Note(one, NOW + 2 * SECOND), SECOND);
    EXPECT_EQ(tokens.Note(one, NOW + 9 * SECOND), 0U) << "after a while";
    EXPECT_EQ(tokens.Count(), 10U);
}

TEST_F(WrongTokensTest, DelaysNoRefusalForLong)
{
    for (unsigned i = 0; i < 100; ++i)
    {
        tokens.Note(one, NOW);
    }
    EXPECT_EQ(tokens.Note(one, NOW), 10 * SECOND);
}

TEST_F(WrongTokensTest, RemembersABoundedNumberOfSources)
{
    for (uint32 i = 0; i < WrongTokens::MAX_SOURCES; ++i)
    {
        EXPECT_EQ(tokens.Note(boost::asio::ip::address_v4(0x0A000000U + i), NOW), 0U);
    }
    for (uint64 i = 0; i < WrongTokens::PROMPT_REFUSALS; ++i)
    {
        EXPECT_EQ(tokens.Note(boost::asio::ip::address_v4(0x0B000000U + static_cast<uint32>(i)), NOW), 0U);
    }

    EXPECT_EQ(tokens.Note(one, NOW), SECOND) << "it shares a place with the last ones";
    EXPECT_EQ(tokens.Note(one, NOW + 20 * SECOND), 0U) << "the first ones are forgotten";
}

TEST_F(WrongTokensTest, LogsOneLineAMinute)
{
    ZuTest::LogRecorder const log;
    for (uint64 i = 0; i < 1000; ++i)
    {
        tokens.Note(i % 2 == 0 ? one : other, NOW + i);
    }
    EXPECT_EQ(log.Lines().size(), 1U);
    EXPECT_EQ(log.CountOfText("The REST service has refused 1 wrong tokens, the last one from 192.0.2.1"), 1U);

    tokens.Note(other, NOW + 60 * SECOND);

    EXPECT_EQ(log.Lines().size(), 2U);
    EXPECT_EQ(log.CountOfText("The REST service has refused 1001 wrong tokens, the last one from 192.0.2.2"), 1U);
}

TEST(ClientSource, IsTheNetworkOfAVersion6Address)
{
    EXPECT_EQ(ClientSource(make_address("192.0.2.1")), make_address("192.0.2.1"));
    EXPECT_EQ(ClientSource(make_address("::ffff:192.0.2.1")), make_address("192.0.2.1"));
    EXPECT_EQ(ClientSource(make_address("2001:db8:1:2:3:4:5:6")), make_address("2001:db8:1:2::"));
}

} // namespace ZuHost
