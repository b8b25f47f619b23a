#include "ZuCommon/Persistence.h"

#include "ZuApi/Exception.h"

#include <gtest/gtest.h>

#include <thread>

namespace ZuCommon
{

using Names = std::vector<std::string>;

TEST(PersistManager, LoadsAJobByItsNameWithOrWithoutTheSuffix)
{
    PersistManager jobs({"table.zpjob", "default"});

    EXPECT_EQ(jobs.LoadedJob(), "");
    jobs.LoadJob("table");
    EXPECT_EQ(jobs.LoadedJob(), "table");
    jobs.LoadJob("default.zpjob");
    EXPECT_EQ(jobs.LoadedJob(), "default");
    EXPECT_EQ(jobs.Jobs(), (Names{"default", "table"}));
}

TEST(PersistManager, RefusesAnUnknownJobAndKeepsTheOneBefore)
{
    PersistManager jobs({"default"});
    jobs.LoadJob("default");

    try
    {
        jobs.LoadJob("50%s");
        FAIL() << "an unknown job was loaded";
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(exception.Status(), Zu::Status::NOT_FOUND);
        EXPECT_STREQ(exception.what(), "There is no job '50%s'");
    }
    EXPECT_EQ(jobs.LoadedJob(), "default");
}

TEST(PersistManager, KnowsEachNameOnceAndNoEmptyOne)
{
    PersistManager jobs;

    jobs.AddJob("a");
    jobs.AddJob("a.zpjob");

    EXPECT_EQ(jobs.Jobs(), Names{"a"});
    EXPECT_THROW(jobs.AddJob(".zpjob"), Zu::Exception);
}

TEST(PersistManager, TakesLoadsAndQuestionsAtTheSameTime)
{
    PersistManager jobs({"a", "b"});

    std::thread other([&jobs] {
        for (int i = 0; i < 500; ++i)
        {
            jobs.LoadJob(i % 2 == 0 ? "a" : "b");
        }
    });
    bool sound = true;
    for (int i = 0; i < 500; ++i)
    {
        std::string const loaded = jobs.LoadedJob();
        sound = sound && (loaded.empty() || loaded == "a" || loaded == "b");
    }
    other.join();

    EXPECT_TRUE(sound);
    EXPECT_EQ(jobs.LoadedJob(), "b");
}

} // namespace ZuCommon
