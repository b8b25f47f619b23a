#include "Host/Security/RefusalGatherer.h"

#include "Support/RecordingTrail.h"

#include <gtest/gtest.h>

#include <optional>

namespace ZuHost
{

namespace
{

class RefusalGathererTest : public testing::Test
{
protected:
    void Refuse(std::string const& from, unsigned times = 1)
    {
        for (unsigned i = 0; i < times; ++i)
        {
            notes->Note({"", from, "GET /", "", "", "401"});
        }
    }

    uint64 nowUsec = 1;
    ZuTest::RecordingTrail trail;
    std::optional<RefusalGatherer> notes{std::in_place, trail, [this] { return nowUsec; }};
};

} // namespace

TEST_F(RefusalGathererTest, NotesTheFirstOfABurstAndTheNumberOfTheOthers)
{
    Refuse("a", 4);
    Refuse("b");
    EXPECT_EQ(trail.Lines(), (std::vector<std::string>{" | a | GET / |  |  | 401", " | b | GET / |  |  | 401"}));

    trail.Clear();
    nowUsec += RefusalGatherer::PERIOD_USEC;
    Refuse("b");
    EXPECT_EQ(trail.Lines(),
              (std::vector<std::string>{" | a | 3 more refusals |  |  | refused", " | b | GET / |  |  | 401"}));

    trail.Clear();
    Refuse("a");
    EXPECT_EQ(trail.Lines(), (std::vector<std::string>{" | a | GET / |  |  | 401"})) << "a burst of its own";
}

TEST_F(RefusalGathererTest, NotesTheNumbersAtItsEnd)
{
    Refuse("a", 3);
    trail.Clear();

    notes.reset();

    EXPECT_EQ(trail.Lines(), (std::vector<std::string>{" | a | 2 more refusals |  |  | refused"}));
}

TEST_F(RefusalGathererTest, GathersTheSourcesThatItCannotRemember)
{
    for (std::size_t i = 0; i < RefusalGatherer::MAX_BURSTS + 10; ++i)
    {
        Refuse(std::to_string(i));
    }
    EXPECT_EQ(trail.All().size(), RefusalGatherer::MAX_BURSTS + 1) << "the first of the further ones too";
    trail.Clear();

    notes.reset();

    EXPECT_EQ(trail.Lines(), (std::vector<std::string>{" | other sources | 9 more refusals |  |  | refused"}));
}

} // namespace ZuHost
