#include "ZuControl/Protocol/MetricsResources.h"

#include "Support/FakeProtocol.h"
#include "Support/ResourceFixture.h"
#include "ZuApi/Properties/Value.h"
#include "ZuRest/IStreamReceiver.h"

#include <stdexcept>

namespace ZuControl::Protocol
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

/// Records the received reports, with its name as a prefix.
class NotingReceiver final : public ZuRest::IStreamReceiver
{
public:
    NotingReceiver(ZuTest::CallLog& sharedCalls, std::string receiverName)
        : calls(sharedCalls), name(std::move(receiverName))
    {
    }

    void Receive(nlohmann::json const& report) override
    {
        calls.Add(name + " " + report.dump());
    }

private:
    ZuTest::CallLog& calls;
    std::string const name;
};

} // namespace

class ControlMetricsResourceTest : public ZuTest::ResourceFixture
{
protected:
    /// The set of instances is complete before the timers walk it.
    ZuTest::FakeControlManager& Filled()
    {
        drops.Set(7);
        protocol.metrics.Register("controlDrops", drops);
        manager.Put("a").metrics.BindProtocol(&protocol);
        return manager;
    }

    /// The number of report timers: "started" lines minus "stopped" lines.
    std::size_t Reporting() const
    {
        return log.CountOfText("Control metrics reporting started.") -
               log.CountOfText("Control metrics reporting stopped.");
    }

    static Refusal UnknownHardware()
    {
        return {-999, "Control protocol type not recognized: 'hardware'."};
    }

    ZuTest::CallLog protocolCalls;
    Zu::Properties::Value<uint64> drops;
    ZuTest::FakeProtocol protocol{protocolCalls, 3};
    NotingReceiver first{calls, "first"};
    NotingReceiver second{calls, "second"};
    ControlMetrics metrics{Filled()};
    ControlMetricsResource resource{metrics};
    HardwareMetricsResource hardware{metrics};
};

TEST_F(ControlMetricsResourceTest, ShowsTheLastReportWithItsSchemaWhenThatIsAskedFor)
{
    EXPECT_EQ(resource.Document(Request({{"protocol", "a"}}), response), Json({{"controlDrops", 7}}));

    Json const document = resource.Document(Request({{"protocol", "a"}}, true), response);
    EXPECT_EQ(document["_schema"],
              Json::parse(R"({"type": "object", "properties": {"controlDrops": {"type": "integer"}}})"));
    EXPECT_TRUE(response.References().empty());
}

TEST_F(ControlMetricsResourceTest, RefusesARequestThatNamesNoProtocol)
{
    Refusal const missing{-997, "Missing control protocol name in request"};

    EXPECT_EQ(RefusalOf([this] { resource.Document(Request({}), response); }), missing);
    EXPECT_EQ(RefusalOf([this] { resource.StartStream(&first, Request({})); }), missing);
    EXPECT_EQ(Reporting(), 0u);
}

TEST_F(ControlMetricsResourceTest, RefusesAMissingNameUnderTheNameOfTheOperation)
{
    auto const labelOf = [](auto const& operation) -> std::string {
        try
        {
            operation();
        }
        catch (Zu::Exception const& exception)
        {
            return exception.Function();
        }
        return "nothing was thrown";
    };

    EXPECT_EQ(labelOf([this] { resource.Document(Request({}), response); }),
              "ZuControl::Protocol::ControlMetricsResource::Document");
    EXPECT_EQ(labelOf([this] { resource.StartStream(&first, Request({})); }),
              "ZuControl::Protocol::ControlMetricsResource::StartStream");
}

TEST_F(ControlMetricsResourceTest, RefusesAProtocolThatThereIsNot)
{
    Refusal const unknown{-999, "Control protocol type not recognized: 'x'."};

    EXPECT_EQ(RefusalOf([this] { resource.Document(Request({{"protocol", "x"}}), response); }), unknown);
    EXPECT_EQ(RefusalOf([this] { resource.StartStream(&first, Request({{"protocol", "x"}})); }), unknown);
    EXPECT_EQ(resource.StartStream(&first, Request({{"protocol", "a"}})), 0u); // a refusal uses up no id
}

TEST_F(ControlMetricsResourceTest, RefusesAnInstanceWithoutAProtocol)
{
    manager.Put("b");

    EXPECT_EQ(RefusalOf([this] {
                  resource.Document(Request({{"protocol", "b"}}), response);
              }),
              (Refusal{-1000, "No protocol implementation available for the metrics fetch operation"}));
}

