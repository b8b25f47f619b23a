#include "Ctl/Connection/EventReader.h"

#include "Ctl/Outcome/Failure.h"

#include <gtest/gtest.h>

#include <vector>

namespace ZuCtl
{

namespace
{

std::vector<std::string> ReadAll(std::vector<std::string> const& parts)
{
    EventReader reader;
    std::vector<std::string> events;
    for (std::string const& part : parts)
    {
        reader.Read(part, [&](EventReader::Event const& event) {
            events.push_back(event.name + '|' + event.data);
            return true;
        });
    }
    return events;
}

} // namespace

TEST(EventReader, MakesEventsOfAnyCutOfTheBytes)
{
    std::string const bytes = ": comment\n\nid: 7\ndata: {\"a\":1}\n\nevent: end\r\ndata:x\r\ndata: y\r\n\r\n";
    std::vector<std::string> const expected{"|{\"a\":1}", "end|x\ny"};
    std::vector<std::string> letters;
    for (char const letter : bytes)
    {
        letters.emplace_back(1, letter);
    }
    EXPECT_EQ(ReadAll({bytes}), expected);
    EXPECT_EQ(ReadAll(letters), expected);
}

TEST(EventReader, EndsWhenTheReceiverHasEnough)
{
    EventReader reader;
    int events = 0;
    EXPECT_FALSE(reader.Read("data: 1\n\ndata: 2\n\n", [&](EventReader::Event const&) {
        ++events;
        return false;
    }));
    EXPECT_EQ(events, 1);
}

TEST(EventReader, RefusesAnEventWithoutEnd)
{
    EventReader reader;
    std::string const part(EventReader::MAX_EVENT_BYTES / 2, 'x');
    auto const take = [](EventReader::Event const&) { return true; };
    reader.Read("data: " + part, take);
    reader.Read(part.substr(6), take);
    try
    {
        reader.Read("x", take);
        ADD_FAILURE();
    }
    catch (Failure const& failure)
    {
        EXPECT_EQ(failure.Status(), ExitStatus::NOT_A_SENSOR);
    }
}

} // namespace ZuCtl
