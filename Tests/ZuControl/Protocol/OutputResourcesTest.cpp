#include "ZuControl/Protocol/OutputResources.h"

#include "Support/ResourceFixture.h"

#include <stdexcept>
#include <thread>

namespace ZuControl::Protocol
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

template <typename Resource>
std::unique_ptr<OutputResourceBase> Make(IControlManager& manager)
{
    return std::make_unique<Resource>(manager);
}

struct Member
{
    char const* key;
    char const* title;
    char const* type;
    char const* initial;
    char const* changed; ///< another value
    bool isTold;         ///< a change of this member alone is notified
};

struct OutputCase
{
    char const* name; ///< as in the route
    std::unique_ptr<OutputResourceBase> (*make)(IControlManager&);
    std::vector<Member> members;
};

constexpr char const* FORMAT = R"({"delimiter": "", "terminator": "", "invalidValue": "", "customDataFormat": "",
    "customFromatEnabled": false, "standardFormatMode": 0})";
constexpr char const* OTHER_FORMAT =
    R"({"delimiter": ";", "terminator": "\r\n", "invalidValue": "-", "customDataFormat": "%f",
    "customFromatEnabled": true, "standardFormatMode": 3})";
constexpr char const* OUTPUTS = R"([{"source": "profile/width", "outputId": 7}])";

std::vector<OutputCase> const OUTPUT_CASES{
    {"digital",
     &Make<DigitalOutputResource>,
     {{"enabled", "Enabled", "boolean", "false", "true", true},
      {"signalEvent", "Signal Event", "integer", "0", "-3", true},
      {"signalType", "Signal Type", "integer", "0", "4", true},
      {"scheduleEnabled", "Schedule Enabled", "boolean", "false", "true", true},
      {"pulseWidth", "Pulse Width", "integer", "0", "4294967295", true},
      {"passMode", "Pass Mode", "integer", "0", "2", true},
      {"delay", "Delay", "number", "0.0", "0.5", true},
      {"delayDomain", "Delay Domain", "integer", "0", "1", true},
      {"inverted", "Inverted", "boolean", "false", "true", true},
      {"standardOutputs", "Standard Outputs", "array", "[]", OUTPUTS, false}}},
    {"analog",
     &Make<AnalogOutputResource>,
     {{"enabled", "Enabled", "boolean", "false", "true", true},
      {"signalEvent", "Signal Event", "integer", "0", "-3", true},
      {"scheduleEnabled", "Schedule Enabled", "boolean", "false", "true", true},
      {"currentMin", "Current Min", "number", "0.0", "4.0", true},
      {"currentMax", "Current Max", "number", "0.0", "20.0", true},
      {"invalidEnabled", "Invalid Enabled", "boolean", "false", "true", true},
      {"currentInvalid", "Current Invalid", "number", "0.0", "3.5", true},
      {"dataScaleMin", "Data Scale Min", "number", "0.0", "-1.0", true},
      {"dataScaleMax", "Data Scale Max", "number", "0.0", "1.0", true},
      {"delay", "Delay", "number", "0.0", "0.5", true},
      {"delayDomain", "Delay Domain", "integer", "0", "1", true}}},
    {"serial",
     &Make<SerialOutputResource>,
     {{"enabled", "Enabled", "boolean", "false", "true", true},
      {"rate", "Rate", "integer", "0", "9600", true},
      {"format", "Format", "object", FORMAT, OTHER_FORMAT, false},
      {"standardOutputs", "Standard Outputs", "array", "[]", OUTPUTS, false}}},
    {"marlet",
     &Make<MarletOutputResource>,
     {{"enabled", "Enabled", "boolean", "false", "true", true},
      {"rate", "Rate", "integer", "0", "9600", true},
      {"format", "Format", "integer", "0", "1", true},
      {"dataMin", "Data Min", "number", "0.0", "-1.0", true},
      {"dataMax", "Data Max", "number", "0.0", "1.0", true},
      {"delay", "Delay", "number", "0.0", "0.5", true}}},
};

} // namespace

class OutputResources : public ZuTest::ResourceFixture, public testing::WithParamInterface<OutputCase>
{
protected:
    OutputResources()
    {
        Listen(*resource);
    }

    Json Read(std::string const& device = "0", std::string const& port = "0", bool wantsSchema = false)
    {
        return resource->Document(Request({{"device", device}, {"port", port}}, wantsSchema), response);
    }

    void Write(Json const& document, std::string const& device = "0", std::string const& port = "0")
    {
        resource->UpdateDocument(Request({{"device", device}, {"port", port}}), document);
    }

