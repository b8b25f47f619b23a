#include "ZuRest/ResourceLocks.h"

#include "Support/AdvancedCalendar.h"
#include "Support/AllocationFailure.h"
#include "wApi/wTime.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <map>
#include <new>
#include <thread>

namespace ZuRest
{

namespace
{

using Mode = ResourceLocks::Mode;

} // namespace

class ResourceLocksTest : public testing::Test
{
protected:
    void Enter(std::string const& name, std::string const& path, Mode mode)
    {
        locks.Enter(Place::Of(path), mode, [this, name](auto pass) { running[name] = std::move(pass); });
    }

    void Leave(std::string const& name)
    {
        auto const pass = running.extract(name); // destroyed outside of the map: admitted requests change it
    }

    bool Runs(std::string const& name) const
    {
        return running.contains(name);
    }

    std::map<std::string, std::shared_ptr<ResourceLocks::Pass>> running; // passes may outlive the locks
    ResourceLocks locks{{Place::Of("/tree/free")}};
};

TEST_F(ResourceLocksTest, LetsReadsOfOnePlaceRunSideBySide)
{
    Enter("a", "/controls/x", Mode::READ);
    Enter("b", "/controls/x/outputs", Mode::READ);

    EXPECT_TRUE(Runs("a") && Runs("b"));
}

TEST_F(ResourceLocksTest, LetsAChangeRunAlone)
{
    Enter("read", "/controls/x", Mode::READ);
    Enter("change", "/controls/x/outputs", Mode::CHANGE);
    Enter("later", "/controls/x", Mode::READ);
    EXPECT_FALSE(Runs("change") || Runs("later"));

    Leave("read");
    EXPECT_TRUE(Runs("change"));
    EXPECT_FALSE(Runs("later"));

    Leave("change");
    EXPECT_TRUE(Runs("later"));
}

TEST_F(ResourceLocksTest, KnowsAPlaceHoweverItsPathIsEncoded)
{
    Enter("change", "/controls/x", Mode::CHANGE);
    Enter("read", "/control%73/%78/outputs", Mode::READ);

    EXPECT_FALSE(Runs("read"));
}

TEST_F(ResourceLocksTest, HoldsNobodyUpWhoAsksForAnotherPlace)
{
    Enter("change", "/controls/x", Mode::CHANGE);
    Enter("other", "/controls/y", Mode::READ);
    Enter("list", "/controls", Mode::READ);
    Enter("job", "/jobs/x", Mode::CHANGE);

    EXPECT_TRUE(Runs("other") && Runs("list") && Runs("job"));
}

TEST_F(ResourceLocksTest, RunsTheChangesOfATreeOneAtATime)
{
    Enter("first", "/controls/x", Mode::CHANGE);
    Enter("second", "/controls/y", Mode::CHANGE);
    Enter("read", "/controls/y", Mode::READ);
    EXPECT_FALSE(Runs("second"));
    EXPECT_TRUE(Runs("read")) << "a change that could not run yet held up a read";

    Leave("first");
    EXPECT_FALSE(Runs("second"));
    Leave("read");
    EXPECT_TRUE(Runs("second"));
}

TEST_F(ResourceLocksTest, CallsThoseWhoWaitInTheOrderOfArrival)
{
    Enter("first", "/controls/x", Mode::CHANGE);
    Enter("second", "/controls/x", Mode::CHANGE);
    Enter("third", "/controls/x", Mode::CHANGE);

    Leave("first");
    EXPECT_TRUE(Runs("second"));
    EXPECT_FALSE(Runs("third"));
}

TEST_F(ResourceLocksTest, LetsAReadFromTheInsidePassThoseWhoWait)
{
    Enter("read", "/controls/x", Mode::READ);
    Enter("change", "/controls/x", Mode::CHANGE);

    auto const inner = locks.EnterInner(Place::Of("/controls/x"), true, 0);

    EXPECT_NE(inner.pass, nullptr);
    EXPECT_EQ(inner.before, nullptr);
    Leave("read");
    EXPECT_FALSE(Runs("change"));
}

TEST_F(ResourceLocksTest, ShowsWhatWasBeforeTheChangeThatRuns)
{
    Enter("change", "/controls/x", Mode::CHANGE);
    auto const before = std::make_shared<nlohmann::json const>("before");
    running.at("change")->ShowBefore(before);

    EXPECT_EQ(locks.EnterInner(Place::Of("/controls/x"), true, 0).before, before);
    auto const refused = locks.EnterInner(Place::Of("/controls/x/outputs"), false, 0);
    EXPECT_TRUE(refused.before == nullptr && refused.pass == nullptr);
    Leave("change");
    EXPECT_NE(locks.EnterInner(Place::Of("/controls/x"), true, 0).pass, nullptr);
}

TEST_F(ResourceLocksTest, LetsAReadFromTheInsideWaitForAChange)
{
    Enter("change", "/controls/x", Mode::CHANGE);
    std::shared_ptr<ResourceLocks::Pass> pass;
    std::thread reader([&] { pass = locks.EnterInner(Place::Of("/controls/x"), false, 30'000'000).pass; });

    Leave("change");
    reader.join();

    EXPECT_NE(pass, nullptr);
}

TEST_F(ResourceLocksTest, RefusesAReadFromTheInsideInTimeWhenTheClockIsSetBack)
{
    ZuTest::AdvancedCalendar const calendar(20);
    Enter("change", "/controls/x", Mode::CHANGE);
    uint64 const beginUsec = wTime_NowUsec();

    EXPECT_EQ(locks.EnterInner(Place::Of("/controls/x"), false, 10'000).pass, nullptr);

    EXPECT_LT(wTime_NowUsec() - beginUsec, 10'000'000u);
    Leave("change");
}

TEST_F(ResourceLocksTest, LetsAChangeOfAWholeTreeRunAloneInIt)
{
    Enter("read", "/controls/x", Mode::READ);
    Enter("change", "/controls/y", Mode::CHANGE);
    Enter("tree", "/controls", Mode::CHANGE_TREE);
    EXPECT_FALSE(Runs("tree"));

    Leave("change");
    Enter("later read", "/controls/z", Mode::READ);
    Enter("later change", "/controls/z", Mode::CHANGE);
    Enter("elsewhere", "/jobs/x", Mode::CHANGE);
    EXPECT_FALSE(Runs("tree") || Runs("later read") || Runs("later change"));
    EXPECT_TRUE(Runs("elsewhere"));

    Leave("read");
    EXPECT_TRUE(Runs("tree"));
    EXPECT_FALSE(Runs("later read") || Runs("later change"));

    Leave("tree");
    EXPECT_TRUE(Runs("later read"));
    Leave("later read");
    EXPECT_TRUE(Runs("later change"));
}

TEST_F(ResourceLocksTest, ShowsWhatWasBeforeAChangeOfTheWholeTreeToAllButTheOneWhoMakesIt)
{
    Enter("tree", "/controls", Mode::CHANGE_TREE);
    auto const before = std::make_shared<nlohmann::json const>("before");
    running.at("tree")->ShowBeforeAt(Place::Of("/controls/x"), before);

    ResourceLocks::InnerPass shown;
    ResourceLocks::InnerPass refused;
    std::thread([&] {
        shown = locks.EnterInner(Place::Of("/controls/x"), true, 0);
        refused = locks.EnterInner(Place::Of("/controls/y"), true, 0);
    }).join();
    EXPECT_EQ(shown.before, before);
    EXPECT_TRUE(refused.pass == nullptr && refused.before == nullptr);
    EXPECT_NE(locks.EnterInner(Place::Of("/controls/x"), true, 0).pass, nullptr);

    Leave("tree");
    EXPECT_NE(locks.EnterInner(Place::Of("/controls/y"), true, 0).pass, nullptr);
    EXPECT_EQ(locks.EnterInner(Place::Of("/controls/x"), true, 0).before, nullptr);
}

TEST(ResourceLocks, ForgetsThoseWhoWaitWhenItEnds)
{
    auto gone = std::make_unique<ResourceLocks>();
    std::shared_ptr<ResourceLocks::Pass> running;
    bool isCalled = false;
    gone->Enter(Place::Of("/a"), Mode::CHANGE, [&running](auto pass) { running = std::move(pass); });
    gone->Enter(Place::Of("/a"), Mode::CHANGE, [&isCalled](auto) { isCalled = true; });

    gone.reset();
    running.reset();

    EXPECT_FALSE(isCalled);
}

TEST_F(ResourceLocksTest, GoesOnBehindOneWhoThrows)
{
    Enter("first", "/controls/x", Mode::CHANGE);
    locks.Enter(Place::Of("/controls/x"), Mode::CHANGE, [](auto) { throw std::runtime_error("no thread for it"); });
    Enter("third", "/controls/x", Mode::CHANGE);

    Leave("first");

    EXPECT_TRUE(Runs("third"));
}

TEST_F(ResourceLocksTest, LetsInOrRefusesWhenTheMemoryGivesOutAndKeepsNoPlaceTaken)
{
    Place const place = Place::Of("/a tree whose name needs memory of its own/and a place too, of course");
    for (Mode const mode : {Mode::READ, Mode::CHANGE, Mode::CHANGE_TREE})
    {
        uint64 number = 0;
        for (bool hasFailed = true; hasFailed && number < 1000;)
        {
            SCOPED_TRACE("allocation " + std::to_string(++number));
            std::shared_ptr<ResourceLocks::Pass> pass;
            ResourceLocks::Admitted const admitted = [&pass](auto given) { pass = std::move(given); };
            bool isRefused = false;
            {
                ZuTest::AllocationFailure const failure(number);
                try
                {
                    locks.Enter(place, mode, admitted);
                }
                catch (std::bad_alloc const&)
                {
                    isRefused = true;
                }
                hasFailed = failure.HasHappened();
            }
            EXPECT_EQ(isRefused, pass == nullptr);
            EXPECT_EQ(isRefused, hasFailed);

            pass.reset();
            locks.Enter(place, Mode::CHANGE_TREE, admitted);
            EXPECT_NE(pass, nullptr); // admitted at once: no request is inside
        }
        EXPECT_GT(number, 1u);
    }
}

TEST_F(ResourceLocksTest, RunsChangesOfAnIndependentPlaceBesideThoseOfItsTree)
{
    Enter("slow", "/tree/a", Mode::CHANGE);
    Enter("other", "/tree/b", Mode::CHANGE);
    Enter("independent", "/tree/free/x", Mode::CHANGE);
    Enter("second", "/tree/free/y", Mode::CHANGE);
    Enter("read", "/tree/free/x", Mode::READ);

    EXPECT_TRUE(Runs("slow"));
    EXPECT_FALSE(Runs("other"));
    EXPECT_TRUE(Runs("independent"));
    EXPECT_FALSE(Runs("second")) << "of the same place";
    EXPECT_FALSE(Runs("read"));
    Leave("independent");
    EXPECT_TRUE(Runs("second"));
    Leave("slow");
    EXPECT_TRUE(Runs("other"));
}

TEST_F(ResourceLocksTest, ChangesAWholeTreeWithItsIndependentPlaces)
{
    Enter("independent", "/tree/free", Mode::CHANGE);
    Enter("load", "/tree", Mode::CHANGE_TREE);
    Enter("late", "/tree/free", Mode::CHANGE);
    EXPECT_FALSE(Runs("load"));
    Leave("independent");
    EXPECT_TRUE(Runs("load"));
    EXPECT_FALSE(Runs("late"));
    Leave("load");
    EXPECT_TRUE(Runs("late"));
}

TEST_F(ResourceLocksTest, LetsNoIndependentChangePassAWaitingChangeOfTheTree)
{
    Enter("slow", "/tree/a", Mode::CHANGE);
    Enter("load", "/tree", Mode::CHANGE_TREE);
    Enter("late", "/tree/free", Mode::CHANGE);
    EXPECT_FALSE(Runs("late"));
    Leave("slow");
    EXPECT_TRUE(Runs("load"));
    Leave("load");
    EXPECT_TRUE(Runs("late"));
}

} // namespace ZuRest
