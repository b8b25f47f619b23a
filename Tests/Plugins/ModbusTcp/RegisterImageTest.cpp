#include "Plugins/ModbusTcp/RegisterImage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace ModbusTcp
{

class RegisterImageTest : public testing::Test
{
protected:
    /// Writes the same number into the registers [first, end).
    void Fill(uint32 first, uint32 end, uint16 value)
    {
        for (uint32 i = first; i < end; ++i)
        {
            image->Edit()[2 * i] = static_cast<uint8>(value & 0xFF);
            image->Edit()[2 * i + 1] = static_cast<uint8>(value >> 8);
        }
    }

    std::vector<uint16> Read(uint16 first, std::size_t count)
    {
        std::vector<uint16> registers(count, 0xAAAA); // not zero: a register left out shows
        image->Read(first, registers);
        return registers;
    }

    using Registers = std::vector<uint16>;

    std::unique_ptr<RegisterImage> image = std::make_unique<RegisterImage>();
};

TEST_F(RegisterImageTest, ReadsZeroBeforeAnythingIsPublished)
{
    EXPECT_EQ(Read(0, 3), (Registers{0, 0, 0}));
    EXPECT_EQ(Read(9997, 3), (Registers{0, 0, 0}));
}

TEST_F(RegisterImageTest, TakesTheLowByteOfARegisterFirst)
{
    image->SetUsedSpan(5, 6);
    image->Edit()[10] = 0x34;
    image->Edit()[11] = 0x12;

    image->Publish();

    EXPECT_EQ(Read(4, 3), (Registers{0, 0x1234, 0}));
}

TEST_F(RegisterImageTest, ShowsNothingOfAnEditBeforeItIsPublished)
{
    image->SetUsedSpan(0, 2);
    Fill(0, 2, 1);
    image->Publish();

    Fill(0, 2, 2);

    EXPECT_EQ(Read(0, 2), (Registers{1, 1}));
    image->Publish();
    EXPECT_EQ(Read(0, 2), (Registers{2, 2}));
}

TEST_F(RegisterImageTest, KeepsWhatALaterEditLeavesAlone)
{
    image->SetUsedSpan(0, 3);
    Fill(0, 3, 7);
    image->Publish();

    Fill(1, 2, 8);
    image->Publish();

    EXPECT_EQ(Read(0, 3), (Registers{7, 8, 7}));
}

TEST_F(RegisterImageTest, ReadsZeroOutsideTheUsedSpanWhateverABufferHeldBefore)
{
    image->SetUsedSpan(0, 8);
    for (uint16 round = 1; round <= 4; ++round) // each of the three buffers has been filled once
    {
        Fill(0, 8, round);
        image->Publish();
        Read(0, 1);
    }

    image->SetUsedSpan(3, 5);
    image->Publish();

    EXPECT_EQ(Read(0, 8), (Registers{0, 0, 0, 4, 4, 0, 0, 0}));
    EXPECT_EQ(Read(4, 1), (Registers{4}));
    EXPECT_EQ(Read(6, 2), (Registers{0, 0}));
}

TEST_F(RegisterImageTest, GivesTheNewestOfSeveralPublishedStates)
{
    image->SetUsedSpan(0, 1);
    for (uint16 value = 1; value <= 10; ++value)
    {
        Fill(0, 1, value);
        image->Publish();
    }

    EXPECT_EQ(Read(0, 1), (Registers{10}));
    EXPECT_EQ(Read(0, 1), (Registers{10}));
}

TEST_F(RegisterImageTest, ReachesTheLastRegister)
{
    image->SetUsedSpan(0, RegisterImage::REGISTER_COUNT);
    Fill(9998, 10000, 0xBEEF);
    image->Publish();

    EXPECT_EQ(Read(9997, 3), (Registers{0, 0xBEEF, 0xBEEF}));
}

TEST_F(RegisterImageTest, NeverMixesTwoStatesInOneReadWhileAnotherThreadPublishes)
{
    constexpr uint16 STATES = 20000;
    image->SetUsedSpan(100, 2100);
    std::atomic<bool> done{false};
    std::thread writer([&] {
        for (uint16 state = 1; state <= STATES; ++state)
        {
            Fill(100, 2100, state);
            image->Publish();
        }
        done = true;
    });

    uint16 last = 0;
    uint64 torn = 0;
    uint64 backwards = 0;
    for (bool lastRound = false; !lastRound;)
    {
        lastRound = done; // read once more after the end
        Registers const seen = Read(100, 2000);
        torn += std::ranges::count_if(seen, [&](uint16 value) { return value != seen.front(); }) != 0 ? 1 : 0;
        backwards += seen.front() < last ? 1 : 0;
        last = seen.front();
    }
    writer.join();

    EXPECT_EQ(torn, 0u);
    EXPECT_EQ(backwards, 0u);
    EXPECT_EQ(last, STATES);
}

} // namespace ModbusTcp
