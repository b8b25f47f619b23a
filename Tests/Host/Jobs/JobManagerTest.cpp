#include "Host/Jobs/JobManager.h"

#include "Host/Jobs/JobDesk.h"
#include "Host/Store/Archive.h"
#include "Support/Latch.h"
#include "Support/MountedFolder.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "wApi/wThread.h"
#include "wApi/wTime.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <optional>
#include <thread>

namespace ZuHost
{

namespace
{

using Access = SqliteFile::Access;
using Files = ArchiveContents::Files;
using ZuTest::BytesOf;
using ZuTest::Refusal;
using ZuTest::RefusalOf;
using ZuTest::ValueKeepers;
using ZuTest::WriteBytes;

constexpr char const* ONE = "controls/One/config.json";
constexpr char const* TWO = "controls/Two/config.json";

template <typename Condition>
bool WaitFor(Condition isMet)
{
    for (uint64 const deadline = wTime_AfterUsec(30'000'000); wTime_NowUsec() < deadline; wThread_Sleep(500))
    {
        if (isMet())
        {
            return true;
        }
    }
    return false;
}

} // namespace

class JobManagerTest : public testing::Test
{
protected:
    /// Starts a host that loads this job; with `saves` it also saves changes.
    void Start(std::string const& job = "default", bool saves = true)
    {
        desk.reset();
        desk.emplace(scratch.path);
        desk->jobs.Begin(JobName(job));
        if (saves)
        {
            desk->jobs.Run();
        }
    }

    void Stop()
    {
        desk.reset();
    }

    JobManager& Jobs()
    {
        return desk->jobs;
    }

    ValueKeepers& Keepers()
    {
        return desk->keepers;
    }

    bool WaitUntilSaved()
    {
        return WaitFor([this] {
            auto const list = Jobs().List();
            return std::ranges::none_of(list, [](auto const& job) { return job.isModified; });
        });
    }

    std::filesystem::path FileOf(std::string const& job) const
    {
        return scratch / (job + ".zpjob");
    }

    Files In(std::string const& job) const
    {
        return Archive(FileOf(job), Access::READ).Read().entries;
    }

    /// Edits the job file as a user does with the command-line tool.
    void Edit(std::string const& job, std::string const& name, std::string const& text) const
    {
        Archive(FileOf(job), Access::WRITE).Write({{name, text}}, {});
    }

    std::vector<std::string> ProblemTexts() const
    {
        std::vector<std::string> texts;
        for (auto const& problem : desk->problems.List())
        {
            texts.push_back(problem.text);
        }
        return texts;
    }

