#include "ZuCommon/Problems.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace ZuCommon
{

class ProblemsTrackerTest : public testing::Test
{
protected:
    void Note(char const* text)
    {
        tracker->Register(problems.Add(1, "test", "%1$s", text));
    }

    using Texts = std::vector<std::string>;

    Texts Standing() const
    {
        Texts texts;
        for (auto const& problem : problems.List())
        {
            texts.push_back(problem.text);
        }
        return texts;
    }

    ProblemsManager problems;
    std::optional<ProblemsTracker> tracker{&problems};
};

TEST_F(ProblemsTrackerTest, ReplacesTheProblemsOfTheBracketBefore)
{
    tracker->Begin();
    Note("old");
    tracker->End();

    tracker->Begin();
    Note("new");
    tracker->End();

    EXPECT_EQ(Standing(), Texts{"new"});
    EXPECT_EQ(tracker->Count(), 1U);
}

TEST_F(ProblemsTrackerTest, ClearsThemWithABracketWithoutProblems)
{
    tracker->Begin();
    Note("old");
    tracker->End();

    tracker->Begin();
    EXPECT_EQ(Standing(), Texts{"old"}); // until the bracket ends
    tracker->End();

    EXPECT_EQ(Standing(), Texts{});
    EXPECT_EQ(tracker->Count(), 0U);
}

TEST_F(ProblemsTrackerTest, KeepsTheInnerProblemsWhenTheOuterBracketHasNone)
{
    tracker->Begin();
    tracker->Begin();
    Note("inner");
    tracker->End();
    tracker->End();

    EXPECT_EQ(Standing(), Texts{"inner"});
    EXPECT_EQ(tracker->Count(), 1U);
}

TEST_F(ProblemsTrackerTest, ReplacesTheInnerProblemsByThoseOfTheOuterBracket)
{
    tracker->Begin();
    tracker->Begin();
    Note("inner");
    tracker->End();
    Note("outer");
    tracker->End();

    EXPECT_EQ(Standing(), Texts{"outer"});
}

TEST_F(ProblemsTrackerTest, KeepsNothingOfAnInnerBracketThatALaterOneCleared)
{
    tracker->Begin();
    tracker->Begin();
    Note("inner");
    tracker->End();
    tracker->Begin();
    tracker->End();
    tracker->End();

    EXPECT_EQ(Standing(), Texts{});
}

TEST_F(ProblemsTrackerTest, IsNotHeldUpByABracketThatNeverCloses)
{
    tracker->Begin();
    Note("held");
    tracker->End();
    tracker->Begin(); // never closed

    tracker->Begin();
    tracker->End();

    EXPECT_EQ(Standing(), Texts{});
    EXPECT_EQ(tracker->Count(), 0U);
}

TEST_F(ProblemsTrackerTest, KeepsWhatAnotherThreadReportsWhileABracketIsOpen)
{
    tracker->Begin();
    std::thread([this] {
        tracker->Begin();
        Note("reported");
        tracker->End();
    }).join();

    tracker->End();

    EXPECT_EQ(Standing(), Texts{"reported"});
}

TEST_F(ProblemsTrackerTest, HoldsAtOnceWhatIsRegisteredOutsideOfBrackets)
{
    tracker->End(); // no bracket is open

    Note("loose");

    EXPECT_EQ(tracker->Count(), 1U);
}

TEST_F(ProblemsTrackerTest, TakesItsProblemsAlongWhenItGoes)
{
    problems.Add(1, "other", "stays");
    tracker->Begin();
    Note("settled");
    tracker->End();
    tracker->Begin();
    Note("still open");

    tracker.reset();

    EXPECT_EQ(Standing(), Texts{"stays"});
}

} // namespace ZuCommon
