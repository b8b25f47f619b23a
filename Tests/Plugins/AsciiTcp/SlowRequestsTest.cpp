#include "Plugins/AsciiTcp/SlowRequests.h"
#include "Support/CallLog.h"
#include "Support/Latch.h"
#include "Support/Refusal.h"
#include "ZuControl/Control/IControlHardware.h"
#include "ZuControl/Control/IControlResourceAdaptor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>

namespace AsciiTcp
{

/// Returns "content of PATH", or the text that the test has set.
class FakeResources final : public ZuControl::IControlResourceAdaptor
{
public:
    void Read(std::string const& path, std::string& output, uint64 timeout) override
    {
        EXPECT_EQ(timeout, SlowRequests::READ_TIMEOUT_USEC);
        output = read ? read() : "content of " + path;
    }

    std::function<std::string()> read;
};

/// A manager without outputs of any kind.
class NoHardware final : public ZuControl::IControlHardwareManager
{
public:
    std::list<ZuHardwareIOType> SupportedHardwareInterfaces() const override
    {
        return {};
    }

    uint64 GetInterfaceCount(ZuHardwareIOType) const override
    {
        return 0;
    }

    ZuControl::IControlHardware& GetHardwareInterface(ZuHardwareIOType, uint64) override
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
};

class SlowRequestsTest : public testing::Test
{
protected:
    static AsciiRequest Request(std::string const& line)
    {
        return AsciiRequest::Parse(line);
    }

    /// The answer to `line`, which is parsed like a line of a client; "" if there is none.
    std::string Ask(std::string const& line, std::string const& expected)
    {
        uint64 const ticket = requests.Begin(Request(line));
        return answers.WaitFor(std::to_string(ticket) + " " + expected) ? expected : answers.All().back();
    }

    ZuTest::Latch mayEnd; // outlives the worker that waits for it
    ZuTest::CallLog answers;
    NoHardware hardware;
    FakeResources resources;
    SlowRequests requests{&hardware, &resources, [this](uint64 ticket, std::string const& line) {
                              answers.Add(std::to_string(ticket) + " " + line);
                          }};
};

TEST_F(SlowRequestsTest, ReadsAResource)
{
    EXPECT_EQ(Ask("READ /health", "OK content of /health"), "OK content of /health");
}

TEST_F(SlowRequestsTest, AnswersARequestThatThrowsWhatIsNoException)
{
    resources.read = []() -> std::string { throw 42; };
    std::string const expected = "ERROR 0 exception of an unknown type";
    EXPECT_EQ(Ask("READ /a", expected), expected);

    resources.read = nullptr;
    EXPECT_EQ(Ask("READ /b", "OK content of /b"), "OK content of /b");
}

TEST_F(SlowRequestsTest, SaysWhatWentWrong)
{
    for (auto const& [status, text, expected] :
         {std::tuple(-976, "", "ERROR -976 Another read is running"),
          std::tuple(-998, "", "ERROR -998 The resource gave no answer in time"),
          std::tuple(-999, "Failed to read resource.", "ERROR -999 Failed to read resource."),
          std::tuple(-1000, "", "ERROR -1000 The request is refused")})
    {
        resources.read = [status = status, text = text]() -> std::string { ZU_THROW(status, "%s", text); };
        EXPECT_EQ(Ask("READ /health", expected), expected);
    }
    resources.read = []() -> std::string { throw std::runtime_error("odd\nends"); };
    EXPECT_EQ(Ask("READ /health", "ERROR 0 odd ends"), "ERROR 0 odd ends");
    EXPECT_EQ(Ask("DOUT 0 1", "ERROR -999 There is no such output"), "ERROR -999 There is no such output");
}

TEST_F(SlowRequestsTest, SendsNoMoreThanItsBytes)
{
    resources.read = [] { return std::string(SlowRequests::MOST_BYTES_READ, 'a'); };
    std::string const longest = "OK " + std::string(SlowRequests::MOST_BYTES_READ, 'a');
    EXPECT_EQ(Ask("READ /large", longest), longest);

    resources.read = [] { return std::string(SlowRequests::MOST_BYTES_READ + 1, 'a'); };
    std::string const refused = "ERROR -992 The resource has more than 65536 bytes";
    EXPECT_EQ(Ask("READ /larger", refused), refused);
}

TEST_F(SlowRequestsTest, DoesNotHoldUpWhoBegins)
{
    resources.read = [this] {
        mayEnd.Wait();
        return std::string("late");
    };

    EXPECT_EQ(requests.Begin(Request("READ /slow")), 1u);
    EXPECT_EQ(requests.Begin(Request("READ /slow")), 2u);

    EXPECT_TRUE(answers.All().empty());
    mayEnd.Open();
    EXPECT_TRUE(answers.WaitFor("2 OK late"));
    EXPECT_EQ(answers.All(), (ZuTest::CallLog::Calls{"1 OK late", "2 OK late"}));
}

/// The worker is in the read of "/first" until the test opens `mayEnd`.
class BusySlowRequestsTest : public SlowRequestsTest
{
protected:
    void SetUp() override
    {
        resources.read = [this] {
            reads.fetch_add(1);
            hasBegun.Open();
            mayEnd.Wait();
            return std::string("read");
        };
        requests.Begin(Request("READ /first"));
        ASSERT_TRUE(hasBegun.Wait());
    }

