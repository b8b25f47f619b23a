#include "Plugins/ModbusTcp/Blocks/ResultQueueBlock.h"
#include "Support/Refusal.h"
#include "Tests/Plugins/ModbusTcp/BlockFixture.h"

#include <memory>
#include <vector>

namespace ModbusTcp
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

/// A queue for the sources "a" to "c".
class ResultQueueBlockTest : public BlockFixture
{
protected:
    using Registers = std::vector<uint16>;

    ResultQueueBlockTest()
    {
        queue->SetDepth(3);
    }

    SourceListBlock::Outcome Push(int32 value)
    {
        queue->Take(0, {SourceListBlock::Reading::Measurement{value, 1}, std::nullopt});
        return queue->EndSet();
    }

    Registers Read()
    {
        std::vector<uint8> bytes(2 * ResultQueueBlock::REGISTER_COUNT, 0xAA);
        queue->Encode(bytes);
        Registers registers(ResultQueueBlock::REGISTER_COUNT);
        for (std::size_t i = 0; i < registers.size(); ++i)
        {
            registers[i] = static_cast<uint16>(bytes[2 * i] | bytes[2 * i + 1] << 8);
        }
        return registers;
    }

    Registers Read(std::size_t first, std::size_t count)
    {
        Registers const all = Read();
        return Registers(all.begin() + static_cast<std::ptrdiff_t>(first),
                         all.begin() + static_cast<std::ptrdiff_t>(first + count));
    }

    uint16 Held()
    {
        return Read()[1];
    }

    std::shared_ptr<ResultQueueBlock> queue =
        std::dynamic_pointer_cast<ResultQueueBlock>(Place(ResultQueueBlock::TYPE, 300, "a,b,c"));
};

constexpr uint16 After(uint16 number)
{
    return number == 65535 ? uint16{1} : static_cast<uint16>(number + 1);
}

TEST_F(ResultQueueBlockTest, IsEmptyFirst)
{
    Registers const seen = Read();

    EXPECT_EQ(Read(0, 4), (Registers{0, 0, 0, 0}));
    EXPECT_NE(seen[4], 0); // the session
    EXPECT_EQ(Read(5, 3), (Registers{0, 0, 0}));
    EXPECT_EQ(Read(8, 8), Registers(8, 0xFFFF));
    for (std::size_t i = 16; i < 48; i += 2)
    {
        EXPECT_EQ(Read(i, 2), (Registers{0x8000, 0}));
    }
}

TEST_F(ResultQueueBlockTest, WritesAResultInBothOrders)
{
    queue->Take(0, {SourceListBlock::Reading::Measurement{0x11223344, 1}, std::nullopt});
    queue->Take(1, {std::nullopt, wStamp{0, 0x0102030405060708, 0x1112131415161718, 0, 0}});
    queue->Take(2, {SourceListBlock::Reading::Measurement{-2, 0}, std::nullopt});
    queue->EndSet();

    EXPECT_EQ(Read(2, 1), Registers{1});
    EXPECT_EQ(Read(5, 3), (Registers{0x0001, 0x0005, 0}));
    EXPECT_EQ(Read(8, 8), (Registers{0x0102, 0x0304, 0x0506, 0x0708, 0x1112, 0x1314, 0x1516, 0x1718}));
    EXPECT_EQ(Read(16, 8), (Registers{0x1122, 0x3344, 0x8000, 0, 0xFFFF, 0xFFFE, 0x8000, 0}));
    assembly.ChangeBigEndianSupportedBlocks(false);
    EXPECT_EQ(Read(5, 3), (Registers{0x0001, 0x0005, 0}));
    EXPECT_EQ(Read(8, 4), (Registers{0x0708, 0x0506, 0x0304, 0x0102}));
    EXPECT_EQ(Read(16, 2), (Registers{0x3344, 0x1122}));
}

TEST_F(ResultQueueBlockTest, HoldsTheOldestResultUntilItsNumberIsAcknowledged)
{
    Push(1);
    Push(2);
    uint16 const number = Held();
    EXPECT_EQ(Read(2, 1), Registers{2});
    EXPECT_EQ(Read(17, 1), Registers{1});

    EXPECT_TRUE(queue->Acknowledge(number));

    EXPECT_EQ(Read(0, 3), (Registers{number, After(number), 1}));
    EXPECT_EQ(Read(17, 1), Registers{2});
    EXPECT_TRUE(queue->Acknowledge(After(number)));
    EXPECT_EQ(Read(0, 4), (Registers{After(number), 0, 0, 0}));
    EXPECT_EQ(Read(16, 2), (Registers{0x8000, 0}));
}

TEST_F(ResultQueueBlockTest, TakesARepeatedAcknowledgementAndZeroWithoutEffect)
{
    Push(1);
    Push(2);
    uint16 const number = Held();
    EXPECT_TRUE(queue->Acknowledge(0));
    EXPECT_EQ(Held(), number);
    queue->Acknowledge(number);

    EXPECT_TRUE(queue->Acknowledge(number));
    EXPECT_TRUE(queue->Acknowledge(0));

    EXPECT_EQ(Read(0, 3), (Registers{number, After(number), 1}));
}

TEST_F(ResultQueueBlockTest, RefusesOtherNumbers)
{
    Push(1);
    Push(2);
    uint16 const number = Held();

    EXPECT_FALSE(queue->Acknowledge(After(number))); // it waits, but was not shown yet
    EXPECT_FALSE(queue->Acknowledge(static_cast<uint16>(number + 1000)));

    EXPECT_EQ(Read(0, 3), (Registers{0, number, 2}));
}

