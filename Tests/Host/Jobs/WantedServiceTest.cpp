#include "Host/Jobs/JobDesk.h"
#include "Host/Store/Archive.h"

#include <gtest/gtest.h>

namespace ZuHost
{

namespace
{

using Access = SqliteFile::Access;
using Files = ArchiveContents::Files;
using ZuTest::ValueKeepers;

constexpr char const* ONE = "controls/One/config.json";
constexpr char const* TWO = "controls/Two/config.json";
constexpr char const* SENTENCE =
    "Service One could not be started (the port is taken). The host tries again within 1 second.";

} // namespace

/// Jobs with a service "One", which fails to start while `isPortTaken`.
class WantedServiceTest : public testing::Test
{
protected:
    WantedServiceTest()
    {
        WriteJob("default", ValueKeepers::DocumentWith("one"));
        WriteJob("other", ValueKeepers::DocumentWith("other"));
        WriteJob("off", ValueKeepers::DocumentWith("off", false));
        desk.emplace(scratch.path);
        desk->keepers.onLoad = [this] { Load(); };
    }

    void WriteJob(std::string const& name, std::string const& documentOfOne) const
    {
        Archive(FileOf(name), Access::CREATE)
            .Write({{ONE, documentOfOne}, {TWO, ValueKeepers::DocumentWith("two")}}, {});
    }

    /// Does the work of the module at the end of a load: starts the service, unless the job has disabled it ("off").
    void Load()
    {
        bool const isToRun = desk->keepers.values.at("One") != "off";
        desk->keepers.stopped.clear();
        if (!isToRun || isPortTaken)
        {
            desk->keepers.stopped.insert("One");
        }
        if (isToRun && isPortTaken)
        {
            desk->failedStarts = {{"One", ++failedCount, "the port is taken"}};
            desk->registry.MarkModified(desk->keepers, ZuCommon::PersistDomain::JOB, 0);
        }
    }

    std::filesystem::path FileOf(std::string const& job) const
    {
        return scratch / (job + ".zpjob");
    }

    Files In(std::string const& job) const
    {
        return Archive(FileOf(job), Access::READ).Read().entries;
    }

    std::size_t ProblemCount() const
    {
        return desk->problems.List().size();
    }

    ZuTest::ScratchFolder scratch;
    std::optional<ZuTest::JobDesk> desk;
    bool isPortTaken = true;
    uint64 failedCount = 0;
};

TEST_F(WantedServiceTest, StaysEnabledInItsJobThoughItsStartFails)
{
    std::string const written = R"({"version": "1", "zu:control": {"parameters": {"value": "one"}, "enabled": true}})";
    WriteJob("default", written);

    desk->jobs.Begin(JobName("default"));
    desk->jobs.Close();

    EXPECT_EQ(In("default").at(ONE), written) << "nothing differs that would have to be saved";
    EXPECT_FALSE(In("default").contains(std::string("rejected/") + ONE));
    EXPECT_EQ(ProblemCount(), 1U);
}

TEST_F(WantedServiceTest, IsReportedAsSkippedWithTheReason)
{
    desk->jobs.Begin(JobName("default"));

    LoadReport const report = desk->jobs.Report(JobName("default"));

    ASSERT_EQ(report.protocols.size(), 2U);
    EXPECT_EQ(report.protocols[0],
              (LoadReport::Protocol{"One", true, false, false, {"parameters"}, {}, {"enabled"}, {SENTENCE}}));
    EXPECT_EQ(report.protocols[1],
              (LoadReport::Protocol{"Two", true, false, false, {"enabled", "parameters"}, {}, {}, {}}));
}

TEST_F(WantedServiceTest, IsSavedAsEnabledWithWhatElseChanges)
{
    desk->jobs.Begin(JobName("default"));
    desk->keepers.Set("One", "changed");

    desk->jobs.SaveAs(JobName("copy"));

    nlohmann::json const expected = nlohmann::json::parse(ValueKeepers::DocumentWith("changed"));
    EXPECT_EQ(nlohmann::json::parse(In("default").at(ONE)), expected);
    EXPECT_EQ(nlohmann::json::parse(In("copy").at(ONE)), expected);
    EXPECT_EQ(ProblemCount(), 1U);
}

TEST_F(WantedServiceTest, IsSavedAsItIsBehindARequestThatSaysSo)
{
    desk->jobs.Begin(JobName("default"));

    desk->startRetry.RunUpdate("/controls/One", {{"enabled", false}}, [] {});
    EXPECT_TRUE(desk->jobs.List().front().isModified);
    desk->jobs.Close();

    EXPECT_EQ(In("default").at(ONE), ValueKeepers::DocumentWith("one", false));
    EXPECT_EQ(ProblemCount(), 0U);
}

TEST_F(WantedServiceTest, IsForgottenWithTheLoadOfAnotherJobAndStaysEnabledInItsOwn)
{
    desk->jobs.Begin(JobName("default"));

    desk->jobs.LoadJob("off");
    desk->jobs.Close();

    EXPECT_EQ(ProblemCount(), 0U);
    EXPECT_EQ(In("default").at(ONE), ValueKeepers::DocumentWith("one"));
    EXPECT_EQ(In("off").at(ONE), ValueKeepers::DocumentWith("off", false));
}

TEST_F(WantedServiceTest, IsWantedAnewByTheNextJobThatEnablesIt)
{
    desk->jobs.Begin(JobName("off"));
    EXPECT_EQ(ProblemCount(), 0U);

    desk->jobs.LoadJob("other");
    EXPECT_EQ(desk->startRetry.Wanted(), (std::map<std::string, std::string>{{"One", SENTENCE}}));
    isPortTaken = false;
    desk->jobs.LoadJob("default");

    EXPECT_TRUE(desk->startRetry.Wanted().empty());
    EXPECT_EQ(ProblemCount(), 0U);
}

TEST_F(WantedServiceTest, IsWantedThoughTheLoadBreaksOff)
{
    desk->jobs.Begin(JobName("off"));
    desk->keepers.onLoad = [this] {
        Load();
        throw std::runtime_error("a listener failed");
    };

    EXPECT_THROW(desk->jobs.LoadJob("default"), std::runtime_error);
    desk->jobs.Close();

    EXPECT_EQ(nlohmann::json::parse(In("default").at(ONE)), nlohmann::json::parse(ValueKeepers::DocumentWith("one")));
}

} // namespace ZuHost