    ZuTest::ScratchFolder scratch;
    std::optional<ZuTest::JobDesk> desk;
};

TEST_F(JobManagerTest, MakesANewJobWhenThereIsNone)
{
    Start();

    EXPECT_EQ(Keepers().calls.All(), (ZuTest::CallLog::Calls{"init 1", "init 2", "save 2", "save 1"}));
    EXPECT_EQ(In("default"),
              (Files{{ONE, ValueKeepers::DocumentWith("default")}, {TWO, ValueKeepers::DocumentWith("default")}}));
    EXPECT_EQ(Jobs().LoadedJob(), "default");
    EXPECT_TRUE(Jobs().Report(JobName("default")).protocols.empty());
    EXPECT_TRUE(ProblemTexts().empty());
}

TEST_F(JobManagerTest, LoadsWhatThereIsAtTheStart)
{
    Start();
    Keepers().own = "counted";
    Keepers().Set("One", "kept");
    Start();

    EXPECT_EQ(Keepers().values, (std::map<std::string, std::string>{{"One", "kept"}, {"Two", "default"}}));
    EXPECT_EQ(Keepers().own, "counted");
    EXPECT_EQ(Keepers().calls.All(), (ZuTest::CallLog::Calls{"load 1", "load 2", "save 2"}));
}

TEST_F(JobManagerTest, GivesAProtocolThatIsNewToTheJobItsDefaultsAtTheStart)
{
    Archive(FileOf("default"), Access::CREATE).Write({{ONE, ValueKeepers::DocumentWith("kept")}}, {});

    Start("default", false);

    EXPECT_EQ(Keepers().calls.Count("instance Two"), 1U);
    EXPECT_EQ(Keepers().calls.Count("instance One"), 0U);
}

TEST_F(JobManagerTest, HoldsBackWhatIsToBeConfiguredBeforeItRuns)
{
    std::string const disabled = R"({"version":"1","zu:control":{"enabled":false,"parameters":{"value":"two"}}})";
    Archive(FileOf("default"), Access::CREATE).Write({{ONE, ValueKeepers::DocumentWith("one")}, {TWO, disabled}}, {});
    desk.emplace(scratch.path);
    std::string loaded;
    Keepers().onRead = [&](std::string const& text) { loaded += text; };

    EXPECT_EQ(Jobs().Begin(JobName("default"), {"One", "Two", "Three"}), std::vector<std::string>{"One"});

    EXPECT_EQ(loaded.find("\"enabled\":true"), std::string::npos) << loaded;
    EXPECT_EQ(Keepers().values.at("One"), "one");
    Jobs().Run();
    ASSERT_TRUE(WaitUntilSaved());
    EXPECT_EQ(In("default").at(TWO), disabled);
}

TEST_F(JobManagerTest, SavesAsEnabledWhatItHeldBackWhenTheHostDoesNotComeUp)
{
    Archive(FileOf("default"), Access::CREATE).Write({{ONE, ValueKeepers::DocumentWith("one")}}, {});
    desk.emplace(scratch.path);
    Keepers().stopped = {"One"};
    EXPECT_EQ(Jobs().Begin(JobName("default"), {"One"}), std::vector<std::string>{"One"});
    Keepers().Set("One", "set before it runs");

    Stop();

    EXPECT_EQ(In("default").at(ONE), ValueKeepers::DocumentWith("set before it runs"));
}

TEST_F(JobManagerTest, MendsADamagedFileWithTheNextSave)
{
    Start();
    Stop();
    std::string bytes = BytesOf(FileOf("default"));
    bytes[bytes.find(TWO) + 9] = 't'; // the name in the table now differs from the name in its index
    WriteBytes(FileOf("default"), bytes);

    Start();

    EXPECT_EQ(Keepers().values.at("One"), "default");
    ASSERT_TRUE(WaitUntilSaved());
    EXPECT_EQ(BytesOf(scratch / "default.zpjob.damaged-1"), bytes);
    EXPECT_EQ(Archive(FileOf("default"), Access::READ).FindFault(), "");
    EXPECT_EQ(In("default").at(TWO), ValueKeepers::DocumentWith("default"));
}

TEST_F(JobManagerTest, SavesSoonAfterTheFirstChange)
{
    Start();
    ASSERT_TRUE(WaitUntilSaved());

    Keepers().Set("One", "changed");

    ASSERT_TRUE(WaitUntilSaved());
    EXPECT_EQ(In("default").at(ONE), ValueKeepers::DocumentWith("changed"));
}

TEST_F(JobManagerTest, SavesWhatWasChangedBeforeItRan)
{
    Start("default", false);
    Keepers().Set("One", "by the command line");

    Jobs().Run();

    ASSERT_TRUE(WaitUntilSaved());
    EXPECT_EQ(In("default").at(ONE), ValueKeepers::DocumentWith("by the command line"));
}

TEST_F(JobManagerTest, SavesAtTheEndAndNothingAfterIt)
{
    Start();
    ASSERT_TRUE(WaitUntilSaved());
    Keepers().Put("One", "told to nobody");

    Jobs().Close();
    Keepers().Set("One", "taken down");
    EXPECT_EQ(RefusalOf([&] { Jobs().LoadJob("default"); }),
              (Refusal{Zu::Status::WRONG_STATE, "The host is stopping: jobs are neither loaded nor saved any more"}));
    EXPECT_EQ(RefusalOf([&] { Jobs().SaveAs(JobName("default")); }).status, Zu::Status::WRONG_STATE);
    Stop();

    EXPECT_EQ(In("default").at(ONE), ValueKeepers::DocumentWith("told to nobody"));
}

TEST_F(JobManagerTest, SavesThePresentJobBeforeItLoadsAnother)
{
    Start("default", false);
    Jobs().SaveAs(JobName("other"));
    Keepers().Set("One", "of the first");

    Jobs().LoadJob("other.zpjob");

    EXPECT_EQ(In("default").at(ONE), ValueKeepers::DocumentWith("of the first"));
    EXPECT_EQ(Jobs().LoadedJob(), "other");
    EXPECT_EQ(Keepers().values.at("One"), "default");
    EXPECT_EQ(Keepers().calls.Count("init 2"), 1U) << "a load never initialises";
}

TEST_F(JobManagerTest, RefusesWhatIsNoJobAndKeepsTheOneThatIsLoaded)
{
    Start();

    EXPECT_EQ(RefusalOf([&] { Jobs().LoadJob("none"); }), (Refusal{Zu::Status::NOT_FOUND, "There is no job 'none'"}));
    EXPECT_EQ(RefusalOf([&] { Jobs().LoadJob("../up"); }).status, Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(RefusalOf([&] { Jobs().LoadJob(""); }).status, Zu::Status::BAD_ARGUMENT);

    EXPECT_EQ(Jobs().LoadedJob(), "default");
    EXPECT_EQ(Keepers().calls.Count("load 2"), 0U);
}

TEST_F(JobManagerTest, LoadsWhatAPersonHasEditedInTheFileOfTheLoadedJob)
{
    Start();
    ASSERT_TRUE(WaitUntilSaved());
    Edit("default", ONE, ValueKeepers::DocumentWith("edited"));
    Keepers().Set("Two", "changed"); // the only value that is saved in between
    ASSERT_TRUE(WaitUntilSaved());

    Jobs().LoadJob("default");

    EXPECT_EQ(Keepers().values, (std::map<std::string, std::string>{{"One", "edited"}, {"Two", "changed"}}));
}

TEST_F(JobManagerTest, SavesAllOfTheJobWhenAskedTo)
{
    Start();
    ASSERT_TRUE(WaitUntilSaved());
    Edit("default", ONE, ValueKeepers::DocumentWith("edited"));

    Jobs().SaveAs(JobName("default"));

    EXPECT_EQ(In("default").at(ONE), ValueKeepers::DocumentWith("default"));
}

TEST_F(JobManagerTest, ReportsWhatWasTakenOver)
{
    Start();
    Edit("default", ONE, R"({"version":"1","zu:control":{"parameters":{"value":"refused"},"outputs":{"map":[]}}})");

    ZuTest::LogRecorder const log;
    Jobs().LoadJob("default");

    LoadReport const report = Jobs().Report(JobName("default"));
    EXPECT_EQ(report.job, JobName("default"));
    EXPECT_EQ(report.faults, std::vector<std::string>());
    ASSERT_EQ(report.protocols.size(), 2U);
    EXPECT_EQ(report.protocols[0], (LoadReport::Protocol{"One",
                                                         true,
                                                         false,
                                                         false,
                                                         {},
                                                         {"enabled"},
                                                         {"parameters", "outputs"},
                                                         {"Error loading parameters for service One."}}));
    EXPECT_EQ(report.protocols[1],
              (LoadReport::Protocol{"Two", true, false, false, {"enabled", "parameters"}, {}, {}, {}}));
    EXPECT_EQ(RefusalOf([&] { Jobs().Report(JobName("other")); }).status, Zu::Status::NOT_FOUND);
}

TEST_F(JobManagerTest, SavesAJobThatCouldNotBeTakenOverAndKeepsWhatWasRefused)
{
    Start();
    ASSERT_TRUE(WaitUntilSaved());
    Edit("default", ONE, ValueKeepers::DocumentWith("refused"));

    Jobs().LoadJob("default");

    ASSERT_TRUE(WaitUntilSaved());
    EXPECT_EQ(In("default"), (Files{{ONE, ValueKeepers::DocumentWith("default")},
                                    {TWO, ValueKeepers::DocumentWith("default")},
                                    {std::string("rejected/") + ONE, ValueKeepers::DocumentWith("refused")}}));
}

TEST_F(JobManagerTest, SavesWhatRunsInThePlaceOfADocumentThatIsRefused)
{
    for (char const* const refused :
         {"[]", R"({"version":"2","zu:control":{"enabled":true,"parameters":{"value":"x"}}})",
          R"({"zu:control":{"enabled":true,"parameters":{"value":"x"}}})"})
    {
        Start();
        Keepers().Set("One", "runs");
        Jobs().SaveAs(JobName("default"));
        Edit("default", ONE, refused);

        Jobs().LoadJob("default");

        LoadReport::Protocol const report = Jobs().Report(JobName("default")).protocols[0];
        EXPECT_TRUE(report.isInJob && report.isRefused) << refused;
        EXPECT_EQ(report.takenOver, std::vector<std::string>()) << refused;
        EXPECT_EQ(report.reset, std::vector<std::string>()) << refused;
        EXPECT_EQ(report.skipped.empty(), std::string(refused) == "[]") << refused;
        EXPECT_EQ(Keepers().values.at("One"), "runs");
        ASSERT_TRUE(WaitUntilSaved());
        EXPECT_EQ(In("default").at(ONE), ValueKeepers::DocumentWith("runs")) << refused;
        EXPECT_EQ(In("default").at(std::string("rejected/") + ONE), refused);
    }
}

TEST_F(JobManagerTest, SavesWhatRunsWhereTheJobHasNoDocument)
{
    Start();
    Keepers().Set("Two", "runs");
    Jobs().SaveAs(JobName("default"));
    Stop();
    Archive(FileOf("part"), Access::CREATE).Write({{ONE, ValueKeepers::DocumentWith("one")}}, {});
    Start();

    Jobs().LoadJob("part");

    EXPECT_FALSE(Jobs().Report(JobName("part")).protocols[1].isInJob);
    EXPECT_EQ(Keepers().values.at("Two"), "runs");
    ASSERT_TRUE(WaitUntilSaved());
    EXPECT_EQ(In("part"), (Files{{ONE, ValueKeepers::DocumentWith("one")}, {TWO, ValueKeepers::DocumentWith("runs")}}));
}

TEST_F(JobManagerTest, SavesAtTheEndWhatRunsInThePlaceOfADocumentThatIsRefused)
{
    Start("default", false);
    Keepers().Set("One", "runs");
    Jobs().SaveAs(JobName("default"));
    Edit("default", ONE, "[]");
    Jobs().LoadJob("default");

    Stop();

    EXPECT_EQ(In("default").at(ONE), ValueKeepers::DocumentWith("runs"));
}

TEST_F(JobManagerTest, GivesAProtocolWhoseDocumentIsRefusedItsDefaultsAtTheStart)
{
    Archive(FileOf("default"), Access::CREATE).Write({{ONE, "[]"}, {TWO, ValueKeepers::DocumentWith("two")}}, {});

    Start("default", false);

    EXPECT_EQ(Keepers().calls.Count("instance One"), 1U);
    EXPECT_EQ(Keepers().calls.Count("instance Two"), 0U);
}

TEST_F(JobManagerTest, HoldsBackNoServiceWhoseDocumentIsRefused)
{
    std::string const refused = R"({"version":"2","zu:control":{"enabled":true,"parameters":{"value":"x"}}})";
    Archive(FileOf("default"), Access::CREATE).Write({{ONE, refused}, {TWO, ValueKeepers::DocumentWith("two")}}, {});
    desk.emplace(scratch.path);

    EXPECT_EQ(Jobs().Begin(JobName("default"), {"One", "Two"}), std::vector<std::string>{"Two"});
}

TEST_F(JobManagerTest, TellsWhichServiceCannotBeSavedAndWhy)
{
    Start("default", false);
    Keepers().Set("Two", "before");
    Jobs().SaveAs(JobName("default"));
    std::string const tooLong(17 * 1024 * 1024, 'x');
    for (auto const& [value, why] :
         {std::pair<std::string, std::string>(
              tooLong, "The document '/controls/Two/config.json' cannot be stored: it is longer than 16777216 bytes"),
          {"\xFF", "[json.exception.type_error.316] invalid UTF-8 byte at index 0: 0xFF"}})
    {
        Keepers().Set("One", "changed too");
        Keepers().Set("Two", value);
        Keepers().own = "counted";

        Refusal const refusal = RefusalOf([&] { Jobs().SaveAs(JobName("copy")); });

        EXPECT_EQ(refusal, (Refusal{Zu::Status::FAILURE, "service Two: " + why}));
        EXPECT_EQ(ProblemTexts(), std::vector<std::string>{"The job 'default' cannot be saved: service Two: " + why});
        EXPECT_TRUE(Jobs().List()[0].isModified);
        EXPECT_FALSE(std::filesystem::exists(FileOf("copy")));
        EXPECT_EQ(In("default"), (Files{{ONE, ValueKeepers::DocumentWith("changed too")},
                                        {TWO, ValueKeepers::DocumentWith("before")}}));
        EXPECT_EQ(Archive(scratch / "settings.zpset", Access::READ).Read().entries.at(ONE), "\"counted\"");

        Keepers().Set("Two", "before");
        Jobs().SaveAs(JobName("default"));
        EXPECT_TRUE(ProblemTexts().empty());
        EXPECT_FALSE(Jobs().List()[0].isModified);
    }
}

TEST_F(JobManagerTest, TellsOfSettingsThatCannotBeSaved)
{
    Start("default", false);
    Keepers().own = "\xFF";

    EXPECT_EQ(RefusalOf([&] { Jobs().SaveAs(JobName("default")); }).status, Zu::Status::FAILURE);

    ASSERT_EQ(ProblemTexts().size(), 1U);
    EXPECT_NE(ProblemTexts()[0].find("invalid UTF-8 byte at index 0"), std::string::npos) << ProblemTexts()[0];
}

TEST_F(JobManagerTest, UsesTheLastGoodDocumentTellsTheUserAndMendsTheFile)
{
    Start();
    Keepers().Set("One", "good");
    ASSERT_TRUE(WaitUntilSaved());
    Edit("default", ONE, "{\"cut");

    Start("default", false);
    EXPECT_EQ(Keepers().values.at("One"), "good");
    ASSERT_EQ(ProblemTexts().size(), 1U);
    EXPECT_NE(ProblemTexts()[0].find("The last good one is used in its place."), std::string::npos);
    EXPECT_TRUE(Jobs().Report(JobName("default")).protocols[0].isFromLastGood);
    EXPECT_EQ(Jobs().Report(JobName("default")).faults, ProblemTexts());
    Jobs().Run();
    ASSERT_TRUE(WaitUntilSaved());

    EXPECT_EQ(In("default").at(ONE), ValueKeepers::DocumentWith("good"));
    EXPECT_EQ(In("default").at(std::string("rejected/") + ONE), "{\"cut");
    Jobs().LoadJob("default");
    EXPECT_TRUE(ProblemTexts().empty());
}

TEST_F(JobManagerTest, GoesOnWithANewJobWhenNothingCanBeReadAndKeepsTheFile)
{
    WriteBytes(FileOf("default"), std::string(5'000, 'x'));
    ZuTest::LogRecorder const log;

    Start();

    std::string const text =
        "The job 'default' cannot be loaded: The file 'default.zpjob' cannot be used: file is not a "
        "database";
    EXPECT_EQ(ProblemTexts(), std::vector<std::string>{text});
    EXPECT_EQ(log.CountOfText(text), 1U);
    ASSERT_TRUE(WaitUntilSaved());
    EXPECT_EQ(BytesOf(scratch / "default.zpjob.damaged-1"), std::string(5'000, 'x'));
    EXPECT_EQ(In("default").at(ONE), ValueKeepers::DocumentWith("default"));
}

TEST_F(JobManagerTest, LeavesTheLoadedJobWhenAnotherCannotBeRead)
{
    Start();
    ASSERT_TRUE(WaitUntilSaved());
    WriteBytes(FileOf("bad"), std::string(5'000, 'x'));

    EXPECT_EQ(RefusalOf([&] { Jobs().LoadJob("bad"); }).status, Zu::Status::BAD_FORMAT);

    EXPECT_EQ(Jobs().LoadedJob(), "default");
    EXPECT_EQ(ProblemTexts().size(), 1U);
    Keepers().Set("One", "changed");
    ASSERT_TRUE(WaitUntilSaved());
    EXPECT_EQ(In("default").at(ONE), ValueKeepers::DocumentWith("changed"));
    EXPECT_EQ(BytesOf(FileOf("bad")), std::string(5'000, 'x'));
}

TEST_F(JobManagerTest, NeverSavesALoadThatBrokeOffToTheJobBefore)
{
    Start("default", false);
    Jobs().SaveAs(JobName("other"));
    Edit("other", ONE, ValueKeepers::DocumentWith("of the other"));
    Keepers().onLoad = [] { throw std::runtime_error("a handler fails"); };

    EXPECT_THROW(Jobs().LoadJob("other"), std::runtime_error);
    Keepers().onLoad = {};
    Jobs().Run();

    ASSERT_TRUE(WaitUntilSaved());
    EXPECT_EQ(Jobs().LoadedJob(), "other");
    EXPECT_EQ(In("default").at(ONE), ValueKeepers::DocumentWith("default"));
    EXPECT_EQ(In("other").at(ONE), ValueKeepers::DocumentWith("of the other"));
    Jobs().Close(); // the saver may still hold the gate for the settings, which it saves after the job
    EXPECT_FALSE(desk->gate.IsOpen());
}

TEST_F(JobManagerTest, HoldsTheGateDuringALoadAndFreesItAfterwards)
{
    Start();
    bool wasOpen = false;
    Keepers().onLoad = [&] { wasOpen = desk->gate.IsOpen(); };

    Jobs().LoadJob("default");

    EXPECT_TRUE(wasOpen);
    EXPECT_FALSE(desk->gate.IsOpen());
}

TEST_F(JobManagerTest, EndsARegistrationOnlyWhenNoLoadRuns)
{
    Start();
    ZuTest::Latch loading;
    ZuTest::Latch goOn;
    std::atomic<bool> isGone{false};
    bool wasGone = true;
    uint64 const other = desk->registry.Register(Keepers(), "other"); // loads twice
    Keepers().onLoad = [&] {
        loading.Open();
        EXPECT_TRUE(goOn.Wait());
        wasGone = isGone;
    };
    std::thread loader([&] { Jobs().LoadJob("default"); });
    ASSERT_TRUE(loading.Wait());

    std::thread leaver([&] {
        desk->registry.Deregister(other);
        isGone = true;
    });
    goOn.Open();
    loader.join();
    leaver.join();

    EXPECT_FALSE(wasGone);
    EXPECT_TRUE(isGone);
}

TEST_F(JobManagerTest, CopiesTheLoadedJobUnderAnotherName)
{
    Start("default", false);
    Keepers().Set("One", "now");
    unsigned changes = 0;
    Zu::Subscription const subscription = Jobs().ListChangedSignal().Subscribe([&changes] { ++changes; });

    Jobs().SaveAs(JobName("copy"));

    EXPECT_EQ(In("copy"), In("default"));
    EXPECT_EQ(In("copy").at(ONE), ValueKeepers::DocumentWith("now"));
    EXPECT_EQ(Jobs().LoadedJob(), "default");
    EXPECT_EQ(changes, 1U);
    auto const list = Jobs().List();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_TRUE(list[0].name.Text() == "copy" && !list[0].isLoaded && list[0].bytes > 0);
    EXPECT_TRUE(list[1].name.Text() == "default" && list[1].isLoaded && !list[1].isModified);
}

TEST_F(JobManagerTest, GivesAndTakesJobsAsFiles)
{
    Start();
    Keepers().Set("One", "sent");
    Jobs().SaveAs(JobName("default"));
    std::string const bytes = Jobs().Download(JobName("default"));

    EXPECT_TRUE(Jobs().Upload(JobName("new"), bytes));
    EXPECT_FALSE(Jobs().Upload(JobName("new"), bytes));
    EXPECT_EQ(In("new"), In("default"));
    EXPECT_EQ(
        RefusalOf([&] { Jobs().Upload(JobName("default"), bytes); }),
        (Refusal{Zu::Status::WRONG_STATE, "The job 'default' is loaded: load another one before it is replaced"}));
    EXPECT_EQ(RefusalOf([&] { Jobs().Upload(JobName("new"), "no archive"); }).status, Zu::Status::BAD_FORMAT);
    EXPECT_EQ(RefusalOf([&] { Jobs().Upload(JobName(".new"), bytes); }).status, Zu::Status::BAD_ARGUMENT);
    EXPECT_EQ(RefusalOf([&] { Jobs().Download(JobName("none")); }),
              (Refusal{Zu::Status::NOT_FOUND, "There is no job 'none'"}));
    EXPECT_EQ(In("new"), In("default"));
}

TEST_F(JobManagerTest, RemovesAllButTheLoadedJob)
{
    Start();
    Jobs().SaveAs(JobName("other"));

    Jobs().Remove(JobName("other"));

    EXPECT_FALSE(std::filesystem::exists(FileOf("other")));
    EXPECT_EQ(RefusalOf([&] { Jobs().Remove(JobName("other")); }),
              (Refusal{Zu::Status::NOT_FOUND, "There is no job 'other'"}));
    EXPECT_EQ(RefusalOf([&] { Jobs().Remove(JobName("default")); }),
              (Refusal{Zu::Status::WRONG_STATE, "The job 'default' is loaded: load another one before it is deleted"}));
}

TEST(JobManagerOnABadDisk, TriesAgainUntilThereIsRoom)
{
    ZuTest::MountedFolder const disk("256k");
    if (!disk.IsMounted())
    {
        GTEST_SKIP() << "this process may not mount a file system";
    }
    ZuTest::JobDesk desk(disk.Path());
    desk.jobs.Begin(JobName("default"));
    desk.jobs.Run();
    ZuTest::LogRecorder const log;
    WriteBytes(disk.Path() / "filler", std::string(400'000, 'x'));
    std::string large;
    for (unsigned i = 0; large.size() < 60'000; ++i)
    {
        large += std::to_string(i * i * 7919U);
    }

    desk.keepers.Set("One", large);
    std::string const text =
        "The job 'default' cannot be saved: The file 'default.zpjob' cannot be used: database or disk "
        "is full";
    ASSERT_TRUE(WaitFor([&] { return desk.keepers.calls.Count("save 2") >= 5; })); // tries more than once
    ASSERT_EQ(desk.problems.Count(), 1U);
    EXPECT_EQ(desk.problems.List()[0].text, text);
    EXPECT_EQ(log.CountOfText(text), 1U);
    EXPECT_TRUE(desk.jobs.List()[0].isModified);
    EXPECT_EQ(RefusalOf([&] { desk.jobs.LoadJob("default"); }).status, Zu::Status::FAILURE);
    EXPECT_EQ(desk.keepers.values.at("One"), large) << "what cannot be saved is not given up for another job";

    std::filesystem::remove(disk.Path() / "filler");
    ASSERT_TRUE(WaitFor([&] { return log.CountOfText("The job 'default' is saved again") == 1U; }));
    EXPECT_EQ(desk.problems.Count(), 0U); // the problem is removed before the line is logged
    EXPECT_EQ(Archive(disk.Path() / "default.zpjob", Access::READ).Read().entries.at(ONE),
              ValueKeepers::DocumentWith(large));
}

TEST(JobManagerOnABadDisk, LeavesRoomForTheLoadedJobWhateverClientsCopy)
{
    ZuTest::MountedFolder const disk("6m");
    if (!disk.IsMounted())
    {
        GTEST_SKIP() << "this process may not mount a file system";
    }
    ZuTest::JobDesk desk(disk.Path());
    desk.jobs.Begin(JobName("default"));
    std::string large; // compresses badly
    for (unsigned i = 0; large.size() < 200'000; ++i)
    {
        large += std::to_string(i * i * 7919U);
    }
    desk.keepers.Set("One", large);
    desk.jobs.SaveAs(JobName("default"));
    std::string const uploaded = desk.jobs.Download(JobName("default"));

    Refusal refusal;
    for (int number = 0; number < 100 && refusal.status != Zu::Status::FULL; ++number)
    {
        refusal = RefusalOf([&] { desk.jobs.SaveAs(JobName("copy" + std::to_string(number))); });
    }

    EXPECT_EQ(refusal.status, Zu::Status::FULL) << refusal.text;
    EXPECT_EQ(RefusalOf([&] { desk.jobs.Upload(JobName("sent"), uploaded); }).status, Zu::Status::FULL);
    std::ranges::reverse(large);
    desk.keepers.Set("One", large + large);
    desk.jobs.SaveAs(JobName("default"));
    EXPECT_EQ(desk.problems.Count(), 0U);
}

TEST(JobManagerOnABadDisk, EndsWithTheReasonWhenTheLastSaveFails)
{
    ZuTest::MountedFolder const disk("8m");
    if (!disk.IsMounted())
    {
        GTEST_SKIP() << "this process may not mount a file system";
    }
    ZuTest::JobDesk desk(disk.Path());
    desk.jobs.Begin(JobName("default"));
    desk.keepers.Set("One", "changed");
    ASSERT_TRUE(disk.MakeReadOnly());

    EXPECT_EQ(RefusalOf([&] { desk.jobs.Close(); }),
              (Refusal{Zu::Status::FAILURE,
                       "The job 'default' cannot be saved: The file 'default.zpjob' cannot be used: attempt to write a "
                       "readonly database"}));
    EXPECT_EQ(RefusalOf([&] { desk.jobs.SaveAs(JobName("default")); }).status, Zu::Status::WRONG_STATE);
}

TEST(JobManagerOnABadDisk, LoadsFromOneThatCannotBeWritten)
{
    ZuTest::MountedFolder const disk("8m");
    if (!disk.IsMounted())
    {
        GTEST_SKIP() << "this process may not mount a file system";
    }
    {
        ZuTest::JobDesk desk(disk.Path());
        desk.jobs.Begin(JobName("default"));
        desk.keepers.Set("One", "kept");
        desk.jobs.SaveAs(JobName("other"));
    }
    ASSERT_TRUE(disk.MakeReadOnly());

    ZuTest::JobDesk desk(disk.Path());
    desk.jobs.Begin(JobName("default"));
    desk.jobs.Run();
    EXPECT_EQ(desk.keepers.values.at("One"), "kept");
    desk.jobs.LoadJob("other");
    EXPECT_EQ(desk.problems.Count(), 0U);

    desk.keepers.Set("One", "changed");
    EXPECT_TRUE(WaitFor([&] { return desk.problems.Count() == 1; }));
    EXPECT_EQ(desk.problems.List()[0].text, "The job 'other' cannot be saved: The file 'other.zpjob' cannot be used: "
                                            "attempt to write a readonly database");
    EXPECT_EQ(desk.keepers.values.at("One"), "changed");
}

} // namespace ZuHost
