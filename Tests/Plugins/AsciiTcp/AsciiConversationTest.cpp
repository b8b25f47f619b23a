#include "Plugins/AsciiTcp/AsciiConversation.h"
#include "Plugins/AsciiTcp/AsciiMetrics.h"
#include "Plugins/AsciiTcp/DataFeed.h"
#include "ZuApi/Exception.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace AsciiTcp
{

/// Has one output, "zMax". Accepts every operation unless the test lets it refuse.
class FakeService final : public IAsciiService
{
public:
    bool AppendReading(std::string& line, std::string_view name) override
    {
        line.append(name == "zMax" ? "zMax 25.000 1" : "");
        return name == "zMax";
    }

    void AppendNames(std::string& line) override
    {
        line.append(names);
    }

    void AppendStatus(std::string& line) override
    {
        if (isBroken)
        {
            throw 42;
        }
        line.append("state=ready");
    }

    uint64 Begin(Command command, std::string_view argument) override
    {
        begun.push_back(std::to_string(command) + " " + std::string(argument));
        if (refusal != 0)
        {
            ZU_THROW(refusal, "%s", refusalText.c_str());
        }
        return ++ticket;
    }

    uint64 Ask(AsciiRequest const& request) override
    {
        asked.emplace_back(request.argument);
        if (refusal != 0)
        {
            ZU_THROW(refusal, "%s", refusalText.c_str());
        }
        return ++askTicket;
    }

    void Abandon(uint64 abandonedTicket) override
    {
        abandoned.push_back(abandonedTicket);
    }

    std::string names = "1 zMax";
    std::vector<std::string> asked;
    std::vector<uint64> abandoned;
    uint64 askTicket = 100;
    std::vector<std::string> begun;
    uint64 ticket = 0;
    int32 refusal = 0;
    std::string refusalText;
    bool isBroken = false; ///< STATUS throws an object that is no std::exception
};

class AsciiConversationTest : public testing::Test
{
protected:
    /// Sends as many bytes as there is room for. Returns whether these were all.
    bool Send(std::string_view bytes)
    {
        while (!bytes.empty())
        {
            std::span<char> const room = conversation.Room();
            std::size_t const count = std::min(room.size(), bytes.size());
            if (count == 0)
            {
                return false;
            }
            std::memcpy(room.data(), bytes.data(), count);
            bytes.remove_prefix(count);
            conversation.Received(count);
        }
        return true;
    }

    /// Takes all pending bytes, which then count as sent.
    std::string Take()
    {
        std::string const taken(conversation.Pending());
        conversation.Sent(taken.size());
        return taken;
    }

    std::string Ask(std::string const& line)
    {
        EXPECT_TRUE(Send(line + "\n"));
        return Take();
    }

    using Step = AsciiConversation::Step;

    FakeService service;
    DataFeed feed;
    AsciiCounters counters;
    AsciiConversation conversation{service, feed, counters};
};

TEST_F(AsciiConversationTest, AnswersEachRequest)
{
    EXPECT_EQ(Ask("GET zMax"), "OK zMax 25.000 1\n");
    EXPECT_EQ(Ask("GET %7AMax"), "OK zMax 25.000 1\n");
    EXPECT_EQ(Ask("LIST"), "OK 1 zMax\n");
    EXPECT_EQ(Ask("STATUS"), "OK state=ready\n");
    EXPECT_EQ(Ask("HELP").substr(0, 15), "OK GET name | L");
    EXPECT_EQ(Ask("START"), "OK\n");
    EXPECT_EQ(Ask("STOP"), "OK\n");
    EXPECT_EQ(Ask("ALIGN"), "OK\n");
    EXPECT_EQ(Ask("CLEARALIGN s"), "OK\n");
    EXPECT_EQ(Ask("LOAD my job"), "OK\n");
    EXPECT_EQ(Ask("TRIGGER"), "OK\n");

    EXPECT_EQ(service.begun, (std::vector<std::string>{"1 ", "2 ", "3 ", "4 s", "5 my job", "6 "}));
    EXPECT_EQ(counters.requests, 11u);
    EXPECT_EQ(counters.errors, 0u);
    EXPECT_EQ(conversation.ProgressCount(), 11u);
}

struct RoleCase
{
    char const* name;
    char const* request;
    ZuCommon::Role least; ///< the least role that gets an answer
};

class AsciiConversationRoles : public AsciiConversationTest, public testing::WithParamInterface<RoleCase>
{
};

TEST_P(AsciiConversationRoles, AreRefusedWhatTheyMayNotDo)
{
    using ZuCommon::Role;
    for (Role const role : {Role::NONE, Role::VIEWER, Role::OPERATOR, Role::ENGINEER, Role::ADMINISTRATOR})
    {
        AsciiConversation client(service, feed, counters);
        client.SetClient({"10.0.0.7", role});
        std::vector<std::string> deniedNames;
        client.SetDenialHandler([&](std::string const& request) { deniedNames.push_back(request); });
        std::string const line = std::string(GetParam().request) + "\n";
        uint64 const denied = counters.deniedRequests;
        std::size_t const reached = service.begun.size() + service.asked.size();
        std::ranges::copy(line, client.Room().begin());

        client.Received(line.size());

        bool const isAllowed = role >= GetParam().least;
        std::string_view const refusal =
            role == Role::NONE ? "ERROR -998 This client has no role\n" : "ERROR -998 This client may only read\n";
        EXPECT_EQ(client.Pending() == refusal, !isAllowed) << ZuCommon::RoleName(role) << ": " << client.Pending();
        EXPECT_EQ(counters.deniedRequests - denied, isAllowed ? 0u : 1u);
        std::string const verb = line.substr(0, line.find_first_of(" \n"));
        EXPECT_EQ(deniedNames, isAllowed ? std::vector<std::string>() : std::vector{verb});
        EXPECT_TRUE(isAllowed || service.begun.size() + service.asked.size() == reached);
    }
}

INSTANTIATE_TEST_SUITE_P(EachRequest, AsciiConversationRoles,
                         testing::Values(RoleCase{"Get", "GET zMax", ZuCommon::Role::VIEWER},
                                         RoleCase{"List", "LIST", ZuCommon::Role::VIEWER},
                                         RoleCase{"Subscribe", "SUBSCRIBE", ZuCommon::Role::VIEWER},
                                         RoleCase{"Unsubscribe", "UNSUBSCRIBE", ZuCommon::Role::VIEWER},
                                         RoleCase{"Read", "READ /controls", ZuCommon::Role::VIEWER},
                                         RoleCase{"Status", "STATUS", ZuCommon::Role::VIEWER},
                                         RoleCase{"Help", "HELP", ZuCommon::Role::VIEWER},
                                         RoleCase{"Start", "START", ZuCommon::Role::OPERATOR},
                                         RoleCase{"Stop", "STOP", ZuCommon::Role::OPERATOR},
                                         RoleCase{"Align", "ALIGN", ZuCommon::Role::OPERATOR},
                                         RoleCase{"ClearAlign", "CLEARALIGN", ZuCommon::Role::OPERATOR},
                                         RoleCase{"Load", "LOAD job", ZuCommon::Role::OPERATOR},
                                         RoleCase{"Trigger", "TRIGGER", ZuCommon::Role::OPERATOR},
                                         RoleCase{"Dout", "DOUT 0 1", ZuCommon::Role::OPERATOR},
                                         RoleCase{"Aout", "AOUT 0 12", ZuCommon::Role::OPERATOR},
                                         RoleCase{"Serial", "SERIAL 0 x", ZuCommon::Role::OPERATOR}),
                         [](auto const& tested) { return std::string(tested.param.name); });

TEST_F(AsciiConversationTest, AnswersARequestThatThrowsWhatIsNoException)
{
    service.isBroken = true;

    EXPECT_EQ(Ask("STATUS"), "ERROR 0 exception of an unknown type\n");
    EXPECT_EQ(Ask("LIST"), "OK 1 zMax\n");
}

TEST_F(AsciiConversationTest, RefusesWithStatusAndText)
{
    EXPECT_EQ(Ask("GET nothing"), "ERROR -999 There is no output of this name\n");
    EXPECT_EQ(Ask("NONSENSE"), "ERROR -996 There is no such request; HELP lists them\n");
    EXPECT_EQ(Ask(""), "ERROR -997 The request is empty\n");
    service.refusal = -976;
    service.refusalText = "busy\nwith another";
    EXPECT_EQ(Ask("START"), "ERROR -976 busy with another\n");
    service.refusalText = "";
    EXPECT_EQ(Ask("START"), "ERROR -976 The request is refused\n");

    EXPECT_FALSE(conversation.IsWaiting());
    EXPECT_EQ(counters.requests, 5u);
    EXPECT_EQ(counters.errors, 5u);
}

TEST_F(AsciiConversationTest, TakesACarriageReturnBeforeTheLineFeed)
{
    EXPECT_TRUE(Send("LIST\r\nLIST\n"));

    EXPECT_EQ(Take(), "OK 1 zMax\nOK 1 zMax\n");
}

TEST_F(AsciiConversationTest, AnswersInOrderWhateverThePieces)
{
    std::string const requests = "LIST\nGET zMax\r\nFOO\nSTATUS\n";
    std::string const answers = "OK 1 zMax\nOK zMax 25.000 1\nERROR -996 There is no such request; HELP lists them\n"
                                "OK state=ready\n";
    for (std::size_t piece = 1; piece <= requests.size(); ++piece)
    {
        for (std::size_t at = 0; at < requests.size(); at += piece)
        {
            EXPECT_TRUE(Send(std::string_view(requests).substr(at, piece)));
        }
        EXPECT_EQ(Take(), answers) << piece;
    }
}

TEST_F(AsciiConversationTest, TellsTheEndOfItsOwnOperationAlone)
{
    Ask("START");
    EXPECT_TRUE(conversation.IsWaiting());

    EXPECT_FALSE(conversation.OperationEnded(7, true));
    EXPECT_EQ(Take(), "");
    EXPECT_TRUE(conversation.OperationEnded(1, true));
    EXPECT_EQ(Take(), "DONE\n");
    EXPECT_FALSE(conversation.OperationEnded(1, true));
    EXPECT_FALSE(conversation.OperationEnded(0, true));
    EXPECT_EQ(Take(), "");

    Ask("STOP");
    EXPECT_TRUE(conversation.OperationEnded(2, false));
    EXPECT_EQ(Take(), "FAILED\n");
}

TEST_F(AsciiConversationTest, AnswersOtherRequestsWhileAnOperationRuns)
{
    Ask("START");

    EXPECT_EQ(Ask("GET zMax"), "OK zMax 25.000 1\n");
    service.refusal = -976;
    service.refusalText = "busy";
    EXPECT_EQ(Ask("STOP"), "ERROR -976 busy\n");
    EXPECT_TRUE(conversation.OperationEnded(1, true));

    EXPECT_EQ(Take(), "DONE\n");
}

TEST_F(AsciiConversationTest, TakesTheLongestLineAndNoLonger)
{
    std::string const longest = "LIST" + std::string(AsciiRequest::MAX_BYTES - 4, ' ');

    EXPECT_EQ(Ask(longest), "OK 1 zMax\n");
    EXPECT_EQ(Ask(longest + "\r"), "OK 1 zMax\n");
    EXPECT_EQ(Ask(longest + " "), "ERROR -997 A request has at most 1024 bytes\n");
    EXPECT_EQ(Ask("LIST"), "OK 1 zMax\n");
}

TEST_F(AsciiConversationTest, RefusesALineWithoutEndOnceAndPassesItsRestOver)
{
    std::string refused;
    for (int i = 0; i < 100; ++i)
    {
        EXPECT_TRUE(Send(std::string(1000, 'a')));
        refused += Take();
    }

    EXPECT_EQ(refused, "ERROR -997 A request has at most 1024 bytes\n");
    EXPECT_TRUE(Send("LIST\nGET zMax\n")); // "LIST" still belongs to the refused line
    EXPECT_EQ(Take(), "OK zMax 25.000 1\n");
    EXPECT_EQ(counters.requests, 2u);
}

TEST_F(AsciiConversationTest, RefusesALongLineInTheMiddleOfOthers)
{
    EXPECT_TRUE(Send("LIST\n" + std::string(20'000, 'a') + "\nLIST\n"));

    EXPECT_EQ(Take(), "OK 1 zMax\nERROR -997 A request has at most 1024 bytes\nOK 1 zMax\n");
}

TEST_F(AsciiConversationTest, TurnsAwayAWebPageBeforeAnythingOfItsRequestRuns)
{
    EXPECT_TRUE(Send("POST / HTTP/1.1\r\nContent-Type: text/plain\r\n\r\nSTART\nREAD /health\nSUBSCRIBE\n"));

    EXPECT_EQ(Take(), "");
    EXPECT_TRUE(service.begun.empty());
    EXPECT_TRUE(service.asked.empty());
    EXPECT_FALSE(conversation.IsSubscribed());
    EXPECT_TRUE(conversation.Room().empty());
    EXPECT_EQ(conversation.NextStep(), Step::DROP);
}

TEST_F(AsciiConversationTest, TurnsAwayAWebPageWhateverThePieces)
{
    for (std::string const head : {"POST / HTTP/1.1\r\n", "host: sensor\r\n", "Host: sensor\n", "\x16\x03\x01\x02"})
    {
        AsciiConversation stranger(service, feed, counters);
        for (char const byte : head + "START\n")
        {
            std::span<char> const room = stranger.Room();
            if (!room.empty())
            {
                room.front() = byte;
                stranger.Received(1);
            }
        }
        EXPECT_EQ(stranger.NextStep(), Step::DROP) << head;
        EXPECT_EQ(stranger.Pending(), "") << head;
    }
    EXPECT_TRUE(service.begun.empty());
}

TEST_F(AsciiConversationTest, TurnsAwayAWebPageWithALongPath)
{
    std::string const tooLong = "ERROR -997 A request has at most 1024 bytes\n";
    for (unsigned const bytes : {1100U, 4090U, 5000U, 100'000U})
    {
        AsciiConversation stranger(service, feed, counters);
        std::string_view rest;
        std::string const request = "GET /" + std::string(bytes, 'a') + " HTTP/1.1\r\nSTART\n";
        for (rest = request; !rest.empty() && !stranger.Room().empty();)
        {
            std::size_t const count = std::min(stranger.Room().size(), rest.size());
            std::memcpy(stranger.Room().data(), rest.data(), count);
            rest.remove_prefix(count);
            stranger.Received(count);
        }
        EXPECT_EQ(stranger.NextStep(), Step::DROP) << bytes;
        EXPECT_EQ(stranger.Pending(), tooLong) << bytes;
    }
    EXPECT_TRUE(service.begun.empty());
}

TEST_F(AsciiConversationTest, SendsTheAnswersOfEarlierRequestsBeforeItDropsTheClient)
{
    EXPECT_TRUE(Send("SUBSCRIBE\nLIST\nGET / HTTP/1.1\nLIST\n"));
    feed.Publish("DATA 1\n");
    conversation.TakeData();

    EXPECT_EQ(Take(), "OK\nOK 1 zMax\n");
    EXPECT_EQ(conversation.NextStep(), Step::DROP);
    EXPECT_FALSE(feed.HasReaders());
}

TEST_F(AsciiConversationTest, ReadsNoMoreFromWhoTakesNoAnswers)
{
    service.names = "1 " + std::string(1000, 'n');
    std::string requests;
    for (int i = 0; i < 10'000; ++i)
    {
        requests += "LIST\n";
    }

    EXPECT_FALSE(Send(requests));

    EXPECT_LE(conversation.Pending().size(), AsciiConversation::FULL_BYTES + 2000);
    EXPECT_TRUE(conversation.Room().empty());
    uint64 const before = conversation.ProgressCount();
    conversation.Sent(conversation.Pending().size());
    EXPECT_GT(conversation.ProgressCount(), before); // the requests that waited in the input
    EXPECT_FALSE(conversation.Pending().empty());
}

TEST_F(AsciiConversationTest, KeepsItsOrderWhenAnswersGoInPieces)
{
    std::string taken;
    EXPECT_TRUE(Send("LIST\nGET zMax\nLIST\n"));
    while (!conversation.Pending().empty())
    {
        taken += conversation.Pending().front();
        conversation.Sent(1);
    }

    EXPECT_EQ(taken, "OK 1 zMax\nOK zMax 25.000 1\nOK 1 zMax\n");
    EXPECT_EQ(counters.bytesOut, taken.size());
}

TEST_F(AsciiConversationTest, GivesResultsWhileSubscribed)
{
    feed.Publish("DATA 1\n");
    EXPECT_EQ(Ask("SUBSCRIBE"), "OK\n");
    EXPECT_TRUE(feed.HasReaders());
    feed.Publish("DATA 2\n");
    EXPECT_EQ(Ask("SUBSCRIBE"), "OK\n"); // a second subscription loses and repeats no line
    conversation.TakeData();
    EXPECT_EQ(Take(), "DATA 2\n");

    feed.Publish("DATA 3\n");
    EXPECT_EQ(Ask("UNSUBSCRIBE"), "OK\n");
    conversation.TakeData();
    EXPECT_EQ(Take(), "");
    EXPECT_FALSE(feed.HasReaders());
    EXPECT_EQ(Ask("UNSUBSCRIBE"), "OK\n");
    EXPECT_FALSE(feed.HasReaders());
}

TEST_F(AsciiConversationTest, BoundsWhatWaitsForASlowReaderAndCountsWhatItMisses)
{
    constexpr uint64 LINES = 10'000;
    Ask("SUBSCRIBE");
    std::string const line = "DATA 1 " + std::string(92, 'x') + "\n";
    for (uint64 i = 0; i < LINES; ++i)
    {
        feed.Publish(line);
        conversation.TakeData();
        ASSERT_LE(conversation.Pending().size(), AsciiConversation::DATA_BYTES + line.size());
    }

    uint64 const waiting = conversation.Pending().size() / line.size();
    EXPECT_EQ(counters.controlDrops, LINES - waiting - DataFeed::MAX_LINES);
    std::string taken;
    for (conversation.TakeData(); !conversation.Pending().empty(); conversation.TakeData())
    {
        taken += Take();
    }
    EXPECT_EQ(taken.size(), (waiting + DataFeed::MAX_LINES) * line.size()); // all lines not counted as dropped
    EXPECT_EQ(counters.controlDrops, LINES - waiting - DataFeed::MAX_LINES);
}

TEST_F(AsciiConversationTest, TellsTextsToWhoTakesThem)
{
    conversation.Tell("TEXT hello");
    EXPECT_EQ(Take(), "TEXT hello\n");
    service.names = "1 " + std::string(AsciiConversation::FULL_BYTES, 'n');
    Send("LIST\n");
    std::size_t const before = conversation.Pending().size();

    conversation.Tell("TEXT hello");

    EXPECT_EQ(conversation.Pending().size(), before);
    EXPECT_EQ(counters.controlDrops, 1u);
}

TEST_F(AsciiConversationTest, IsOverWhenTheClientHasEndedAndAllIsSaid)
{
    EXPECT_EQ(conversation.NextStep(), Step::CONTINUE);
    Send("LIST\nSTA");
    conversation.InputEnded();
    EXPECT_EQ(conversation.NextStep(), Step::CONTINUE);
    EXPECT_TRUE(conversation.Room().empty());

    EXPECT_EQ(Take(), "OK 1 zMax\n"); // a line without an end is no request

    EXPECT_EQ(conversation.NextStep(), Step::CLOSE);
}

TEST_F(AsciiConversationTest, IsNotOverWhileAnOperationRunsOrResultsMayCome)
{
    Ask("START");
    Ask("SUBSCRIBE");
    conversation.InputEnded();
    EXPECT_EQ(conversation.NextStep(), Step::CONTINUE);
    conversation.OperationEnded(1, true);
    Take();
    EXPECT_EQ(conversation.NextStep(), Step::CONTINUE);

    AsciiConversation waiting{service, feed, counters};
    std::memcpy(waiting.Room().data(), "START\n", 6);
    waiting.Received(6);
    waiting.InputEnded();
    waiting.Sent(waiting.Pending().size());
    EXPECT_EQ(waiting.NextStep(), Step::CONTINUE);
    waiting.OperationEnded(2, false);
    waiting.Sent(waiting.Pending().size());
    EXPECT_EQ(waiting.NextStep(), Step::CLOSE);
}

TEST_F(AsciiConversationTest, EndsItsSubscriptionWhenItGoes)
{
    {
        AsciiConversation other{service, feed, counters};
        std::memcpy(other.Room().data(), "SUBSCRIBE\n", 10);
        other.Received(10);
        EXPECT_TRUE(feed.HasReaders());
    }

    EXPECT_FALSE(feed.HasReaders());
}

TEST_F(AsciiConversationTest, AnswersNothingElseBeforeAnAnswerThatTakesItsTime)
{
    EXPECT_TRUE(Send("READ /health\nLIST\nDOUT 0 1\nGET zMax\n"));
    EXPECT_EQ(Take(), "");
    EXPECT_TRUE(conversation.IsWaiting());
    EXPECT_EQ(service.asked, (std::vector<std::string>{"/health"}));

    EXPECT_FALSE(conversation.Answered(7, "OK wrong"));
    EXPECT_FALSE(conversation.Answered(0, "OK wrong"));
    EXPECT_TRUE(conversation.Answered(101, "OK {}"));
    EXPECT_EQ(Take(), "OK {}\nOK 1 zMax\n");
    EXPECT_EQ(service.asked, (std::vector<std::string>{"/health", "0 1"}));
    EXPECT_TRUE(conversation.Answered(102, "ERROR -999 There is no such output"));

    EXPECT_EQ(Take(), "ERROR -999 There is no such output\nOK zMax 25.000 1\n");
    EXPECT_FALSE(conversation.IsWaiting());
    EXPECT_EQ(counters.requests, 4u);
    EXPECT_EQ(counters.errors, 1u);
    EXPECT_FALSE(conversation.Answered(102, "OK late"));
}

TEST_F(AsciiConversationTest, TakesOnlyItsInputWhileItWaitsForAnAnswer)
{
    Send("READ /health\n");
    std::string requests;
    for (std::size_t i = 0; i < AsciiConversation::INPUT_BYTES; ++i)
    {
        requests += "LIST\n";
    }

    EXPECT_FALSE(Send(requests));
    EXPECT_EQ(Take(), "");
    conversation.OperationEnded(1, true); // no request waits for this operation
    EXPECT_TRUE(conversation.Answered(101, "OK {}"));

    EXPECT_TRUE(Take().starts_with("OK {}\nOK 1 zMax\n"));
    EXPECT_FALSE(conversation.Room().empty());
}

TEST_F(AsciiConversationTest, WaitsForItsAnswerWhenTheClientHasEnded)
{
    Send("READ /health\nLIST\n");
    conversation.InputEnded();
    EXPECT_EQ(conversation.NextStep(), Step::CONTINUE);

    conversation.Answered(101, "OK {}");

    EXPECT_EQ(Take(), "OK {}\nOK 1 zMax\n");
    EXPECT_EQ(conversation.NextStep(), Step::CLOSE);
}

TEST_F(AsciiConversationTest, AbandonsTheRequestWhoseAnswerItStillAwaitsWhenItGoes)
{
    {
        AsciiConversation gone(service, feed, counters);
        std::string_view const requests = "READ /a\nREAD /b\n";
        std::memcpy(gone.Room().data(), requests.data(), requests.size());
        gone.Received(requests.size());
        EXPECT_TRUE(gone.Answered(101, "OK"));
    }
    EXPECT_EQ(service.asked, (std::vector<std::string>{"/a", "/b"}));
    EXPECT_EQ(service.abandoned, (std::vector<uint64>{102}));

    {
        AsciiConversation const idle(service, feed, counters);
    }
    EXPECT_EQ(service.abandoned.size(), 1u);
}

TEST_F(AsciiConversationTest, RefusesAtOnceWhatCannotBegin)
{
    service.refusal = -997;
    service.refusalText = "no";

    EXPECT_EQ(Ask("AOUT 0 x"), "ERROR -997 no\n");

    EXPECT_FALSE(conversation.IsWaiting());
    service.refusal = 0;
    EXPECT_EQ(Ask("LIST"), "OK 1 zMax\n");
}

TEST_F(AsciiConversationTest, NotesHowLongARequestTook)
{
    counters.largestHandlingUsec = 1'000'000'000;

    Ask("LIST");

    EXPECT_EQ(counters.largestHandlingUsec, 1'000'000'000u);
    EXPECT_LT(counters.lastHandlingUsec, 1'000'000'000u);
}

} // namespace AsciiTcp
