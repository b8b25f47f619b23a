#include "Plugins/SparkplugMqtt/EdgeNodeSession.h"

#include <gtest/gtest.h>

#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace SparkplugMqtt
{

namespace
{

/// Takes a varint of at most 64 bits at `place`.
uint64 Varint(std::span<uint8 const> bytes, std::size_t& place)
{
    uint64 number = 0;
    for (unsigned shift = 0;; shift += 7)
    {
        uint8 const byte = bytes[place++];
        number |= static_cast<uint64>(byte & 0x7F) << shift;
        if (byte < 0x80)
        {
            return number;
        }
    }
}

std::string TextOf(CommandMetric const& metric)
{
    if (bool const* const value = std::get_if<bool>(&metric.value); value != nullptr)
    {
        return metric.name + "=" + (*value ? "true" : "false");
    }
    uint64 const* const number = std::get_if<uint64>(&metric.value);
    return metric.name + "=" + (number != nullptr ? std::to_string(*number) : "?");
}

/// A payload as text, such as "t=5 seq=0 bdSeq=1".
std::string TextOf(std::span<uint8 const> payload)
{
    std::string text;
    for (std::size_t place = 0; place < payload.size();)
    {
        uint64 const tag = Varint(payload, place);
        uint64 const number = Varint(payload, place);
        place += tag == 0x12 ? number : 0;
        text += tag == 0x08 ? "t=" + std::to_string(number) : "";
        text += tag == 0x18 ? " seq=" + std::to_string(number) : "";
    }
    std::vector<CommandMetric> metrics;
    EXPECT_TRUE(DecodeCommand(payload, metrics));
    for (CommandMetric const& metric : metrics)
    {
        text += " " + TextOf(metric);
    }
    return text;
}

/// Records the calls of the session.
class FakeLink final : public IServerLink, public INodeContent
{
public:
    void Connect(std::size_t server, Will const& will) override
    {
        calls.push_back("connect " + std::to_string(server) + " will " + will.topic + " " + TextOf(will.payload));
    }

    void Subscribe(std::vector<std::string> const& topics) override
    {
        std::string call = "subscribe";
        for (std::string const& topic : topics)
        {
            call += " " + topic;
        }
        calls.push_back(call);
    }

    void Publish(std::string const& topic, std::span<uint8 const> payload) override
    {
        calls.push_back(topic.substr(topic.find('/', 8) + 1) + " " + TextOf(payload));
    }

    void Disconnect(bool isOrderly) override
    {
        calls.push_back(isOrderly ? "disconnect" : "drop");
    }

    void WriteNodeBirth(MetricWriter& writer, uint64 utcMsec) override
    {
        writer.Add(
            {.name = "Info", .alias = 1, .timestampMsec = utcMsec, .type = DataType::UINT32, .value = uint32{3}});
    }

    void WriteDeviceBirth(MetricWriter& writer, uint64 utcMsec) override
    {
        writer.Add(
            {.name = "zMax", .alias = 2, .timestampMsec = utcMsec, .type = DataType::UINT32, .value = uint32{4}});
    }

    void DeviceCommand(std::vector<CommandMetric> const& metrics) override
    {
        calls.push_back("command " + TextOf(metrics.at(0)));
    }

    void BirthSequenceChanged(uint8 bdSeq) override
    {
        kept = bdSeq;
    }

    bool IsBirthSequenceKept() override
    {
        return isKept;
    }

    /// The calls since the last question.
    std::vector<std::string> Calls()
    {
        return std::exchange(calls, {});
    }

    std::optional<uint8> kept;
    bool isKept = true;

private:
    std::vector<std::string> calls;
};

using Calls = std::vector<std::string>;

class EdgeNodeSessionTest : public testing::Test
{
protected:
    void Make(std::string const& primaryHost = "", std::size_t servers = 1, std::optional<uint8> lastBdSeq = {})
    {
        session.emplace(EdgeNodeSession::Settings{{"g", "n", "d"}, primaryHost, servers}, link, link, lastBdSeq,
                        [](uint64 most) { return most; });
    }

    /// Connects and subscribes; without a primary host the births follow.
    void Open()
    {
        session->Tick(now);
        session->Connected(now);
        session->Subscribed(now);
    }

    void OpenAndForget(std::string const& primaryHost = "", std::size_t servers = 1)
    {
        Make(primaryHost, servers);
        Open();
        link.Calls();
    }

    void Wait(uint64 msec)
    {
        now.steadyUsec += msec * 1000;
        now.utcMsec += msec;
        session->Tick(now);
    }

    void Receive(std::string const& topic, std::vector<uint8> const& payload)
    {
        session->Received(topic, payload, now);
    }

    void State(bool isOnline, uint64 timestamp, std::string const& host = "h")
    {
        std::string const text = std::string(R"({"online":)") + (isOnline ? "true" : "false") + R"(,"timestamp":)" +
                                 std::to_string(timestamp) + "}";
        Receive("spBv1.0/STATE/" + host, {text.begin(), text.end()});
    }

    /// A request with one metric, a boolean.
    static std::vector<uint8> Request(std::string const& name, bool value)
    {
        MetricWriter writer(256);
        writer.Add({.name = name, .alias = {}, .timestampMsec = 1, .type = DataType::BOOLEAN, .value = value});
        return {writer.Bytes().begin(), writer.Bytes().end()};
    }

    void RequestRebirth(bool value = true)
    {
        Receive("spBv1.0/g/NCMD/n", Request("Node Control/Rebirth", value));
    }

    bool PublishData()
    {
        MetricWriter writer(64);
        writer.Add({.name = {}, .alias = 2, .timestampMsec = now.utcMsec, .type = {}, .value = uint32{5}});
        return session->PublishDeviceData(writer.Bytes(), now);
    }

    static Calls Births(std::string const& utc, std::string const& bdSeq = "0")
    {
        return {"NBIRTH/n t=" + utc + " seq=0 bdSeq=" + bdSeq + " Node Control/Rebirth=false Info=3",
                "DBIRTH/n/d t=" + utc + " seq=1 zMax=4"};
    }

    FakeLink link;
    Moment now{5'000'000, 100};
    std::optional<EdgeNodeSession> session;
};

} // namespace

TEST_F(EdgeNodeSessionTest, HasItsNumberKeptBeforeItConnects)
{
    Make("", 1, 4);
    link.isKept = false;
    session->Tick(now);
    EXPECT_EQ(link.kept, 5);
    Wait(EdgeNodeSession::KEEPING_USEC / 1000 - 1);
    EXPECT_EQ(link.Calls(), Calls{});
    link.isKept = true;
    Wait(0);
    EXPECT_EQ(link.Calls(), Calls{"connect 0 will spBv1.0/g/NDEATH/n t=3099 bdSeq=5"});
}

TEST_F(EdgeNodeSessionTest, ConnectsAlthoughItsNumberCannotBeKept)
{
    Make();
    link.isKept = false;
    session->Tick(now);
    Wait(EdgeNodeSession::KEEPING_USEC / 1000);
    EXPECT_EQ(link.Calls(), Calls{"connect 0 will spBv1.0/g/NDEATH/n t=3100 bdSeq=0"});
}

TEST_F(EdgeNodeSessionTest, GivesBackANumberWithoutAConnection)
{
    Make("", 1, 4);
    link.isKept = false;
    session->Tick(now);
    session->End(now);
    EXPECT_EQ(link.kept, 4);
    EXPECT_EQ(link.Calls(), Calls{});
}

TEST_F(EdgeNodeSessionTest, ConnectsWithTheDeathAsItsWill)
{
    Make();
    session->Tick(now);
    EXPECT_EQ(link.Calls(), Calls{"connect 0 will spBv1.0/g/NDEATH/n t=100 bdSeq=0"});
    EXPECT_EQ(session->PresentPhase(), EdgeNodeSession::Phase::CONNECTING);
}

TEST_F(EdgeNodeSessionTest, SubscribesBeforeItIsBorn)
{
    Make();
    session->Tick(now);
    link.Calls();
    session->Connected(now);
    EXPECT_EQ(link.Calls(), Calls{"subscribe spBv1.0/g/NCMD/n spBv1.0/g/DCMD/n/d"});
    EXPECT_FALSE(session->CanPublish());
    session->Subscribed(now);
    EXPECT_EQ(link.Calls(), Births("100"));
    EXPECT_TRUE(session->CanPublish());
}

TEST_F(EdgeNodeSessionTest, NumbersTheMessagesUpTo255AndFrom0)
{
    OpenAndForget();
    for (unsigned i = 2; i < 600; ++i)
    {
        ASSERT_TRUE(PublishData());
        EXPECT_EQ(link.Calls(), Calls{"DDATA/n/d t=100 seq=" + std::to_string(i % 256) + " =5"});
    }
    EXPECT_EQ(session->Counts().dataMessages, 598U);
}

TEST_F(EdgeNodeSessionTest, TakesNoDataBeforeItsBirths)
{
    Make();
    EXPECT_FALSE(PublishData());
    session->Tick(now);
    EXPECT_FALSE(PublishData());
    session->Connected(now);
    EXPECT_FALSE(PublishData());
}

TEST_F(EdgeNodeSessionTest, CountsItsConnectionsInBdSeqFrom0To255)
{
    Make("", 1, 254);
    Open();
    EXPECT_EQ(link.Calls().front(), "connect 0 will spBv1.0/g/NDEATH/n t=100 bdSeq=255");
    EXPECT_EQ(link.kept, 255);
    session->Lost(now);
    Wait(1000);
    EXPECT_EQ(link.Calls(), Calls{"connect 0 will spBv1.0/g/NDEATH/n t=1100 bdSeq=0"});
    EXPECT_EQ(link.kept, 0);
    session->Connected(now);
    session->Subscribed(now);
    link.Calls();
    Wait(1000);
    EXPECT_EQ(session->Counts().births, 2U);
}

TEST_F(EdgeNodeSessionTest, IsBornAgainOnRequestWithTheSameBdSeq)
{
    OpenAndForget();
    Wait(1500);
    RequestRebirth();
    EXPECT_EQ(link.Calls(), Births("1600"));
    EXPECT_EQ(session->Counts().rebirthRequests, 1U);
    EXPECT_TRUE(PublishData());
    EXPECT_EQ(link.Calls(), Calls{"DDATA/n/d t=1600 seq=2 =5"});
}

TEST_F(EdgeNodeSessionTest, AnswersAFloodOfRequestsWithOneBirthASecond)
{
    OpenAndForget();
    Wait(400);
    for (int i = 0; i < 1000; ++i)
    {
        RequestRebirth();
    }
    EXPECT_EQ(link.Calls(), Calls{});
    EXPECT_FALSE(PublishData()); // data stop at once
    Wait(599);
    EXPECT_EQ(link.Calls(), Calls{});
    Wait(1);
    EXPECT_EQ(link.Calls(), Births("1100"));
    EXPECT_TRUE(PublishData());
    EXPECT_EQ(session->Counts().births, 2U);
    EXPECT_EQ(session->Counts().rebirthRequests, 1000U);
}

TEST_F(EdgeNodeSessionTest, IgnoresARebirthRequestThatIsNotTrue)
{
    OpenAndForget();
    Wait(1500);
    RequestRebirth(false);
    Receive("spBv1.0/g/NCMD/n", Request("Node Control/Reboot", true));
    EXPECT_EQ(link.Calls(), Calls{});
    EXPECT_EQ(session->Counts().commands, 2U);
}

TEST_F(EdgeNodeSessionTest, PassesCommandsOfTheDeviceOn)
{
    OpenAndForget();
    Receive("spBv1.0/g/DCMD/n/d", Request("Command/Start", true));
    EXPECT_EQ(link.Calls(), Calls{"command Command/Start=true"});
}

TEST_F(EdgeNodeSessionTest, CountsMessagesThatItCannotRead)
{
    OpenAndForget("", 1);
    Receive("spBv1.0/g/DCMD/n/d", {0x12});
    Receive("spBv1.0/g/NCMD/n", {'x'});
    Receive("spBv1.0/g/NCMD/other", Request("Node Control/Rebirth", true));
    State(true, 5);
    EXPECT_EQ(link.Calls(), Calls{});
    EXPECT_EQ(session->Counts().badMessages, 4U);
    EXPECT_EQ(session->Counts().commands, 0U);
}

TEST_F(EdgeNodeSessionTest, IsBornAgainWhenItsMetricsChange)
{
    OpenAndForget();
    session->RequestBirth(now);
    EXPECT_FALSE(session->CanPublish());
    Wait(1000);
    EXPECT_EQ(link.Calls(), Births("1100"));
}

TEST_F(EdgeNodeSessionTest, EndsWithItsDeaths)
{
    OpenAndForget();
    session->End(now);
    EXPECT_EQ(link.Calls(), (Calls{"DDEATH/n/d t=100 seq=2", "NDEATH/n t=100 bdSeq=0", "disconnect"}));
    session->End(now);
    session->Lost(now);
    Wait(100000);
    RequestRebirth();
    EXPECT_FALSE(PublishData());
    EXPECT_EQ(link.Calls(), Calls{});
}

TEST_F(EdgeNodeSessionTest, EndsAConnectionWithoutABirthWithTheDeathOfTheNode)
{
    Make("h");
    Open();
    link.Calls();
    session->End(now);
    EXPECT_EQ(link.Calls(), (Calls{"NDEATH/n t=100 bdSeq=0", "disconnect"}));
}

TEST_F(EdgeNodeSessionTest, DropsAServerThatAnswersNothing)
{
    Make("", 2);
    session->Tick(now);
    link.Calls();
    Wait(9999);
    EXPECT_EQ(link.Calls(), Calls{});
    Wait(1);
    EXPECT_EQ(link.Calls(), Calls{"drop"});
    Wait(200);
    EXPECT_EQ(link.Calls(), Calls{"connect 1 will spBv1.0/g/NDEATH/n t=10300 bdSeq=1"});
    session->Connected(now);
    link.Calls();
    Wait(10000); // no answer to the subscription
    EXPECT_EQ(link.Calls(), (Calls{"NDEATH/n t=20300 bdSeq=1", "disconnect"}));
}

TEST_F(EdgeNodeSessionTest, WalksOnWhenTheConnectionIsLostAndWaitsLongerEachRound)
{
    Make("", 2);
    std::vector<uint64> pauses;
    for (int i = 0; i < 6; ++i)
    {
        session->Tick(now);
        session->Lost(now);
        uint64 const begin = now.utcMsec;
        link.Calls();
        while (session->PresentPhase() == EdgeNodeSession::Phase::PAUSING)
        {
            Wait(100);
        }
        pauses.push_back(now.utcMsec - begin);
    }
    EXPECT_EQ(pauses, (std::vector<uint64>{200, 1000, 200, 2000, 200, 4000}));
}

TEST_F(EdgeNodeSessionTest, ASessionThatLastsBeginsWithShortPausesAgain)
{
    Make();
    for (int i = 0; i < 8; ++i) // sessions that end at once, as when two nodes have one name
    {
        Open();
        Wait(1000);
        session->Lost(now);
        Wait(61000);
    }
    Open();
    session->Lost(now);
    link.Calls();
    Wait(59000);
    EXPECT_EQ(link.Calls(), Calls{});
    Wait(1000);
    session->Connected(now);
    session->Subscribed(now);
    EXPECT_TRUE(session->CanPublish());
    Wait(30000);
    session->Lost(now);
    link.Calls();
    Wait(1000);
    EXPECT_EQ(link.Calls().size(), 1U);
    EXPECT_EQ(session->Counts().lostSessions, 10U);
}

TEST_F(EdgeNodeSessionTest, WaitsForThePrimaryHost)
{
    Make("h");
    session->Tick(now);
    link.Calls();
    session->Connected(now);
    EXPECT_EQ(link.Calls(), Calls{"subscribe spBv1.0/g/NCMD/n spBv1.0/g/DCMD/n/d spBv1.0/STATE/h"});
    session->Subscribed(now);
    EXPECT_EQ(session->PresentPhase(), EdgeNodeSession::Phase::WAITING);
    Wait(100000); // one server: there is no better place to wait
    State(false, 50);
    State(true, 60, "other");
    EXPECT_EQ(link.Calls(), Calls{});
    State(true, 60);
    EXPECT_EQ(link.Calls(), Births("100100"));
}

TEST_F(EdgeNodeSessionTest, IsBornIfTheStateComesBeforeTheAnswerToTheSubscription)
{
    Make("h");
    session->Tick(now);
    session->Connected(now);
    link.Calls();
    State(true, 60);
    EXPECT_EQ(link.Calls(), Calls{});
    session->Subscribed(now);
    EXPECT_EQ(link.Calls(), Births("100"));
}

TEST_F(EdgeNodeSessionTest, LeavesTheServerWhenThePrimaryHostGoes)
{
    OpenAndForget("h", 2);
    State(true, 60);
    EXPECT_EQ(link.Calls(), Births("100"));
    State(false, 60);
    EXPECT_EQ(link.Calls(), (Calls{"DDEATH/n/d t=100 seq=2", "NDEATH/n t=100 bdSeq=0", "disconnect"}));
    EXPECT_FALSE(PublishData());
    Wait(200);
    EXPECT_EQ(link.Calls(), Calls{"connect 1 will spBv1.0/g/NDEATH/n t=300 bdSeq=1"});
}

TEST_F(EdgeNodeSessionTest, StaysWhenAnOldWillOfThePrimaryHostArrives)
{
    OpenAndForget("h", 2);
    State(true, 60);
    link.Calls();
    State(false, 59);
    EXPECT_EQ(link.Calls(), Calls{});
    EXPECT_TRUE(PublishData());
}

TEST_F(EdgeNodeSessionTest, AnOldStateDoesNotEndTheWait)
{
    OpenAndForget("h");
    State(false, 60);
    State(true, 59);
    EXPECT_EQ(link.Calls(), Calls{});
    State(true, 60);
    EXPECT_EQ(link.Calls(), Births("100"));
}

TEST_F(EdgeNodeSessionTest, WalksOnWhereThePrimaryHostIsNotConnected)
{
    OpenAndForget("h", 2);
    State(false, 60);
    EXPECT_EQ(link.Calls(), (Calls{"NDEATH/n t=100 bdSeq=0", "disconnect"}));
    Wait(200);
    session->Connected(now);
    session->Subscribed(now);
    link.Calls();
    Wait(10000); // no STATE at all
    EXPECT_EQ(link.Calls(), (Calls{"NDEATH/n t=10300 bdSeq=1", "disconnect"}));
}

TEST_F(EdgeNodeSessionTest, CountsAStateThatItCannotRead)
{
    OpenAndForget("h");
    Receive("spBv1.0/STATE/h", {'O', 'N', 'L', 'I', 'N', 'E'});
    EXPECT_EQ(session->Counts().badMessages, 1U);
    EXPECT_EQ(session->PresentPhase(), EdgeNodeSession::Phase::WAITING);
}

TEST_F(EdgeNodeSessionTest, IgnoresReportsThatComeTooLate)
{
    Make();
    session->Connected(now);
    session->Subscribed(now);
    session->Lost(now);
    RequestRebirth();
    session->RequestBirth(now);
    EXPECT_EQ(link.Calls(), Calls{});
    Open();
    session->Connected(now);
    session->Subscribed(now);
    EXPECT_EQ(session->Counts().births, 1U);
}

TEST_F(EdgeNodeSessionTest, AJumpOfTheClockChangesTimestampsOnly)
{
    OpenAndForget();
    now.utcMsec = 3;
    EXPECT_TRUE(PublishData());
    EXPECT_EQ(link.Calls(), Calls{"DDATA/n/d t=3 seq=2 =5"});
    now.utcMsec = 9'000'000'000'000;
    session->Tick(now);
    EXPECT_EQ(link.Calls(), Calls{});
}

} // namespace SparkplugMqtt
