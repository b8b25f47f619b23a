#include "Host/Http/BodyBuffer.h"

#include <gtest/gtest.h>

namespace ZuHost
{

class BodyBufferTest : public testing::Test
{
protected:
    std::function<void()> Count()
    {
        return [this] { ++wakes; };
    }

    int wakes = 0;
};

TEST_F(BodyBufferTest, PassesEachPartAsAChunk)
{
    BodyBuffer buffer(true, Count());
    EXPECT_TRUE(buffer.IsReady());
    buffer.Send("0123456789abcdef");
    buffer.Send("x");
    EXPECT_FALSE(buffer.IsReady());
    EXPECT_EQ(wakes, 1);

    BodyBuffer::Piece const piece = buffer.Take();

    EXPECT_EQ(piece.bytes, "10\r\n0123456789abcdef\r\n1\r\nx\r\n");
    EXPECT_FALSE(piece.isLast);
    EXPECT_TRUE(buffer.IsReady());
    buffer.Send("");
    EXPECT_EQ(buffer.Take().bytes, ""); // an empty chunk would end the body
    EXPECT_EQ(wakes, 1);
}

TEST_F(BodyBufferTest, PassesPartsAsTheyAreToOldClients)
{
    BodyBuffer buffer(false, Count());
    buffer.Send("ab");
    buffer.Send("c");
    buffer.End();

    BodyBuffer::Piece const piece = buffer.Take();

    EXPECT_EQ(piece.bytes, "abc");
    EXPECT_TRUE(piece.isLast);
}

TEST_F(BodyBufferTest, EndsWithTheLastChunk)
{
    BodyBuffer buffer(true, Count());
    buffer.Send("a");
    EXPECT_TRUE(buffer.IsOpen());
    buffer.End();
    EXPECT_FALSE(buffer.IsOpen());
    buffer.End();
    buffer.Send("late");

    BodyBuffer::Piece const piece = buffer.Take();

    EXPECT_EQ(piece.bytes, "1\r\na\r\n0\r\n\r\n");
    EXPECT_TRUE(piece.isLast);
    EXPECT_EQ(wakes, 1);
}

TEST_F(BodyBufferTest, TakesNothingForAClientThatIsGone)
{
    BodyBuffer buffer(true, Count());
    buffer.Send("a");
    buffer.Close();
    EXPECT_FALSE(buffer.IsOpen());
    buffer.Send("b");
    buffer.End();

    EXPECT_EQ(buffer.Take().bytes, "");
}

TEST_F(BodyBufferTest, WakesOnceForTheEndAlone)
{
    BodyBuffer buffer(true, Count());
    buffer.End();
    EXPECT_EQ(wakes, 1);
    EXPECT_TRUE(buffer.Take().isLast);
}

} // namespace ZuHost