    static std::string Notice(std::string const& device, std::string const& port)
    {
        return "notify 2 /controls/hardware/" + device + "/" + GetParam().name + "/" + port;
    }

    static Json Values(char const* Member::*value)
    {
        Json document = Json::object();
        for (Member const& member : GetParam().members)
        {
            document[member.key] = Json::parse(member.*value);
        }
        return document;
    }

    std::unique_ptr<OutputResourceBase> const resource = GetParam().make(manager);
};

TEST_P(OutputResources, ReadsItsRecord)
{
    EXPECT_EQ(Read(), Values(&Member::initial));
    EXPECT_EQ(ReferencesOf(response), Calls{});
}

TEST_P(OutputResources, DescribesItsRecordWhenAsked)
{
    Json const document = Read("0", "0", true);

    Json const& members = document.at("_schema").at("properties");
    EXPECT_EQ(members.size(), GetParam().members.size());
    uint32 sortOrder = 0;
    for (Member const& member : GetParam().members)
    {
        EXPECT_EQ(members.at(member.key).at("title"), member.title);
        EXPECT_EQ(members.at(member.key).at("type"), member.type) << member.key;
        EXPECT_EQ(members.at(member.key).at("sortOrder"), sortOrder) << member.key;
        EXPECT_FALSE(members.at(member.key).contains("units")) << member.key;
        EXPECT_FALSE(members.at(member.key).contains("maximum")) << member.key;
        sortOrder += 100;
    }
}

TEST_P(OutputResources, TakesEveryValueAndTellsOfIt)
{
    Write(Values(&Member::changed), "1", "a/b");

    EXPECT_EQ(Read(), Values(&Member::changed));
    EXPECT_EQ(calls.All(), (Calls{Notice("1", "a%2Fb")}));
}

TEST_P(OutputResources, IsOneRecordForAllDevicesAndPorts)
{
    Write({{"enabled", true}}, "0", "1");

    for (char const* const device : {"0", "1", "x"})
    {
        EXPECT_EQ(Read(device, "7").at("enabled"), true) << device;
    }
    EXPECT_EQ(resource->Document(Request({{"device", "0"}}), response).at("enabled"), true); // without a port
}

TEST_P(OutputResources, TellsOfAChangeOfAnyFieldThatCounts)
{
    for (Member const& member : GetParam().members)
    {
        calls.Clear();
        Json const document{{member.key, Json::parse(member.changed)}};

        Write(document, "1", "2");
        Write(document, "1", "2");

        EXPECT_EQ(calls.All(), member.isTold ? Calls{Notice("1", "2")} : Calls{}) << member.key;
        EXPECT_EQ(Read().at(member.key), Json::parse(member.changed)) << member.key;
    }
}

TEST_P(OutputResources, TellsOfNothingWhenTheFirstWriteIsOfZeros)
{
    Write(Values(&Member::initial));

    EXPECT_EQ(calls.All(), Calls{});
}

TEST_P(OutputResources, TellsOfTheWayBackToo)
{
    Write({{"enabled", true}});
    Write({{"enabled", false}}, "1", "3");

    EXPECT_EQ(calls.All(), (Calls{Notice("0", "0"), Notice("1", "3")}));
}

TEST_P(OutputResources, IsChangedByARequestThatThenFailsForWantOfAKey)
{
    for (ZuRest::RequestInfo::Keys const& keys : {ZuRest::RequestInfo::Keys{}, {{"device", "0"}}, {{"port", "0"}}})
    {
        bool const enabled = !Read().at("enabled").get<bool>();
        auto const write = [&] { resource->UpdateDocument(Request(keys), {{"enabled", enabled}}); };

        EXPECT_EQ(CausesOf(write), (std::vector<Refusal>{{0, "invalid map<K, T> key"}}));
        EXPECT_THROW(write(), std::out_of_range);

        EXPECT_EQ(Read().at("enabled"), enabled);
        EXPECT_EQ(calls.All(), Calls{});
    }
    Write({{"enabled", true}}); // does not change the record, but listeners were not notified of this value yet

    EXPECT_EQ(calls.All(), (Calls{Notice("0", "0")}));
}

TEST_P(OutputResources, IsNotChangedByWhatIsRefused)
{
    EXPECT_THROW(Write({{"enabled", 1.5}}), Json::type_error);
    EXPECT_THROW(Write({{"enabled", "yes"}}), Json::type_error);

    EXPECT_EQ(Read(), Values(&Member::initial));
    EXPECT_EQ(calls.All(), Calls{});
}

