#include "Plugins/AsciiTcp/AsciiCommands.h"
#include "Support/Refusal.h"
#include "ZuApi/JsonSerializer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace AsciiTcp
{

using Zu::Properties::JsonSerializer;

class AsciiCommandsTest : public testing::Test
{
protected:
    std::string Invoke(std::string const& id, char const* body = "{}")
    {
        auto const args = commands.GetActionParams(id);
        JsonSerializer::Deserialize(*args, nlohmann::json::parse(body));
        return JsonSerializer::Serialize(*commands.InvokeAction(id, *args)).dump();
    }

    ZuTest::Refusal RefusalOfText(std::string const& text)
    {
        SendTextParams args;
        args.text.Set(text);
        return ZuTest::RefusalOf([&] { commands.InvokeAction("sendText", args); });
    }

    std::vector<std::string> done;
    AsciiCommands commands{{.disconnectAll =
                                [this] {
                                    done.emplace_back("disconnectAll");
                                    return uint64{3};
                                },
                            .sendText =
                                [this](std::string const& text) {
                                    done.push_back("sendText " + text);
                                    return uint64{2};
                                }}};
};

TEST_F(AsciiCommandsTest, AreTwo)
{
    auto const list = commands.ListActions();

    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].Id(), "disconnectAll");
    EXPECT_EQ(list[0].DisplayName(), "Disconnect All");
    EXPECT_EQ(list[1].Id(), "sendText");
    EXPECT_EQ(list[1].DisplayName(), "Send Text");
}

TEST_F(AsciiCommandsTest, TellHowManyClientsTheyReach)
{
    EXPECT_EQ(Invoke("disconnectAll"), R"({"clients":3})");
    EXPECT_EQ(Invoke("sendText", R"({"text": "shift ends"})"), R"({"clients":2})");

    EXPECT_EQ(done, (std::vector<std::string>{"disconnectAll", "sendText shift ends"}));
}

TEST_F(AsciiCommandsTest, TakeATextThatFitsOnALine)
{
    EXPECT_EQ(RefusalOfText(std::string(256, 'a')).status, 1);
    EXPECT_EQ(RefusalOfText("\xC3\xBC").status, 1);
    ZuTest::Refusal const bad{-997, "A text has 1 to 256 bytes and no control character"};
    EXPECT_EQ(RefusalOfText(""), bad);
    EXPECT_EQ(RefusalOfText(std::string(257, 'a')), bad);
    EXPECT_EQ(RefusalOfText("a\nDATA 1"), bad);
    EXPECT_EQ(RefusalOfText("a\tb"), bad);
    EXPECT_EQ(RefusalOfText(std::string("a\0b", 3)), bad);
    EXPECT_EQ(done.size(), 2u);
}

TEST_F(AsciiCommandsTest, RefuseWhatTheyAreNot)
{
    Zu::Params::Group const none{""};

    EXPECT_EQ(ZuTest::RefusalOf([&] { commands.GetActionParams("SendText"); }),
              (ZuTest::Refusal{-999, "The action 'SendText' does not exist. No parameters available"}));
    EXPECT_EQ(ZuTest::RefusalOf([&] { commands.InvokeAction("SendText", none); }),
              (ZuTest::Refusal{-999, "The action 'SendText' does not exist. Action ignored."}));
    EXPECT_THROW(commands.InvokeAction("sendText", none), std::bad_cast);
    EXPECT_TRUE(done.empty());
}

TEST_F(AsciiCommandsTest, GiveFreshArgumentsEachTime)
{
    auto const first = commands.GetActionParams("sendText");
    dynamic_cast<SendTextParams&>(*first).text.Set("used");

    auto const second = commands.GetActionParams("sendText");

    EXPECT_EQ(JsonSerializer::Serialize(*second).dump(), R"({"text":""})");
    EXPECT_EQ(JsonSerializer::Serialize(*commands.GetActionParams("disconnectAll")).dump(), "{}");
}

} // namespace AsciiTcp
