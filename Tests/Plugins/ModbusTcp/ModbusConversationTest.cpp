#include "Plugins/ModbusTcp/ModbusConversation.h"
#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Tests/Plugins/ModbusTcp/FakeRegisterModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace ModbusTcp
{

class ModbusConversationTest : public testing::Test
{
protected:
    using Bytes = std::vector<uint8>;

    /// Sends as many bytes as there is room for. Returns their number.
    std::size_t Hear(Bytes const& bytes)
    {
        std::span<char> const room = conversation.Room();
        std::size_t const count = std::min(room.size(), bytes.size());
        std::copy_n(bytes.begin(), count, room.begin());
        conversation.Received(count);
        return count;
    }

    Bytes Pending()
    {
        return Bytes(conversation.Pending().begin(), conversation.Pending().end());
    }

    static Bytes Repeated(Bytes const& bytes, std::size_t times)
    {
        Bytes all;
        for (std::size_t i = 0; i < times; ++i)
        {
            all.insert(all.end(), bytes.begin(), bytes.end());
        }
        return all;
    }

    static inline Bytes const READ_ONE = {0, 1, 0, 0, 0, 6, 1, 3, 0, 5, 0, 1};
    static inline Bytes const READ_ONE_ANSWER = {0, 1, 0, 0, 0, 5, 1, 3, 2, 0, 5};
    static inline Bytes const READ_MOST = {0, 2, 0, 0, 0, 6, 1, 3, 0, 0, 0, 125};
    static constexpr std::size_t READ_MOST_ANSWER_BYTES = 259;

    FakeRegisterModel model;
    ModbusCounters counters;
    ModbusConversation conversation{model, counters};
};

TEST_F(ModbusConversationTest, AnswersARequestThatComesByteByByte)
{
    for (std::size_t i = 0; i + 1 < READ_ONE.size(); ++i)
    {
        Hear({READ_ONE[i]});
        EXPECT_TRUE(Pending().empty());
    }

    Hear({READ_ONE.back()});

    EXPECT_EQ(Pending(), READ_ONE_ANSWER);
    EXPECT_EQ(conversation.ProgressCount(), 1u);
}

TEST_F(ModbusConversationTest, AnswersAllThatCameTogetherAndKeepsTheHalfOne)
{
    Bytes bytes = Repeated(READ_ONE, 3);
    bytes.insert(bytes.end(), READ_ONE.begin(), READ_ONE.begin() + 4);

    Hear(bytes);
    EXPECT_EQ(Pending(), Repeated(READ_ONE_ANSWER, 3));
    conversation.Sent(Pending().size());

    Hear(Bytes(READ_ONE.begin() + 4, READ_ONE.end()));
    EXPECT_EQ(Pending(), READ_ONE_ANSWER);
}

TEST_F(ModbusConversationTest, AnswersNothingBehindWhatIsNoFrame)
{
    Bytes bytes = READ_ONE;
    bytes.insert(bytes.end(), {0, 1, 0, 7, 0, 6});
    bytes.insert(bytes.end(), READ_ONE.begin(), READ_ONE.end());

    Hear(bytes);

    EXPECT_EQ(conversation.NextStep(), ModbusConversation::Step::DROP);
    EXPECT_EQ(Pending(), READ_ONE_ANSWER);
    conversation.Sent(Pending().size());
    EXPECT_TRUE(Pending().empty());
}

TEST_F(ModbusConversationTest, KeepsRequestsWaitingUntilTheirAnswersHaveRoom)
{
    std::size_t const asked = ModbusConversation::INPUT_BYTES / READ_MOST.size();
    Hear(Repeated(READ_MOST, asked));
    EXPECT_LE(Pending().size(), ModbusConversation::OUTPUT_BYTES);
    EXPECT_LT(conversation.ProgressCount(), asked);

    std::size_t sent = 0;
    while (!Pending().empty())
    {
        std::size_t const step = std::min<std::size_t>(Pending().size(), 1000); // a client that reads slowly
        conversation.Sent(step);
        sent += step;
    }

    EXPECT_EQ(sent, asked * READ_MOST_ANSWER_BYTES);
    EXPECT_EQ(conversation.ProgressCount(), asked);
}

TEST_F(ModbusConversationTest, HasNoRoomWhileAnswersWaitToBeTaken)
{
    EXPECT_EQ(conversation.Room().size(), ModbusConversation::INPUT_BYTES);

    Hear(READ_ONE);

    EXPECT_TRUE(conversation.Room().empty());
    conversation.Sent(READ_ONE_ANSWER.size());
    EXPECT_EQ(conversation.Room().size(), ModbusConversation::INPUT_BYTES);
}

TEST_F(ModbusConversationTest, IsOverWhenTheClientHasEnded)
{
    EXPECT_EQ(conversation.NextStep(), ModbusConversation::Step::CONTINUE);

    conversation.InputEnded();

    EXPECT_EQ(conversation.NextStep(), ModbusConversation::Step::CLOSE);
}

using Bytes = std::vector<uint8>;

struct RoleCase
{
    char const* name;
    Bytes request;
    ZuCommon::Role least; ///< the least role that gets an answer
};

class ModbusConversationRoles : public testing::TestWithParam<RoleCase>
{
};

TEST_P(ModbusConversationRoles, GetExceptionOneForWhatTheyMayNotDo)
{
    using ZuCommon::Role;
    for (Role const role : {Role::NONE, Role::VIEWER, Role::OPERATOR, Role::ENGINEER, Role::ADMINISTRATOR})
    {
        FakeRegisterModel model;
        ModbusCounters counters;
        ModbusConversation conversation(model, counters);
        conversation.SetClient({"10.0.0.7", role});
        std::vector<std::string> deniedNames;
        conversation.SetDenialHandler([&](std::string const& name) { deniedNames.push_back(name); });
        Bytes const& request = GetParam().request;
        std::ranges::copy(request, conversation.Room().begin());

        conversation.Received(request.size());

        std::string_view const answer = conversation.Pending();
        bool const isAllowed = role >= GetParam().least;
        if (isAllowed)
        {
            EXPECT_EQ(static_cast<uint8>(answer.at(7)), request[7]) << ZuCommon::RoleName(role);
        }
        else
        {
            Bytes const refusal{0, 9, 0, 0, 0, 3, 1, static_cast<uint8>(request[7] | 0x80), 1};
            EXPECT_EQ(Bytes(answer.begin(), answer.end()), refusal) << ZuCommon::RoleName(role);
            EXPECT_TRUE(model.calls.empty());
        }
        EXPECT_EQ(counters.deniedRequests, isAllowed ? 0u : 1u);
        std::string const function = "function " + std::to_string(request[7]);
        EXPECT_EQ(deniedNames, isAllowed ? std::vector<std::string>() : std::vector{function});
        EXPECT_EQ(counters.exceptionsByCode[1], isAllowed ? 0u : 1u);
        EXPECT_EQ(counters.requests, 1u);
    }
}

INSTANTIATE_TEST_SUITE_P(
    EachFunction, ModbusConversationRoles,
    testing::Values(RoleCase{"ReadHolding", {0, 9, 0, 0, 0, 6, 1, 3, 0, 0, 0, 1}, ZuCommon::Role::VIEWER},
                    RoleCase{"ReadInput", {0, 9, 0, 0, 0, 6, 1, 4, 0, 0, 0, 1}, ZuCommon::Role::VIEWER},
                    RoleCase{"Identify", {0, 9, 0, 0, 0, 5, 1, 43, 14, 1, 0}, ZuCommon::Role::VIEWER},
                    RoleCase{"WriteOne", {0, 9, 0, 0, 0, 6, 1, 6, 0, 0, 0, 1}, ZuCommon::Role::OPERATOR},
                    RoleCase{"Write", {0, 9, 0, 0, 0, 9, 1, 16, 0, 0, 0, 1, 2, 0, 7}, ZuCommon::Role::OPERATOR},
                    RoleCase{"ReadAndWrite",
                             {0, 9, 0, 0, 0, 13, 1, 23, 0, 0, 0, 1, 0, 0, 0, 1, 2, 0, 7},
                             ZuCommon::Role::OPERATOR}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST_F(ModbusConversationTest, ChangesTheRoleBetweenTwoRequests)
{
    Bytes const write{0, 9, 0, 0, 0, 6, 1, 6, 0, 0, 0, 1};
    conversation.SetClient({"10.0.0.7", ZuCommon::Role::VIEWER});
    Hear(write);
    EXPECT_EQ(Pending(), (Bytes{0, 9, 0, 0, 0, 3, 1, 0x86, 1}));
    conversation.Sent(Pending().size());

    conversation.SetClient({"10.0.0.7", ZuCommon::Role::OPERATOR});
    Hear(write);

    EXPECT_EQ(Pending(), write); // the answer repeats the request
}

TEST_F(ModbusConversationTest, CountsRequestsExceptionsAndBytes)
{
    Hear(READ_ONE);
    conversation.Sent(Pending().size());
    Hear({0, 2, 0, 0, 0, 2, 1, 99});
    conversation.Sent(Pending().size());

    EXPECT_EQ(counters.requests, 2u);
    EXPECT_EQ(counters.exceptions, 1u);
    EXPECT_EQ(counters.exceptionsByCode[1], 1u);
    EXPECT_EQ(counters.bytesIn, 20u);
    EXPECT_EQ(counters.bytesOut, 20u);
}

} // namespace ModbusTcp