TEST_F(ResultQueueBlockTest, LosesTheNewestWhenFullAndTellsWhere)
{
    Push(1);
    Push(2);
    EXPECT_FALSE(Push(3).isLost);
    EXPECT_FALSE(queue->IsOverflowing());
    EXPECT_TRUE(Push(4).isLost);
    EXPECT_TRUE(Push(5).isLost);
    EXPECT_TRUE(queue->IsOverflowing());
    uint16 const number = Held();
    EXPECT_EQ(Read(2, 2), (Registers{3, 2}));

    queue->Acknowledge(number);
    EXPECT_FALSE(Push(6).isLost);

    std::vector<int> values;
    std::vector<int> lostBefore;
    for (uint16 held = Held(); held != 0; held = Held())
    {
        EXPECT_TRUE(queue->IsOverflowing());
        values.push_back(Read()[17]);
        lostBefore.push_back(Read()[7]);
        queue->Acknowledge(held);
    }
    EXPECT_EQ(values, (std::vector<int>{2, 3, 6}));
    EXPECT_EQ(lostBefore, (std::vector<int>{0, 0, 2}));
    EXPECT_FALSE(queue->IsOverflowing());
    EXPECT_EQ(Read(3, 1), Registers{2});
}

TEST_F(ResultQueueBlockTest, CountsNumbersFrom1AgainAfter65535)
{
    uint16 last = 0;
    for (int i = 0; i < 70000; ++i)
    {
        Push(i);
        uint16 const number = Held();
        ASSERT_NE(number, 0);
        ASSERT_TRUE(last == 0 || number == After(last)) << number << " after " << last;
        ASSERT_TRUE(queue->Acknowledge(number));
        last = number;
    }
}

TEST_F(ResultQueueBlockTest, CountsAtMost65535LostBeforeAResult)
{
    for (int i = 0; i < 3 + 65540; ++i)
    {
        Push(i);
    }
    EXPECT_EQ(Read(3, 1), Registers{4}); // modulo 65536
    for (int i = 0; i < 3; ++i)
    {
        queue->Acknowledge(Held());
    }

    Push(7);

    EXPECT_EQ(Read(7, 1), Registers{65535});
}

TEST_F(ResultQueueBlockTest, QueuesNoSetWithoutItsSources)
{
    EXPECT_FALSE(queue->EndSet().isChanged);
    EXPECT_EQ(Held(), 0);

    queue->Take(0, {}); // a missing result is one, too
    EXPECT_TRUE(queue->EndSet().isChanged);
    EXPECT_EQ(Read(2, 1), Registers{1});
    EXPECT_EQ(Read(5, 2), (Registers{0, 0}));
}

TEST_F(ResultQueueBlockTest, KeepsItsResultsWhenAScanBegins)
{
    Push(1);

    queue->Blank();

    EXPECT_EQ(Read(2, 1), Registers{1});
}

TEST_F(ResultQueueBlockTest, KeepsTheOldestWhenItsDepthChanges)
{
    Push(1);
    Push(2);
    Push(3);
    queue->Acknowledge(Held());
    Push(4);
    uint16 const number = Held();

    EXPECT_EQ(queue->SetDepth(5), 0u);
    EXPECT_EQ(Read(1, 3), (Registers{number, 3, 0}));
    EXPECT_EQ(queue->SetDepth(1), 2u);
    EXPECT_EQ(Read(1, 3), (Registers{number, 1, 2}));
    EXPECT_EQ(Read(17, 1), Registers{2});
    EXPECT_TRUE(Push(5).isLost);
    EXPECT_EQ(queue->SetDepth(1), 0u);
    EXPECT_EQ(queue->SetDepth(0), 0u); // as 1
}

TEST_F(ResultQueueBlockTest, ForgetsResultsOfOtherSourcesAndBeginsASession)
{
    Push(1);
    Push(2);
    uint16 const number = Held();
    uint16 const session = Read()[4];
    queue->Acknowledge(number);
    queue->Take(0, {}); // of a set that is not complete
    EXPECT_EQ(queue->Follow("a,b,c"), 0u);

    EXPECT_EQ(queue->Follow("c,b,a"), 1u);

    EXPECT_FALSE(queue->EndSet().isChanged);
    EXPECT_EQ(Read(0, 4), (Registers{0, 0, 0, 1}));
    EXPECT_NE(Read()[4], session);
    EXPECT_NE(Read()[4], 0);
    Push(3);
    EXPECT_EQ(Held(), After(After(number)));
    EXPECT_EQ(Read(7, 1), Registers{1});
}

TEST_F(ResultQueueBlockTest, ReadsAWrittenNumberInTheOrderOfTheService)
{
    uint16 number = 0;
    uint8 const bytes[2] = {0x12, 0x34};

    queue->Deserialize(&number, sizeof number, bytes, sizeof bytes);
    EXPECT_EQ(number, 0x1234);
    assembly.ChangeBigEndianSupportedBlocks(false);
    queue->Deserialize(&number, sizeof number, bytes, sizeof bytes);
    EXPECT_EQ(number, 0x3412);
    Refusal const refusal{-992, "Insufficient buffer size available for data deserialization."};
    EXPECT_EQ(RefusalOf([&] { queue->Deserialize(&number, 1, bytes, 2); }), refusal);
    EXPECT_EQ(RefusalOf([&] { queue->Deserialize(&number, 2, bytes, 1); }), refusal);
    EXPECT_EQ(RefusalOf([&] { queue->Deserialize(&number, 2, nullptr, 2); }), refusal);
    EXPECT_EQ(RefusalOf([&] { queue->Deserialize(nullptr, 2, bytes, 2); }), refusal);
}

} // namespace ModbusTcp
