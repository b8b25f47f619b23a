#include "Host/Audit/AuditTrail.h"

#include "Host/Store/DataFolder.h"
#include "Host/Store/SqliteFile.h"
#include "Support/AllocationFailure.h"
#include "Support/CallLog.h"
#include "Support/Latch.h"
#include "Support/MountedFolder.h"
#include "Support/RecordingSink.h"
#include "Support/ScratchFolder.h"
#include "wApi/wTime.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <thread>

namespace ZuHost
{

namespace
{

using Names = std::vector<std::string>;

TrailEntry Entry(std::string what, std::string after = {})
{
    return {"user anna", "https 192.0.2.7", std::move(what), "", std::move(after), "200"};
}

template <typename Condition>
bool Await(Condition const& condition)
{
    uint64 const deadlineUsec = wTime_AfterUsec(std::chrono::microseconds(ZuTest::CallLog::BOUND).count());
    while (!condition())
    {
        if (wTime_NowUsec() > deadlineUsec)
        {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

Names NamesIn(std::filesystem::path const& path)
{
    Names names;
    for (TrailRecord const& record : TrailFile(path).Read({.limit = 10'000}))
    {
        names.push_back(record.entry.what + (record.count == 1 ? "" : " x" + std::to_string(record.count)));
    }
    return names;
}

class AuditTrailTest : public testing::Test
{
protected:
    static constexpr auto NO_CLOCK = nullptr;

    ZuTest::ScratchFolder scratch;
    DataFolder const folder{scratch.path};
    std::filesystem::path const path = folder.TrailFile();
};

} // namespace

TEST_F(AuditTrailTest, WritesWhatWasNotedBeforeItEnds)
{
    {
        AuditTrail trail(folder, {}, NO_CLOCK);
        trail.Note(Entry("first"));
        trail.Note(Entry("second"));
    }
    EXPECT_EQ(NamesIn(path), (Names{"first", "second"}));
    EXPECT_EQ(TrailFile(path).Check().fault, "");
}

TEST_F(AuditTrailTest, WritesSoon)
{
    AuditTrail trail(folder, {}, NO_CLOCK);
    trail.Note(Entry("first"));

    EXPECT_TRUE(Await([&] { return trail.LastId() == 1; }));
    EXPECT_EQ(trail.Read({}).at(0).entry.what, "first");
    EXPECT_TRUE(trail.Faults().empty());
}

TEST_F(AuditTrailTest, MasksAndBoundsTexts)
{
    {
        AuditTrail trail(folder, {}, NO_CLOCK);
        trail.Note({"a\nb", "f\x01", "w\r", R"({"password":"p1"})", R"({"x":{"token":"t1"}})", std::string(1000, 'r')});
    }
    TrailEntry const entry = TrailFile(path).Read({}).at(0).entry;
    EXPECT_EQ(entry.who, "a\\nb");
    EXPECT_EQ(entry.from, "f\\x01");
    EXPECT_EQ(entry.what, "w\\r");
    EXPECT_EQ(entry.before, R"({"password":"***"})");
    EXPECT_EQ(entry.after, R"({"x":{"token":"***"}})");
    EXPECT_EQ(entry.result.size(), 512u);
}

TEST_F(AuditTrailTest, CopiesEachEntryToTheLogWithNumberAndHash)
{
    ZuTest::LogRecorder const log;
    {
        AuditTrail trail(folder, {}, NO_CLOCK);
        trail.Note(Entry("first", R"({"a":1})"));
    }
    std::string const hash = TrailFile(path).Read({}).at(0).hash.substr(0, 16);
    EXPECT_EQ(
        log.Lines(),
        (std::vector{ZuTest::UserInfo("Trail 1: user anna (https 192.0.2.7): first: {\"a\":1}: 200 [" + hash + "]")}));
}

TEST_F(AuditTrailTest, GathersEqualEntriesOfASecond)
{
    {
        AuditTrail trail(folder, {}, NO_CLOCK);
        for (int i = 0; i < 10; ++i)
        {
            trail.Note(Entry("login"));
        }
        trail.Note(Entry("login", R"({"other":1})"));
    }
    Names names = NamesIn(path);
    std::ranges::sort(names);
    EXPECT_EQ(names, (Names{"login", "login", "login x9"}));
}

TEST_F(AuditTrailTest, GathersEntriesThatComeInBurstsFromTheFirstToTheLast)
{
    {
        AuditTrail trail(folder, {}, NO_CLOCK);
        for (int i = 0; i < 4; ++i)
        {
            TrailEntry entry = Entry("PUT", std::to_string(i + 1));
            entry.before = std::to_string(i);
            entry.comesInBursts = true;
            trail.Note(entry);
        }
    }
    std::vector<TrailRecord> const read = TrailFile(path).Read({});
    ASSERT_EQ(read.size(), 2u);
    EXPECT_EQ(read[0].count, 1u);
    EXPECT_EQ(read[1].count, 3u);
    EXPECT_EQ(read[1].entry.before, "1");
    EXPECT_EQ(read[1].entry.after, "4");
}

TEST_F(AuditTrailTest, WritesWhatWasGatheredAfterASecond)
{
    AuditTrail trail(folder, {}, NO_CLOCK);
    trail.Note(Entry("login"));
    trail.Note(Entry("login"));

    EXPECT_TRUE(Await([&] { return trail.LastId() == 2; }));
}

TEST_F(AuditTrailTest, NotesTheClockBehindTheFirstEntry)
{
    AuditTrail trail(folder, {}, [] { return ClockWatch::Reading{0, 0, ClockWatch::Synchronisation::YES}; });
    trail.Note(Entry("first"));

    EXPECT_TRUE(Await([&] { return trail.LastId() == 2; }));
    EXPECT_EQ(NamesIn(path), (Names{"first", "clock"}));
}

TEST_F(AuditTrailTest, NotesThatTheRunBeforeHasNotedNoStop)
{
    {
        AuditTrail trail(folder, {}, NO_CLOCK);
        trail.Note({"host", "", "start", "", "", "done"});
    }
    {
        AuditTrail trail(folder, {}, NO_CLOCK);
        trail.Note({"host", "", "start", "", "", "done"});
        trail.Note({"host", "", "stop", "", "", "done"});
    }
    {
        AuditTrail trail(folder, {}, NO_CLOCK);
        trail.Note({"host", "", "start", "", "", "done"});
    }
    EXPECT_EQ(NamesIn(path), (Names{"start", "end without stop", "start", "stop", "start"}));
    std::vector<TrailRecord> const read = TrailFile(path).Read({});
    EXPECT_EQ(read[1].entry.after, R"({"started":")" + read[0].time + R"("})");
}

TEST_F(AuditTrailTest, KeepsADamagedFileAndBeginsANewOne)
{
    ZuTest::WriteBytes(path, std::string(10'000, 'x'));
    ZuTest::LogRecorder const log;
    {
        AuditTrail trail(folder, {}, NO_CLOCK);
        trail.Note(Entry("first"));
    }
    EXPECT_EQ(NamesIn(path), (Names{"trail replaced", "first"}));
    EXPECT_EQ(ZuTest::BytesOf(path.string() + ".damaged-1"), std::string(10'000, 'x'));
    auto const after = nlohmann::json::parse(TrailFile(path).Read({}).at(0).entry.after);
    EXPECT_EQ(after["kept"], "audit.zplog.damaged-1");
    EXPECT_EQ(log.Lines().at(0), ZuTest::UserError("The trail was damaged (" + after["reason"].get<std::string>() +
                                                   "). It is kept as audit.zplog.damaged-1, and a new one begins"));
}

TEST_F(AuditTrailTest, ReplacesAFileOfAnotherSchema)
{
    SqliteFile(path, SqliteFile::Access::CREATE).Run("CREATE TABLE trail (id INTEGER PRIMARY KEY)");
    {
        AuditTrail trail(folder, {}, NO_CLOCK);
        trail.Note(Entry("first"));
    }
    EXPECT_EQ(NamesIn(path), (Names{"trail replaced", "first"}));
}

TEST_F(AuditTrailTest, TellsOfABrokenChainAndGoesOn)
{
    {
        AuditTrail trail(folder, {}, NO_CLOCK);
        trail.Note(Entry("first"));
        trail.Note(Entry("second"));
    }
    SqliteFile(path, SqliteFile::Access::WRITE).Run("UPDATE trail SET result = '401' WHERE id = 1");

    AuditTrail trail(folder, {}, NO_CLOCK);
    trail.Note(Entry("third"));

    EXPECT_TRUE(Await([&] { return trail.LastId() == 3; }));
    EXPECT_EQ(trail.Faults(), (std::set<std::string>{
                                  "The trail in 'audit.zplog' was changed by another program: Entry 1 was changed, or "
                                  "the entry before it. Keep a copy of the file, and move it away while the host does "
                                  "not run."}));
}

TEST_F(AuditTrailTest, GoesOnInTheLogWhileTheFileCannotBeWritten)
{
    std::filesystem::create_directory(path); // no file can be there
    ZuTest::LogRecorder const log;
    AuditTrail trail(folder, {}, NO_CLOCK);
    trail.Note(Entry("first"));
    trail.Note(Entry("second"));

    ASSERT_TRUE(Await([&] { return !trail.Faults().empty(); }));
    ASSERT_TRUE(Await([&] { return log.Lines().size() == 2; }));
    EXPECT_EQ(*trail.Faults().begin(), "The trail cannot be written, its entries go to the log: The file 'audit.zplog' "
                                       "cannot be used: unable to open database file. This lasts until the file can be "
                                       "written again.");
    EXPECT_EQ(log.Lines().at(0), ZuTest::UserError("Trail, not on the disk: user anna (https 192.0.2.7): first: 200"));

    std::filesystem::remove(path);
    EXPECT_TRUE(Await([&] { return trail.Faults().empty(); }));
    EXPECT_EQ(NamesIn(path), (Names{"trail interrupted", "first", "second"}));
    auto const about = nlohmann::json::parse(TrailFile(path).Read({}).at(0).entry.after);
    EXPECT_EQ(about["late"], 2);
    EXPECT_EQ(about["inLogOnly"], 0);
    EXPECT_EQ(about["reason"], "The file 'audit.zplog' cannot be used: unable to open database file");
    EXPECT_EQ(about["since"].get<std::string>().substr(0, 2), "20");
}

TEST_F(AuditTrailTest, CountsTheEntriesThatAreInTheLogAlone)
{
    std::filesystem::create_directory(path);
    ZuTest::LogRecorder const log;
    {
        AuditTrail trail(folder, {}, NO_CLOCK);
        std::size_t const count = AuditTrail::MAX_WAITING + 500;
        for (std::size_t i = 0; i < count; ++i)
        {
            trail.Note(Entry("entry " + std::to_string(i)));
        }
        ASSERT_TRUE(Await([&] { return log.Lines().size() == count; })); // none without a line
        std::filesystem::remove(path);
    }
    std::vector<TrailRecord> const read = TrailFile(path).Read({.limit = 10'000});
    ASSERT_EQ(read.size(), AuditTrail::MAX_WAITING + 1);
    EXPECT_EQ(nlohmann::json::parse(read[0].entry.after)["inLogOnly"], 500);
    EXPECT_EQ(TrailFile(path).Check().fault, "");
}

TEST_F(AuditTrailTest, LogsEntriesThatFindTheQueueFull)
{
    constexpr std::size_t BEYOND = 7;
    ZuTest::Latch entered;
    ZuTest::Latch release;
    ZuTest::LogRecorder const log;
    {
        AuditTrail trail(folder, {}, [&] { // holds up the writing thread
            entered.Open();
            release.Wait();
            return ClockWatch::Reading{};
        });
        trail.Note(Entry("first"));
        ASSERT_TRUE(entered.Wait());
        for (std::size_t i = 0; i < AuditTrail::MAX_WAITING + BEYOND; ++i)
        {
            trail.Note(Entry("entry " + std::to_string(i)));
        }
        EXPECT_EQ(log.Lines().size(), BEYOND);
        EXPECT_EQ(log.Lines().at(0),
                  ZuTest::UserError("Trail, not on the disk: user anna (https 192.0.2.7): entry 1000: 200"));
        release.Open();
    }
    std::vector<TrailRecord> const read = TrailFile(path).Read({.what = "trail interrupted"});
    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(nlohmann::json::parse(read[0].entry.after), (nlohmann::json{{"late", 0}, {"inLogOnly", BEYOND + 1}}))
        << "the entry of the clock is one more";
    EXPECT_EQ(TrailFile(path).Check().fault, "");
}

TEST_F(AuditTrailTest, CountsEntriesForWhichThereIsNoMemory)
{
    std::size_t lost = 0;
    {
        AuditTrail trail(folder, {}, NO_CLOCK);
        for (bool hasHappened = true; hasHappened && lost < 10'000; lost += hasHappened ? 1 : 0)
        {
            TrailEntry entry = Entry("an entry whose name is long enough for an allocation " + std::to_string(lost));
            ZuTest::AllocationFailure const failure(lost + 1);
            trail.Note(std::move(entry));
            hasHappened = failure.HasHappened();
        }
    }
    EXPECT_GT(lost, 3u);
    std::vector<TrailRecord> const read = TrailFile(path).Read({});
    std::size_t counted = 0;
    std::size_t written = 0;
    for (TrailRecord const& record : read)
    {
        bool const isNote = record.entry.what == "trail interrupted";
        counted += isNote ? nlohmann::json::parse(record.entry.after)["inLogOnly"].get<std::size_t>() : 0;
        written += isNote ? 0 : 1;
    }
    EXPECT_EQ(counted + written, lost + 1);
}

TEST(AuditTrailOnAFullDisk, GoesOnInTheLogAndComesBack)
{
    ZuTest::MountedFolder const mounted("8m");
    if (!mounted.IsMounted())
    {
        GTEST_SKIP() << "no file system can be mounted";
    }
    DataFolder const folder(mounted.Path());
    ZuTest::LogRecorder const log;
    AuditTrail trail(folder, {}, nullptr);
    trail.Note(Entry("first"));
    ASSERT_TRUE(Await([&] { return trail.LastId() == 1; }));
    ZuTest::WriteBytes(mounted.Path() / "filler", std::string(9'000'000, 'x'));

    for (int i = 0; trail.Faults().empty() && i < 1'000; ++i)
    {
        trail.Note(Entry("full " + std::to_string(i), std::string(4'000, 'x')));
        std::this_thread::yield();
    }
    ASSERT_TRUE(Await([&] { return !trail.Faults().empty(); }));
    EXPECT_NE(trail.Faults().begin()->find("disk"), std::string::npos) << *trail.Faults().begin();

    std::filesystem::remove(mounted.Path() / "filler");
    EXPECT_TRUE(Await([&] { return trail.Faults().empty(); }));
    EXPECT_GT(trail.LastId(), 2);
    EXPECT_EQ(TrailFile(folder.TrailFile()).Check().fault, "");
}

TEST_F(AuditTrailTest, TakesNotesOfManyThreads)
{
    {
        AuditTrail trail(folder, {}, NO_CLOCK);
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t)
        {
            threads.emplace_back([&trail, t] {
                for (int i = 0; i < 100; ++i)
                {
                    trail.Note(Entry("thread " + std::to_string(t) + " entry " + std::to_string(i)));
                    trail.Faults();
                }
            });
        }
        for (std::thread& thread : threads)
        {
            thread.join();
        }
    }
    EXPECT_EQ(NamesIn(path).size(), 400u);
    EXPECT_EQ(TrailFile(path).Check().fault, "");
}

} // namespace ZuHost
