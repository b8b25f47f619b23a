#include "Plugins/SparkplugMqtt/HistoryStore.h"
#include "Support/MountedFolder.h"
#include "Support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace SparkplugMqtt
{

using Bytes = std::vector<uint8>;

class HistoryStoreTest : public testing::Test
{
protected:
    static constexpr uint64 RETENTION = 45'000'000;

    void Open(std::string const& folder = "", uint64 mostBytes = 1'000'000)
    {
        store.reset(); // first: the file has one user
        store.emplace(folder, HistoryStore::Limits{mostBytes, RETENTION});
    }

    void Add(uint8 content, bool isSent = false)
    {
        store->Add(Bytes{content}, isSent, now);
    }

    /// The contents of all samples that are not sent; they count as sent now.
    Bytes SendAll()
    {
        Bytes contents;
        Bytes metrics;
        while (store->ReadUnsent(metrics))
        {
            contents.push_back(metrics.at(0));
            store->NoteSent(now);
        }
        return contents;
    }

    ZuTest::ScratchFolder scratch;
    uint64 now = 1'000'000;
    std::optional<HistoryStore> store;
};

TEST_F(HistoryStoreTest, GivesUnsentSamplesInTheirOrder)
{
    Open();
    Add(1);
    Add(2, true);
    Add(3);
    EXPECT_EQ(store->UnsentCount(), 2U);
    EXPECT_EQ(SendAll(), (Bytes{1, 3}));
    EXPECT_EQ(store->UnsentCount(), 0U);
    EXPECT_EQ(store->Count(), 3U);
    EXPECT_EQ(SendAll(), Bytes{});
}

TEST_F(HistoryStoreTest, ReadsASampleAgainUntilItIsSent)
{
    Open();
    Add(1);
    Bytes metrics;
    EXPECT_TRUE(store->ReadUnsent(metrics));
    EXPECT_TRUE(store->ReadUnsent(metrics));
    EXPECT_EQ(metrics, Bytes{1});
}

TEST_F(HistoryStoreTest, KeepsWhatWasSentForTheRetentionTime)
{
    Open();
    Add(1, true);
    now += RETENTION - 1;
    Add(2, true);
    store->Work(now);
    EXPECT_EQ(store->Count(), 2U);
    now += 1;
    store->Work(now);
    EXPECT_EQ(store->Count(), 1U);
    store->LinkLost(); // what was sent within the retention time may not have arrived
    EXPECT_EQ(SendAll(), Bytes{2});
    EXPECT_EQ(store->LostCount(), 0U);
}

TEST_F(HistoryStoreTest, SendsAgainWhatWasSentBeforeASecondLoss)
{
    Open();
    Add(1);
    Add(2);
    EXPECT_EQ(SendAll(), (Bytes{1, 2}));
    Add(3, true);
    store->LinkLost();
    EXPECT_EQ(SendAll(), (Bytes{1, 2, 3}));
}

TEST_F(HistoryStoreTest, TheOldestGoFirstWhenItIsFullAndAreCounted)
{
    Open("", 3 * (HistoryStore::ROW_BYTES + 1));
    Add(1, true);
    Add(2);
    Add(3);
    Add(4);
    EXPECT_EQ(store->LostCount(), 0U); // the first one was sent
    Add(5);
    EXPECT_EQ(store->LostCount(), 1U);
    EXPECT_EQ(store->Bytes(), 3 * (HistoryStore::ROW_BYTES + 1));
    EXPECT_EQ(SendAll(), (Bytes{3, 4, 5}));
}

TEST_F(HistoryStoreTest, ASampleThatIsLargerThanTheStoreIsLost)
{
    Open("", 100);
    store->Add(Bytes(200, 1), false, now);
    EXPECT_EQ(store->LostCount(), 1U);
    EXPECT_EQ(store->Count(), 0U);
}

TEST_F(HistoryStoreTest, AFileKeepsItsSamplesForTheNextStart)
{
    Open(scratch.path.string());
    Add(1, true);
    Add(2);
    EXPECT_EQ(store->Failure(), "");
    Open(scratch.path.string());
    EXPECT_EQ(store->UnsentCount(), 2U); // nothing says that the first one has arrived
    Add(3);
    EXPECT_EQ(SendAll(), (Bytes{1, 2, 3}));
    now += RETENTION;
    store->Work(now);
    Open(scratch.path.string());
    EXPECT_EQ(store->Count(), 0U);
    Add(4);
    EXPECT_EQ(SendAll(), Bytes{4});
}

TEST_F(HistoryStoreTest, AnotherUserOfTheFileIsAFailureAndGetsMemory)
{
    Open(scratch.path.string());
    Add(1);
    store->Work(now);
    HistoryStore second(scratch.path.string(), {1'000'000, RETENTION});
    EXPECT_EQ(second.Failure(), scratch.path.string() + "/sparkplug.db: database is locked");
    second.Add(Bytes{9}, false, now);
    now += HistoryStore::COMMIT_USEC;
    second.Work(now);
    EXPECT_EQ(second.UnsentCount(), 1U);
    EXPECT_NE(second.Failure(), ""); // memory is no disk
}

TEST_F(HistoryStoreTest, AFolderThatIsNotThereIsAFailure)
{
    Open(scratch.path.string() + "/nowhere");
    EXPECT_EQ(store->Failure(), scratch.path.string() + "/nowhere/sparkplug.db: unable to open database file");
    Add(1);
    EXPECT_EQ(SendAll(), Bytes{1});
}

TEST_F(HistoryStoreTest, AFileThatIsNoDatabaseIsAFailureAndStaysAsItIs)
{
    std::string const path = scratch.path.string() + "/sparkplug.db";
    std::ofstream(path) << std::string(5000, 'x');
    Open(scratch.path.string());
    EXPECT_EQ(store->Failure(), path + ": file is not a database");
    Add(1);
    EXPECT_EQ(SendAll(), Bytes{1});
    store.reset();
    std::ifstream file(path);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), std::string(5000, 'x'));
}

TEST_F(HistoryStoreTest, AFullDiskIsAFailureUntilThereIsRoomAgain)
{
    ZuTest::MountedFolder const disk("256k");
    if (!disk.IsMounted())
    {
        GTEST_SKIP() << "this process may not mount a file system";
    }
    Open(disk.Path().string());
    std::ofstream(disk.Path() / "filler") << std::string(150'000, 'x');
    for (int i = 0; i < 200; ++i)
    {
        store->Add(Bytes(4000, static_cast<uint8>(i)), false, now);
        now += HistoryStore::COMMIT_USEC;
        store->Work(now);
    }
    EXPECT_EQ(store->Failure(), disk.Path().string() + "/sparkplug.db: database or disk is full");
    SendAll();
    EXPECT_GT(store->LostCount(), 0U);
    std::filesystem::remove(disk.Path() / "filler");
    now += RETENTION;
    store->Work(now);
    Add(1);
    now += HistoryStore::COMMIT_USEC;
    store->Work(now);
    EXPECT_EQ(store->Failure(), "");
    EXPECT_EQ(SendAll(), Bytes{1});
}

} // namespace SparkplugMqtt