TEST_F(ControlMetricsResourceTest, CannotBeChanged)
{
    EXPECT_EQ(RefusalOf([this] {
                  resource.UpdateDocument(Request({{"protocol", "a"}}), Json::object());
              }),
              (Refusal{-983, ""}));
    EXPECT_EQ(resource.StreamableProvider(), &resource);
    EXPECT_EQ(resource.CallableProvider(), nullptr);
}

TEST_F(ControlMetricsResourceTest, CountsItsStreamsUpAndUsesNoIdTwice)
{
    ZuRest::RequestInfo const request = Request({{"protocol", "a"}});

    EXPECT_EQ(resource.StartStream(&first, request), 0u);
    EXPECT_EQ(resource.StartStream(&second, request), 1u);
    resource.StopStream(1);
    EXPECT_EQ(resource.StartStream(&second, request), 2u);
    resource.StopStream(0);
    resource.StopStream(2);
    EXPECT_EQ(resource.StartStream(&first, request), 3u);
}

TEST_F(ControlMetricsResourceTest, RefusesToStopAStreamTwice)
{
    uint32 const id = resource.StartStream(&first, Request({{"protocol", "a"}}));
    resource.StopStream(id);

    EXPECT_EQ(RefusalOf([&] { resource.StopStream(id); }), (Refusal{-997, ""}));
    EXPECT_EQ(RefusalOf([&] { resource.StopStream(99); }), (Refusal{-997, ""}));
    EXPECT_EQ(Reporting(), 0u);
}

TEST_F(ControlMetricsResourceTest, SendsEachReportToEveryStreamWithoutASchema)
{
    resource.StartStream(&first, Request({{"protocol", "a"}}, true));
    uint32 const id = resource.StartStream(&second, Request({{"protocol", "a"}}));

    ASSERT_TRUE(calls.WaitFor(R"(second {"controlDrops":7})"));
    EXPECT_EQ(calls.All(), (Calls{R"(first {"controlDrops":7})", R"(second {"controlDrops":7})"}));

    resource.StopStream(id);
    ASSERT_TRUE(calls.WaitFor(R"(first {"controlDrops":7})", 2));
    EXPECT_EQ(calls.Count(R"(second {"controlDrops":7})"), 1u);
    EXPECT_EQ(Reporting(), 1u);
}

TEST_F(ControlMetricsResourceTest, EndsTheStreamsThatAreLeftWithItself)
{
    {
        ControlMetricsResource other(metrics);
        other.StartStream(&first, Request({{"protocol", "a"}}));
        EXPECT_EQ(Reporting(), 1u);
    }

    EXPECT_EQ(Reporting(), 0u);
}

TEST_F(ControlMetricsResourceTest, KnowsTheHardwareByTheNameOfATypeThatThereIsNot)
{
    EXPECT_EQ(RefusalOf([this] { hardware.Document(Request({}), response); }), UnknownHardware());
    EXPECT_EQ(RefusalOf([this] { hardware.StartStream(&first, Request({})); }), UnknownHardware());
    EXPECT_EQ(RefusalOf([this] { hardware.StopStream(0); }), (Refusal{-997, ""}));
    EXPECT_EQ(hardware.StreamableProvider(), &hardware);
}

TEST_F(ControlMetricsResourceTest, ShowsATypeThatIsNamedHardware)
{
    ZuTest::FakeControlManager odd(calls);
    odd.Put("hardware").metrics.BindProtocol(&protocol);
    ControlMetrics oddMetrics(odd);
    {
        HardwareMetricsResource other(oddMetrics);

        EXPECT_EQ(other.Document(Request({}), response), Json({{"controlDrops", 7}}));
        EXPECT_TRUE(other.Document(Request({}, true), response).contains("_schema"));
        EXPECT_EQ(other.StartStream(&first, Request({})), 0u);
        EXPECT_EQ(other.StartStream(&second, Request({})), 1u);
        other.StopStream(0);
        EXPECT_EQ(RefusalOf([&] { other.StopStream(0); }), (Refusal{-997, ""}));
        EXPECT_EQ(Reporting(), 1u);
    }

    EXPECT_EQ(Reporting(), 0u);
}

} // namespace ZuControl::Protocol