TEST_P(OutputResources, TellsOfChangesDuringALoadAndCountsNone)
{
    manager.loadEvent.Fire(State::Begin);

    Write({{"enabled", true}});

    EXPECT_EQ(calls.All(), (Calls{Notice("0", "0")}));
    EXPECT_EQ(resource->SuppressedCount(), 0u);
}

TEST_P(OutputResources, MayBeReadAndWrittenByWhoIsTold)
{
    resource->NotificationEvent().Add([this](ZuRest::IResource&, ZuRest::EventType, std::string const&) {
        calls.Add("enabled " + Read().at("enabled").dump());
        Write({{"enabled", true}});
    });

    Write({{"enabled", true}});

    EXPECT_EQ(calls.All(), (Calls{Notice("0", "0"), "enabled true"}));
}

TEST_P(OutputResources, PassesOnWhatAHandlerThrowsAndHoldsNoLockThen)
{
    resource->NotificationEvent().Add(
        [](ZuRest::IResource&, ZuRest::EventType, std::string const&) { ZU_THROW(-1000, "no"); });

    EXPECT_EQ(RefusalOf([this] { Write({{"enabled", true}}); }), (Refusal{-1000, "no"}));

    std::thread([this] { EXPECT_EQ(Read().at("enabled"), true); }).join();
    Write({{"enabled", true}}); // unchanged, so no notification
}

TEST_P(OutputResources, ServesManyThreadsAtOnce)
{
    constexpr int ROUNDS = 100;
    std::vector<std::thread> clients;
    for (int client = 0; client < 4; ++client)
    {
        clients.emplace_back([this, client] {
            for (int round = 0; round < ROUNDS; ++round)
            {
                Write({{"enabled", (client + round) % 2 == 0}}, std::to_string(client));
                Json const document = resource->Document(Request({{"device", "0"}}, true), response);
                EXPECT_TRUE(document.at("enabled").is_boolean());
                EXPECT_TRUE(document.contains("_schema"));
            }
        });
    }
    for (std::thread& client : clients)
    {
        client.join();
    }
    calls.Clear();

    bool const last = Read().at("enabled").get<bool>();
    Write({{"enabled", last}});
    EXPECT_EQ(calls.All(), Calls{}); // the last change was notified already
    Write({{"enabled", !last}});
    EXPECT_EQ(calls.All(), (Calls{Notice("0", "0")}));
}

INSTANTIATE_TEST_SUITE_P(OfEachKind, OutputResources, testing::ValuesIn(OUTPUT_CASES),
                         [](auto const& tested) { return std::string(tested.param.name); });

class SerialOutputResourceTest : public ZuTest::ResourceFixture
{
protected:
    ZuRest::RequestInfo const request = Request({{"device", "0"}, {"port", "0"}}, true);
    SerialOutputResource resource{manager};
};

TEST_F(SerialOutputResourceTest, HasAKeyThatIsMisspeltUnderATitleThatIsNot)
{
    Json const format = resource.Document(request, response).at("_schema").at("properties").at("format");

    EXPECT_EQ(format.at("properties").at("customFromatEnabled").at("title"), "Custom Format Enabled");
    EXPECT_EQ(format.at("properties").at("customFromatEnabled").at("sortOrder"), 400);
    std::vector<std::string> titles;
    for (Json const& member : format.at("properties"))
    {
        titles.push_back(member.at("title").get<std::string>());
    }
    EXPECT_EQ(titles, (std::vector<std::string>{"Custom Data Format", "Custom Format Enabled", "Delimiter",
                                                "Invalid Value", "Standard Format Mode", "Terminator"}));
}

TEST_F(SerialOutputResourceTest, DescribesItsStandardOutputsByTypeAlone)
{
    resource.UpdateDocument(request, Json::parse(R"({"standardOutputs": [{"source": "a"}]})"));

    Json const document = resource.Document(request, response);

    EXPECT_EQ(document.at("standardOutputs"), Json::parse(R"([{"source": "a", "outputId": 0}])"));
    EXPECT_EQ(document.at("_schema").at("properties").at("standardOutputs").at("items"), Json::parse(R"([{
        "type": "object",
        "properties": {"source": {"type": "string"}, "outputId": {"type": "integer"}}}])"));
}

TEST_F(SerialOutputResourceTest, IsNotChangedByARateBelowZero)
{
    EXPECT_EQ(RefusalOf([this] { resource.UpdateDocument(request, {{"enabled", true}, {"rate", -1}}); }).status, -997);

    EXPECT_EQ(resource.Document(request, response).at("enabled"), false);
    EXPECT_EQ(resource.Document(request, response).at("_schema").at("properties").at("rate").at("minimum"), 0);
}

} // namespace ZuControl::Protocol
