#include "Host/Audit/TrailFile.h"

#include "Host/Audit/Sha256.h"
#include "Host/Store/ForgetfulDisk.h"
#include "Host/Store/SqliteFile.h"
#include "Support/Refusal.h"
#include "Support/ScratchFolder.h"
#include "ZuApi/Exception.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <sys/stat.h>

namespace ZuHost
{

namespace
{

constexpr int64 DAY_USEC = 86'400'000'000;
constexpr TrailLimits FOR_EVER{.days = 100'000};

int64 NowUsec()
{
    auto const now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

TrailRecord Record(std::string what, int64 timeUsec = 0)
{
    TrailRecord record;
    record.timeUsec = timeUsec == 0 ? NowUsec() : timeUsec;
    record.monotonicUsec = 7;
    record.entry = {"user anna", "https 192.0.2.7", std::move(what), "", R"({"a":1})", "200"};
    return record;
}

std::vector<TrailRecord> Records(std::size_t count, int64 timeUsec = 0)
{
    std::vector<TrailRecord> records;
    for (std::size_t i = 0; i < count; ++i)
    {
        records.push_back(Record("do " + std::to_string(i), timeUsec));
    }
    return records;
}

class TrailFileTest : public testing::Test
{
protected:
    void Append(TrailFile& trail, std::vector<TrailRecord> records)
    {
        trail.Append(records);
    }

    static std::vector<std::string> NamesIn(TrailFile const& trail)
    {
        std::vector<std::string> names;
        for (TrailRecord const& record : trail.Read({.limit = 10'000}))
        {
            names.push_back(record.entry.what);
        }
        return names;
    }

    void Run(char const* statement)
    {
        SqliteFile(path, SqliteFile::Access::WRITE).Run(statement);
    }

    ZuTest::ScratchFolder folder;
    std::filesystem::path const path = folder / "audit.zplog";
};

using Names = std::vector<std::string>;

} // namespace

TEST_F(TrailFileTest, KeepsEntriesWithNumbersAndHashes)
{
    TrailFile trail(path, FOR_EVER);
    std::vector<TrailRecord> records{Record("first", 1'000'001), Record("second", 2'000'000)};
    records[1].count = 3;

    trail.Append(records);

    std::vector<TrailRecord> const read = trail.Read({});
    ASSERT_EQ(read.size(), 2u);
    EXPECT_EQ(read[0].id, 1);
    EXPECT_EQ(read[0].time, "1970-01-01T00:00:01.000001Z");
    EXPECT_EQ(read[0].monotonicUsec, 7u);
    EXPECT_EQ(read[0].entry.who, "user anna");
    EXPECT_EQ(read[0].entry.from, "https 192.0.2.7");
    EXPECT_EQ(read[0].entry.after, R"({"a":1})");
    EXPECT_EQ(read[0].entry.result, "200");
    EXPECT_EQ(read[0].hash, Sha256Hex(std::string(64, '0') + "1:1,27:1970-01-01T00:00:01.000001Z,1:7,9:user anna,"
                                                             "15:https 192.0.2.7,5:first,0:,7:{\"a\":1},3:200,1:1,"));
    EXPECT_EQ(read[1].id, 2);
    EXPECT_EQ(read[1].count, 3u);
    EXPECT_EQ(read[1].hash, TrailFile::HashOf(read[0].hash, read[1]));
    EXPECT_EQ(trail.LastId(), 2);
}

TEST_F(TrailFileTest, BelongsToItsOwnerAlone)
{
    TrailFile trail(path);
    Append(trail, Records(1));

    struct stat state = {};
    ASSERT_EQ(stat(path.c_str(), &state), 0);
    EXPECT_EQ(state.st_mode & 0777, 0600u);
}

TEST_F(TrailFileTest, GoesOnWithTheChainOfAnEarlierRun)
{
    {
        TrailFile first(path);
        Append(first, Records(3));
    }
    TrailFile second(path);
    Append(second, Records(2));

    TrailFile::Chain const chain = second.Check();
    EXPECT_EQ(chain.fault, "");
    EXPECT_EQ(chain.entries, 5u);
    EXPECT_EQ(chain.firstId, 1);
    EXPECT_EQ(chain.lastId, 5);
    EXPECT_EQ(chain.lastHash, second.Read({.after = 4}).at(0).hash);
}

TEST_F(TrailFileTest, HasNoEntriesWithoutAFile)
{
    TrailFile const trail(path);

    EXPECT_EQ(trail.Read({}).size(), 0u);
    EXPECT_EQ(trail.LastId(), 0);
    EXPECT_FALSE(trail.LastOf("start", "stop").has_value());
    EXPECT_EQ(ZuTest::RefusalOf([&] { trail.Check(); }).status, Zu::Status::NOT_FOUND);
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(TrailFileTest, HasNoEntriesInAForeignDatabase)
{
    SqliteFile(path, SqliteFile::Access::CREATE).Run("CREATE TABLE other (id INTEGER)");
    TrailFile const trail(path);

    EXPECT_EQ(trail.Read({}).size(), 0u);
    EXPECT_EQ(trail.LastId(), 0);
    EXPECT_FALSE(trail.LastOf("start", "stop").has_value());
    EXPECT_EQ(trail.Check().fault, "It is not the file of a trail");
}

TEST_F(TrailFileTest, ReadsByFilters)
{
    TrailFile trail(path, FOR_EVER);
    std::vector<TrailRecord> records{Record("PUT /a", 1'000'000), Record("PUT /b", 2'000'000),
                                     Record("login", 3'000'000)};
    records[2].entry.who = "user bob";
    records[1].entry.from = "http 127.0.0.1";
    trail.Append(records);
    auto const found = [&](TrailFilter const& filter) {
        std::vector<int64> ids;
        for (TrailRecord const& record : trail.Read(filter))
        {
            ids.push_back(record.id);
        }
        return ids;
    };
    using Ids = std::vector<int64>;

    EXPECT_EQ(found({.who = "user bob"}), (Ids{3}));
    EXPECT_EQ(found({.who = "user"}), (Ids{}));
    EXPECT_EQ(found({.from = "127.0"}), (Ids{2}));
    EXPECT_EQ(found({.what = "PUT"}), (Ids{1, 2}));
    EXPECT_EQ(found({.what = "P%T"}), (Ids{}));
    EXPECT_EQ(found({.since = "1970-01-01T00:00:02"}), (Ids{2, 3}));
    EXPECT_EQ(found({.until = "1970-01-01T00:00:02"}), (Ids{1}));
    EXPECT_EQ(found({.after = 1}), (Ids{2, 3}));
    EXPECT_EQ(found({.limit = 2}), (Ids{1, 2}));
    EXPECT_EQ(found({.who = "user anna", .from = "https", .what = "a", .since = "1970", .until = "1971", .after = 0}),
              (Ids{1}));
}

TEST_F(TrailFileTest, FindsTheNewestOfTheHostsEntries)
{
    TrailFile trail(path);
    std::vector<TrailRecord> records{Record("start"), Record("stop"), Record("start"), Record("start")};
    records[0].entry.who = records[1].entry.who = records[2].entry.who = "host"; // the last one is of another
    trail.Append(records);

    EXPECT_EQ(trail.LastOf("start", "stop")->id, 3);
    EXPECT_FALSE(trail.LastOf("a", "b").has_value());
}

TEST_F(TrailFileTest, CutsTheOldestEntriesAndNotesTheHashOfTheLastOfThem)
{
    TrailFile trail(path, {.entries = 10, .cutEntries = 4});
    Append(trail, Records(10));
    std::string const hash = trail.Read({.after = 3}).at(0).hash;
    EXPECT_EQ(trail.Check().firstId, 1);

    Append(trail, {Record("one more")});

    TrailFile::Chain const chain = trail.Check();
    EXPECT_EQ(chain.fault, "");
    EXPECT_EQ(chain.firstId, 5);
    EXPECT_EQ(chain.lastId, 12);
    TrailRecord const note = trail.Read({.after = 11}).at(0);
    EXPECT_EQ(note.entry.who, "host");
    EXPECT_EQ(note.entry.what, "trail cut");
    EXPECT_EQ(note.entry.after, R"({"entries":4,"lastHash":")" + hash + R"(","lastId":4})");
}

TEST_F(TrailFileTest, CutsMoreThanAStepAfterAFlood)
{
    TrailFile trail(path, {.entries = 10, .cutEntries = 4});
    Append(trail, Records(100));
    Append(trail, Records(100));

    TrailFile::Chain const chain = trail.Check();
    EXPECT_EQ(chain.fault, "");
    EXPECT_LE(chain.entries, 11u);
}

TEST_F(TrailFileTest, CutsByTheSizeOfTheFile)
{
    TrailFile trail(path, {.bytes = 200'000, .cutEntries = 20});
    for (int i = 0; i < 40; ++i)
    {
        std::vector<TrailRecord> records = Records(10);
        records[0].entry.after = std::string(4'000, 'x');
        trail.Append(records);
    }

    EXPECT_EQ(trail.Check().fault, "");
    EXPECT_GT(trail.Check().firstId, 1);
    EXPECT_LT(std::filesystem::file_size(path), 260'000u);
}

TEST_F(TrailFileTest, CutsByAgeAStepAtOnce)
{
    TrailFile trail(path, {.days = 10, .cutEntries = 3});
    Append(trail, Records(5, NowUsec() - 11 * DAY_USEC)); // looks for old entries, and again after an hour

    TrailFile later(path, {.days = 10, .cutEntries = 3});
    Append(later, {Record("new")});

    EXPECT_EQ(trail.Check().fault, "");
    EXPECT_EQ(NamesIn(trail), (Names{"trail cut", "new", "trail cut"})) << "3 of the first 5, then the others";
}

TEST_F(TrailFileTest, KeepsWhatIsYoungEnough)
{
    TrailFile trail(path, {.days = 10, .cutEntries = 3});
    Append(trail, Records(5, NowUsec() - 9 * DAY_USEC));

    EXPECT_EQ(trail.Check().entries, 5u);
}

struct Manipulation
{
    char const* name;
    char const* statement;
    char const* fault;
};

class ManipulatedTrail : public TrailFileTest, public testing::WithParamInterface<Manipulation>
{
};

TEST_P(ManipulatedTrail, Shows)
{
    TrailFile trail(path);
    Append(trail, Records(9));

    Run(GetParam().statement);

    EXPECT_EQ(trail.Check().fault, GetParam().fault);
}

INSTANTIATE_TEST_SUITE_P(
    Every, ManipulatedTrail,
    testing::Values(
        Manipulation{"ChangedText", "UPDATE trail SET who = 'user bob' WHERE id = 4",
                     "Entry 4 was changed, or the entry before it"},
        Manipulation{"ChangedTime", "UPDATE trail SET time = '2020' WHERE id = 1",
                     "Entry 1 was changed, or the entry before it"},
        Manipulation{"ChangedCount", "UPDATE trail SET count = 2 WHERE id = 9",
                     "Entry 9 was changed, or the entry before it"},
        Manipulation{"ChangedHash", "UPDATE trail SET hash = replace(hash, 'a', 'b') WHERE id = 5",
                     "Entry 5 was changed, or the entry before it"},
        Manipulation{"RemovedOne", "DELETE FROM trail WHERE id = 3", "Entry 3 is missing"},
        Manipulation{"RemovedSome", "DELETE FROM trail WHERE id IN (3, 4)", "The entries 3 to 4 are missing"},
        Manipulation{"RemovedOldest", "DELETE FROM trail WHERE id < 3", "The entries 1 to 2 are missing"},
        Manipulation{"RemovedNewest", "DELETE FROM trail WHERE id > 7", "The entries 8 to 9 are missing"},
        Manipulation{"RemovedAll", "DELETE FROM trail", "The entries 1 to 9 are missing"},
        Manipulation{"ShiftedText", "UPDATE trail SET who = 'user ann', origin = 'ahttps 192.0.2.7' WHERE id = 2",
                     "Entry 2 was changed, or the entry before it"}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST_F(TrailFileTest, ShowsAForgedCut)
{
    TrailFile trail(path, {.entries = 10, .cutEntries = 4});
    Append(trail, Records(12));
    ASSERT_EQ(trail.Check().fault, "");

    Run("DELETE FROM trail WHERE id = 5");

    EXPECT_EQ(trail.Check().fault, "The entries 1 to 5 are missing");
}

TEST_F(TrailFileTest, NotesThatAnotherProgramHasChangedTheEnd)
{
    TrailFile trail(path);
    Append(trail, Records(3));
    std::string const lost = trail.Read({.after = 2}).at(0).hash;
    Run("DELETE FROM trail WHERE id = 3");

    Append(trail, {Record("next")});

    EXPECT_EQ(NamesIn(trail), (Names{"do 0", "do 1", "trail changed from outside", "next"}));
    EXPECT_EQ(trail.Read({.after = 2}).at(0).entry.before, R"({"lastHash":")" + lost + R"(","lastId":3})");
}

TEST_F(TrailFileTest, IsWholeAfterAPowerCutAtAnyMoment)
{
    uint32 seed = 1;
    for (uint64 operation = 1; operation < 60; ++operation)
    {
        ZuTest::ForgetfulDisk disk;
        TrailFile const trail(path, {.entries = 6, .cutEntries = 3});
        uint64 durable = 0;
        TrailFile before(path, {.entries = 6, .cutEntries = 3});
        Append(before, Records(2));
        disk.CutPowerAt(operation);
        try
        {
            for (durable = 2; durable < 20; durable += 2)
            {
                Append(before, Records(2));
            }
        }
        catch (Zu::Exception const&) // the power is off
        {
        }
        disk.Restart(ZuTest::ForgetfulDisk::Memory::SOME, seed++);

        TrailFile after(path, {.entries = 6, .cutEntries = 3});
        ASSERT_EQ(after.Check().fault, "") << operation;
        ASSERT_GE(static_cast<uint64>(after.LastId()), durable) << operation;
        Append(after, Records(1));
        ASSERT_EQ(after.Check().fault, "") << operation;
        std::filesystem::remove(path);
    }
}

} // namespace ZuHost
