#include "Plugins/AsciiTcp/DataFeed.h"
#include "Support/AllocationCounter.h"

#include <gtest/gtest.h>

#include <string>

namespace AsciiTcp
{

constexpr std::size_t PLENTY = ~std::size_t{0};

class DataFeedTest : public testing::Test
{
protected:
    void Publish(uint64 first, uint64 count)
    {
        for (uint64 i = first; i < first + count; ++i)
        {
            feed.Publish("line " + std::to_string(i) + "\n");
        }
    }

    std::string Read(uint64 expectedMissed = 0, std::size_t limit = PLENTY)
    {
        std::string lines;
        EXPECT_EQ(feed.Read(next, lines, limit), expectedMissed);
        return lines;
    }

    DataFeed feed;
    uint64 next = 0;
};

TEST_F(DataFeedTest, GivesEachLineOnceAndInOrder)
{
    Publish(1, 2);

    EXPECT_EQ(Read(), "line 1\nline 2\n");
    EXPECT_EQ(Read(), "");
    Publish(3, 1);
    EXPECT_EQ(Read(), "line 3\n");
}

TEST_F(DataFeedTest, BeginsBehindTheNewestForWhoComesLate)
{
    Publish(1, 2);
    next = feed.End();

    Publish(3, 1);

    EXPECT_EQ(Read(), "line 3\n");
}

TEST_F(DataFeedTest, AppendsWholeLinesUpToTheLimit)
{
    Publish(1, 3);

    EXPECT_EQ(Read(0, 8), "line 1\nline 2\n");
    EXPECT_EQ(Read(0, 0), "");
    EXPECT_EQ(Read(0, 1), "line 3\n");
}

TEST_F(DataFeedTest, DropsTheOldestBeyondItsNumberOfLines)
{
    Publish(1, DataFeed::MAX_LINES + 5);

    std::string const lines = Read(5);

    EXPECT_TRUE(lines.starts_with("line 6\nline 7\n"));
    EXPECT_TRUE(lines.ends_with("\nline " + std::to_string(DataFeed::MAX_LINES + 5) + "\n"));
}

TEST_F(DataFeedTest, TellsWhatWasMissedAlsoWhenNothingIsTaken)
{
    Publish(1, DataFeed::MAX_LINES + 5);

    EXPECT_EQ(Read(5, 0), "");
    EXPECT_EQ(Read(0, 1), "line 6\n");
}

TEST_F(DataFeedTest, DropsTheOldestBeyondItsBytes)
{
    std::string const large(DataFeed::MAX_BYTES / 2, 'a');
    feed.Publish(large);
    feed.Publish(large);
    feed.Publish("b");

    EXPECT_EQ(Read(1), large + "b");
}

TEST_F(DataFeedTest, KeepsALineThatFillsItAndMissesOneThatIsLonger)
{
    Publish(1, 1);
    feed.Publish(std::string(DataFeed::MAX_BYTES, 'a'));
    EXPECT_EQ(Read(1), std::string(DataFeed::MAX_BYTES, 'a'));

    feed.Publish(std::string(DataFeed::MAX_BYTES + 1, 'a'));
    Publish(2, 1);

    EXPECT_EQ(Read(1), "line 2\n");
}

TEST_F(DataFeedTest, KeepsLinesWholeThatGoRoundItsEnd)
{
    char letter = 'a';
    std::string published;
    std::string read;
    for (std::size_t size = 1; published.size() < 3 * DataFeed::MAX_BYTES; size = size * 7 % 65521)
    {
        letter = letter == 'z' ? 'a' : static_cast<char>(letter + 1);
        std::string const line = std::string(size, letter) + "\n";
        feed.Publish(line);
        published += line;
        EXPECT_EQ(feed.Read(next, read, PLENTY), 0u);
    }

    EXPECT_TRUE(read == published);
}

TEST_F(DataFeedTest, ReadersDoNotDisturbEachOther)
{
    Publish(1, 1);
    uint64 other = 0;
    std::string lines;
    EXPECT_EQ(Read(), "line 1\n");

    EXPECT_EQ(feed.Read(other, lines, PLENTY), 0u);

    EXPECT_EQ(lines, "line 1\n");
}

TEST_F(DataFeedTest, KnowsWhetherAnybodyReads)
{
    EXPECT_FALSE(feed.HasReaders());
    feed.AddReader();
    feed.AddReader();
    feed.RemoveReader();
    EXPECT_TRUE(feed.HasReaders());
    feed.RemoveReader();
    EXPECT_FALSE(feed.HasReaders());
}

TEST_F(DataFeedTest, AllocatesNothingBehindTheFirstLine)
{
    feed.Publish("first\n");
    std::string lines;
    lines.reserve(DataFeed::MAX_BYTES);
    ZuTest::AllocationCounter const counter;

    for (int i = 0; i < 3000; ++i)
    {
        feed.Publish("one line\n");
        lines.clear();
        feed.Read(next, lines, PLENTY);
    }

    EXPECT_EQ(counter.Count(), 0u);
}

} // namespace AsciiTcp