    ZuTest::Latch hasBegun;
    std::atomic<int> reads{0};
};

TEST_F(BusySlowRequestsTest, DropsAnAbandonedRequestBeforeItRuns)
{
    uint64 const abandoned = requests.Begin(Request("READ /second"));
    uint64 const kept = requests.Begin(Request("READ /third"));

    requests.Abandon(abandoned);

    mayEnd.Open();
    EXPECT_TRUE(answers.WaitFor(std::to_string(kept) + " OK read"));
    EXPECT_EQ(answers.All(), (ZuTest::CallLog::Calls{"1 OK read", "3 OK read"}));
    EXPECT_EQ(reads.load(), 2);
}

TEST_F(BusySlowRequestsTest, RunsARequestToItsEndThatIsAbandonedTooLate)
{
    requests.Abandon(1);

    mayEnd.Open();
    EXPECT_TRUE(answers.WaitFor("1 OK read"));
}

TEST_F(BusySlowRequestsTest, RefusesMoreRequestsThanMayWait)
{
    for (std::size_t i = 0; i < SlowRequests::MOST_WAITING; ++i)
    {
        requests.Begin(Request("READ /other"));
    }

    EXPECT_EQ(ZuTest::RefusalOf([this] { requests.Begin(Request("DOUT 0 1")); }),
              (ZuTest::Refusal{-976, "Too many requests wait for the sensor or the application"}));

    requests.Abandon(2);
    EXPECT_EQ(requests.Begin(Request("READ /last")), 2 + SlowRequests::MOST_WAITING);
    mayEnd.Open();
    EXPECT_TRUE(answers.WaitFor(std::to_string(2 + SlowRequests::MOST_WAITING) + " OK read"));
}

struct BadArgument
{
    char const* name;
    char const* line;
    char const* text;
};

class SlowRequestArgument : public testing::TestWithParam<BadArgument>
{
};

TEST_P(SlowRequestArgument, IsRefusedAtOnce)
{
    NoHardware hardware;
    FakeResources resources;
    SlowRequests requests{&hardware, &resources, [](uint64, std::string const&) {}};

    EXPECT_EQ(ZuTest::RefusalOf([&] { requests.Begin(AsciiRequest::Parse(GetParam().line)); }),
              (ZuTest::Refusal{-997, GetParam().text}));
}

constexpr char const* DOUT_TEXT = "DOUT needs the index of an output and 0 or 1";
constexpr char const* AOUT_TEXT = "AOUT needs the index of an output and a current in mA";
constexpr char const* SERIAL_TEXT = "SERIAL needs the index of an output and a text";

INSTANTIATE_TEST_SUITE_P(EveryFault, SlowRequestArgument,
                         testing::Values(BadArgument{"NoState", "DOUT 0", DOUT_TEXT},
                                         BadArgument{"OtherState", "DOUT 0 2", DOUT_TEXT},
                                         BadArgument{"StateInWords", "DOUT 0 on", DOUT_TEXT},
                                         BadArgument{"NegativeIndex", "DOUT -1 1", DOUT_TEXT},
                                         BadArgument{"HugeIndex", "DOUT 18446744073709551616 1", DOUT_TEXT},
                                         BadArgument{"WordForIndex", "DOUT a 1", DOUT_TEXT},
                                         BadArgument{"NoCurrent", "AOUT 0", AOUT_TEXT},
                                         BadArgument{"WordForCurrent", "AOUT 0 much", AOUT_TEXT},
                                         BadArgument{"CurrentWithUnit", "AOUT 0 12.5mA", AOUT_TEXT},
                                         BadArgument{"EndlessCurrent", "AOUT 0 inf", AOUT_TEXT},
                                         BadArgument{"NoNumber", "AOUT 0 nan", AOUT_TEXT},
                                         BadArgument{"DecimalComma", "AOUT 0 12,5", AOUT_TEXT},
                                         BadArgument{"NoText", "SERIAL 0", SERIAL_TEXT},
                                         BadArgument{"NoSerialIndex", "SERIAL text", SERIAL_TEXT}),
                         [](auto const& tested) { return std::string(tested.param.name); });

TEST(SlowRequests, AreRefusedWhereTheSystemHasNothing)
{
    SlowRequests requests{nullptr, nullptr, [](uint64, std::string const&) {}};

    for (char const* line : {"DOUT 0 1", "AOUT 0 12.5", "SERIAL 0 text"})
    {
        EXPECT_EQ(ZuTest::RefusalOf([&] { requests.Begin(AsciiRequest::Parse(line)); }),
                  (ZuTest::Refusal{-996, "This system has no outputs"}));
    }
    EXPECT_EQ(ZuTest::RefusalOf([&] { requests.Begin(AsciiRequest::Parse("READ /health")); }),
              (ZuTest::Refusal{-996, "This system has no resources to read"}));
}

} // namespace AsciiTcp
