#include "ZuApi/Threads/MsgQueue.h"

#include "ZuApi/Exception.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace ZuTest
{

struct Outer
{
    struct Record
    {
    };
};

template <typename T>
struct Holder
{
};

namespace
{

struct Hidden
{
};

/// A record that counts its destruction.
struct Noted
{
    Noted(int givenNumber, std::atomic<int>& endedRecords) : number(givenNumber), ended(endedRecords)
    {
    }

    ~Noted()
    {
        ++ended;
    }

    Noted(Noted const&) = delete;
    Noted& operator=(Noted const&) = delete;

    int number;
    std::atomic<int>& ended;
};

} // namespace

} // namespace ZuTest

namespace Zu
{

using Internal::MsgQueueLabel;
using ZuTest::Noted;

class MsgQueueTest : public testing::Test
{
protected:
    std::unique_ptr<Noted> Make(int number)
    {
        return std::make_unique<Noted>(number, ended);
    }

    /// Expects an operation to throw this status under this label, with no text.
    template <typename Operation>
    void ExpectThrow(Operation operation, int32 status, char const* label)
    {
        try
        {
            operation();
            ADD_FAILURE() << "threw nothing";
        }
        catch (Exception const& exception)
        {
            EXPECT_EQ(exception.Status(), status);
            EXPECT_STREQ(exception.Function(), label);
            EXPECT_STREQ(exception.what(), "");
        }
    }

    std::atomic<int> ended{0};
    MsgQueue<Noted> queue;
};

TEST_F(MsgQueueTest, GivesRecordsInOrderOfAddition)
{
    queue.Add(Make(1));
    queue.Add(Make(2));

    std::unique_ptr<Noted> record;
    for (int const expected : {1, 2})
    {
        ASSERT_EQ(queue.Remove(record, 0), Status::SUCCESS);
        EXPECT_EQ(record->number, expected);
    }

    EXPECT_EQ(ended, 1); // the second record replaces the first, which is destroyed
}

TEST_F(MsgQueueTest, GivesTheTimeOutAndLeavesTheRecordAlone)
{
    auto record = Make(7);

    EXPECT_EQ(queue.Remove(record, 0), Status::TIME_OUT);
    EXPECT_EQ(queue.Remove(record, 1'000), Status::TIME_OUT);

    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->number, 7);
}

TEST_F(MsgQueueTest, FreesWhatItRefusesAtTheMaximum)
{
    queue.SetMaxCount(1);
    queue.Add(Make(1));

    ExpectThrow([this] { queue.Add(Make(2)); }, Status::FULL, "Zu::MsgQueue<struct ZuTest::Noted>::Add");

    EXPECT_EQ(ended, 1);
    std::unique_ptr<Noted> record;
    ASSERT_EQ(queue.Remove(record, 0), Status::SUCCESS);
    EXPECT_EQ(record->number, 1);
}

TEST_F(MsgQueueTest, RefusesNullAndAMaximumOfNone)
{
    ExpectThrow([this] { queue.Add(nullptr); }, Status::BAD_ARGUMENT, "Zu::MsgQueue<struct ZuTest::Noted>::Add");
    ExpectThrow([this] { queue.SetMaxCount(0); }, Status::BAD_ARGUMENT,
                "Zu::MsgQueue<struct ZuTest::Noted>::SetMaxCount");
}

TEST_F(MsgQueueTest, FreesEveryRecordWhenItIsCleared)
{
    queue.Add(Make(1));
    queue.Add(Make(2));

    queue.Clear();

    EXPECT_EQ(ended, 2);
    std::unique_ptr<Noted> record;
    EXPECT_EQ(queue.Remove(record, 0), Status::TIME_OUT);
}

TEST_F(MsgQueueTest, FreesWhatIsLeftAtItsEnd)
{
    {
        MsgQueue<Noted> scoped;
        scoped.Add(Make(1));
    }

    EXPECT_EQ(ended, 1);
}

TEST_F(MsgQueueTest, CarriesRecordsBetweenThreads)
{
    constexpr int COUNT = 1000;
    std::thread writer([this] {
        for (int number = 0; number < COUNT; ++number)
        {
            queue.Add(Make(number));
        }
    });

    std::unique_ptr<Noted> record;
    for (int number = 0; number < COUNT; ++number)
    {
        ASSERT_EQ(queue.Remove(record, wTIMEOUT_INFINITE), Status::SUCCESS);
        EXPECT_EQ(record->number, number);
    }
    writer.join();
    record.reset();

    EXPECT_EQ(ended, COUNT);
}

TEST(MsgQueueLabel, NamesTheRecordInFull)
{
    EXPECT_STREQ(MsgQueueLabel::Of<ZuTest::Outer::Record>("MsgQueue").text,
                 "Zu::MsgQueue<struct ZuTest::Outer::Record>::MsgQueue");
    EXPECT_STREQ(MsgQueueLabel::Of<ZuTest::Hidden>("Clear").text, "Zu::MsgQueue<struct ZuTest::Hidden>::Clear");
    EXPECT_STREQ(MsgQueueLabel::Of<ZuTest::Holder<ZuTest::Hidden>>("Clear").text,
                 "Zu::MsgQueue<struct ZuTest::Holder<ZuTest::Hidden>>::Clear");
}

} // namespace Zu
