#include "Plugins/AsciiTcp/AsciiRequest.h"
#include "Support/Refusal.h"

#include <gtest/gtest.h>

#include <string>

namespace AsciiTcp
{

using Verb = AsciiRequest::Verb;

struct RequestCase
{
    char const* name;
    std::string line;
    Verb verb;
    char const* argument;
};

class AsciiRequestLine : public testing::TestWithParam<RequestCase>
{
};

TEST_P(AsciiRequestLine, IsTakenApart)
{
    AsciiRequest const request = AsciiRequest::Parse(GetParam().line);

    EXPECT_EQ(request.verb, GetParam().verb);
    EXPECT_EQ(request.argument, GetParam().argument);
}

INSTANTIATE_TEST_SUITE_P(
    EveryVerb, AsciiRequestLine,
    testing::Values(RequestCase{"Get", "GET zMax", Verb::GET, "zMax"},
                    RequestCase{"GetWithBlanks", " \tGET \t  largest z \t", Verb::GET, "largest z"},
                    RequestCase{"GetOfBytes", "GET \xFF\xFE", Verb::GET, "\xFF\xFE"},
                    RequestCase{"Subscribe", "SUBSCRIBE", Verb::SUBSCRIBE, ""},
                    RequestCase{"Unsubscribe", "UNSUBSCRIBE", Verb::UNSUBSCRIBE, ""},
                    RequestCase{"List", "LIST", Verb::LIST, ""}, RequestCase{"ListAndBlanks", "LIST  ", Verb::LIST, ""},
                    RequestCase{"Start", "START", Verb::START, ""}, RequestCase{"Stop", "STOP", Verb::STOP, ""},
                    RequestCase{"Align", "ALIGN", Verb::ALIGN, ""},
                    RequestCase{"AlignOne", "ALIGN scanner-0", Verb::ALIGN, "scanner-0"},
                    RequestCase{"ClearAlign", "CLEARALIGN", Verb::CLEARALIGN, ""},
                    RequestCase{"ClearAlignOne", "CLEARALIGN scanner-0", Verb::CLEARALIGN, "scanner-0"},
                    RequestCase{"Load", "LOAD my job", Verb::LOAD, "my job"},
                    RequestCase{"Trigger", "TRIGGER", Verb::TRIGGER, ""},
                    RequestCase{"TriggerOne", "TRIGGER scanner-0", Verb::TRIGGER, "scanner-0"},
                    RequestCase{"DigitalOutput", "DOUT 0 1", Verb::DOUT, "0 1"},
                    RequestCase{"AnalogOutput", "AOUT 0 12.5", Verb::AOUT, "0 12.5"},
                    RequestCase{"SerialOutput", "SERIAL 0 a b", Verb::SERIAL, "0 a b"},
                    RequestCase{"Read", "READ /controls/AsciiTcp#/enabled", Verb::READ, "/controls/AsciiTcp#/enabled"},
                    RequestCase{"Status", "STATUS", Verb::STATUS, ""}, RequestCase{"Help", "HELP", Verb::HELP, ""}),
    [](auto const& tested) { return std::string(tested.param.name); });

struct RefusedCase
{
    char const* name;
    std::string line;
    int32 status;
    char const* text;
};

class AsciiRequestRefusal : public testing::TestWithParam<RefusedCase>
{
};

TEST_P(AsciiRequestRefusal, SaysWhatIsWrong)
{
    ZuTest::Refusal const refusal = ZuTest::RefusalOf([] { AsciiRequest::Parse(GetParam().line); });

    EXPECT_EQ(refusal, (ZuTest::Refusal{GetParam().status, GetParam().text}));
}

INSTANTIATE_TEST_SUITE_P(
    EveryFault, AsciiRequestRefusal,
    testing::Values(RefusedCase{"Empty", "", -997, "The request is empty"},
                    RefusedCase{"Blanks", " \t ", -997, "The request is empty"},
                    RefusedCase{"Unknown", "FOO", -996, "There is no such request; HELP lists them"},
                    RefusedCase{"LowerCase", "get zMax", -996, "There is no such request; HELP lists them"},
                    RefusedCase{"LongerWord", "STARTS", -996, "There is no such request; HELP lists them"},
                    RefusedCase{"ShorterWord", "STAR", -996, "There is no such request; HELP lists them"},
                    RefusedCase{"OtherBytes", "\xFF\xFD\x21", -996, "There is no such request; HELP lists them"},
                    RefusedCase{"Nul", std::string("START\0", 6), -997, "The request has a control character in it"},
                    RefusedCase{"Escape", "GET \x1B[A", -997, "The request has a control character in it"},
                    RefusedCase{"CarriageReturn", "GET a\rb", -997, "The request has a control character in it"},
                    RefusedCase{"GetWhat", "GET", -997, "GET needs the name of an output"},
                    RefusedCase{"GetBlank", "GET  ", -997, "GET needs the name of an output"},
                    RefusedCase{"LoadWhat", "LOAD", -997, "LOAD needs the name of a job"},
                    RefusedCase{"DigitalOutputWhat", "DOUT", -997, "DOUT needs the index of an output and 0 or 1"},
                    RefusedCase{"AnalogOutputWhat", "AOUT", -997,
                                "AOUT needs the index of an output and a current in mA"},
                    RefusedCase{"SerialOutputWhat", "SERIAL", -997, "SERIAL needs the index of an output and a text"},
                    RefusedCase{"ReadWhat", "READ", -997, "READ needs the path of a resource"},
                    RefusedCase{"StartWhat", "START now", -997, "START takes no argument"},
                    RefusedCase{"StopWhat", "STOP now", -997, "STOP takes no argument"},
                    RefusedCase{"ListWhat", "LIST all", -997, "LIST takes no argument"},
                    RefusedCase{"SubscribeWhat", "SUBSCRIBE zMax", -997, "SUBSCRIBE takes no argument"},
                    RefusedCase{"UnsubscribeWhat", "UNSUBSCRIBE zMax", -997, "UNSUBSCRIBE takes no argument"},
                    RefusedCase{"StatusWhat", "STATUS all", -997, "STATUS takes no argument"},
                    RefusedCase{"HelpWhat", "HELP GET", -997, "HELP takes no argument"}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST(AsciiRequest, HelpsWithEveryVerb)
{
    std::string const help = AsciiRequest::Help();

    for (char const* verb : {"GET", "LIST", "SUBSCRIBE", "UNSUBSCRIBE", "START", "STOP", "ALIGN", "CLEARALIGN", "LOAD",
                             "TRIGGER", "DOUT", "AOUT", "SERIAL", "READ", "STATUS", "HELP"})
    {
        EXPECT_NE((" " + help + " ").find(std::string(" ") + verb + " "), std::string::npos) << verb;
    }
}

} // namespace AsciiTcp
