#include "Plugins/AsciiTcp/AsciiTcpProtocol.h"
#include "Plugins/Common/ProtocolPlugin.h"
#include "Support/CallLog.h"
#include "Support/FakeHost.h"
#include "Support/FakeScanEngineInterface.h"
#include "Support/FakeSystemInterface.h"
#include "Support/Latch.h"
#include "Support/Refusal.h"
#include "Support/TestFrames.h"
#include "Tests/Plugins/Common/FakeDataCache.h"
#include "Tests/Plugins/Common/Number.h"
#include "Tests/Plugins/Common/TcpClient.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlInfo.h"
#include "ZuControl/Control/ControlProtocolOperations.h"
#include "ZuControl/Control/ControlScanResults.h"
#include "ZuControl/Control/IControlFactory.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace AsciiTcp
{

using PluginCommon::FakeDataCache;
using PluginCommon::Number;
using PluginCommon::OccupiedPort;
using PluginCommon::TcpClient;
using ZuCommon::PersistDomain;
using ZuControl::ProtocolStatus;
using ZuControl::ControlProtocol::TextIdStandardOutputItemArgs;
using ZuTest::TestFrame;

/// The service with the real operations and fan-out of the module, over fakes of system, scanner and cache.
class AsciiTcpProtocolTest : public testing::Test
{
protected:
    AsciiTcpProtocolTest()
    {
        deployment.physicalSensor = true;
        environ.operations = &operations;
        environ.dataCache = &dataCache;
        environ.deployment = &deployment;
        environ.problems = &problems;
        protocol = std::make_unique<AsciiTcpProtocol>(environ);
        protocol->AddProtocolStatusUpdateEventHandler([this](ProtocolStatus status) { statuses.push_back(status); });
        Params().port.Set(0);
    }

    AsciiParams& Params()
    {
        return dynamic_cast<AsciiParams&>(protocol->Params());
    }

    AsciiMetrics& Metrics()
    {
        return dynamic_cast<AsciiMetrics&>(protocol->UpdateMetrics());
    }

    uint16 Port()
    {
        std::string const where = Metrics().listening.Get();
        return static_cast<uint16>(std::stoi(where.substr(where.rfind(':') + 1)));
    }

    uint16 Start()
    {
        protocol->Start();
        protocol->RegisterControlScanResultsHandler(scanResults);
        return Port();
    }

    static std::string Ask(TcpClient& client, std::string const& request)
    {
        client.SendText(request + "\n");
        return client.ReceiveLine();
    }

    static TestFrame Frame(uint64 counter)
    {
        TestFrame frame;
        frame.Stamp("profile/stamp", {0, counter, 0, 0, 0});
        for (char const* source : {"profile/zMax", "profile/zMin", "profile/width", "profile/meanZ", "profile/points"})
        {
            frame.Measurement(source, static_cast<double>(counter), 1);
        }
        return frame;
    }

    static std::string DataLine(std::string const& frame)
    {
        std::string const value = "=" + frame + ".000:1";
        return "DATA " + frame + " meanZ" + value + " points" + value + " width" + value + " zMax" + value + " zMin" +
               value;
    }

    /// Publishes frame after frame until `isThere` returns true, with a bound.
    template <typename Predicate>
    bool PublishUntil(Predicate isThere)
    {
        for (uint64 counter = 1; std::chrono::steady_clock::now() < latest; ++counter)
        {
            scanResults.ProcessResultSet(Frame(counter).Set());
            if (isThere())
            {
                return true;
            }
        }
        return false;
    }

    /// Repeats the request until it gets this answer, with a bound.
    bool Becomes(TcpClient& client, std::string const& request, std::string const& answer)
    {
        std::string last;
        while (std::chrono::steady_clock::now() < latest && last != answer)
        {
            last = Ask(client, request);
        }
        EXPECT_EQ(last, answer);
        return last == answer;
    }

    void Connect(std::string const& name, std::string const& source)
    {
        TextIdStandardOutputItemArgs item;
        item.outputId.Set(name);
        item.source.Set(source);
        protocol->OutputsActionTarget().InvokeAction("add", item);
        protocol->OutputsUpdate();
        scanResults.UpdateOutputMap(protocol->EthernetProtocolId(), protocol->DataSourceList());
    }

    std::string Invoke(std::string const& id, std::string const& text)
    {
        auto const args = protocol->ActionTarget()->GetActionParams(id);
        if (auto* const value = dynamic_cast<Zu::Params::Value<std::string>*>(args->Find("text")); value != nullptr)
        {
            value->Set(text);
        }
        auto const result = protocol->ActionTarget()->InvokeAction(id, *args);
        return std::to_string(dynamic_cast<Zu::Params::Value<uint64>&>(*result->Find("clients")).Get());
    }

    std::chrono::steady_clock::time_point const latest = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    ZuTest::Latch mayEnd; // both latches outlive the worker, which waits for one and opens the other
    ZuTest::Latch restarted;
    ZuTest::CallLog calls;
    ZuTest::FakeSystemInterface systemInterface{calls};
    ZuTest::FakeScanEngineInterface scanEngineInterface{calls};
    FakeDataCache dataCache;
    ZuTest::FakeDeployment deployment;
    ZuCommon::ProblemsManager problems;
    ZuControl::ControlScanResults scanResults{nullptr, nullptr};
    ZuControl::ControlProtocolOperations operations{systemInterface, scanEngineInterface};
    ZuControl::ControlProtocol::ControlProtocolEnviron environ;
    std::vector<ProtocolStatus> statuses;
    std::unique_ptr<AsciiTcpProtocol> protocol;
};

TEST_F(AsciiTcpProtocolTest, IsBornWithTheNamesOfANewJob)
{
    TcpClient client(Start());

    EXPECT_EQ(Ask(client, "LIST"), "OK 5 meanZ points width zMax zMin");
    EXPECT_EQ(Ask(client, "GET zMax"), "OK zMax none 0");
    EXPECT_EQ(protocol->EthernetProtocolId(), ZuControl::ZuEthernetProtocol{2});
    EXPECT_STREQ(protocol->DisplayName(), "ASCII over TCP");
    EXPECT_TRUE(protocol->HasProtocolOutput());
    EXPECT_TRUE(protocol->HasOutputsActionTarget());
    EXPECT_FALSE(protocol->HasRegisterAssemblyGroup());
}

TEST_F(AsciiTcpProtocolTest, WantsTheStampWithItsSources)
{
    EXPECT_EQ(protocol->DataSourceList(), (std::vector<std::string>{"profile/meanZ", "profile/points", "profile/width",
                                                                    "profile/zMax", "profile/zMin", "profile/stamp"}));
    Connect("frame", "profile/stamp");
    EXPECT_EQ(protocol->DataSourceList().size(), 6u); // once

    protocol->OutputsActionTarget().InvokeAction("removeAll", Zu::Params::Group(""));
    EXPECT_TRUE(protocol->DataSourceList().empty());
}

TEST_F(AsciiTcpProtocolTest, ShowsWhereItListensWithoutAnUpdateOfItsMetrics)
{
    protocol->Start();

    auto const& record = dynamic_cast<AsciiMetrics const&>(protocol->GetMetrics());
    EXPECT_EQ(record.listening.Get(), "127.0.0.1:" + std::to_string(Port()));
}

TEST_F(AsciiTcpProtocolTest, TellsThatItRunsAndStops)
{
    Start();
    EXPECT_NE(Metrics().listening.Get(), "");

    protocol->Stop();

    EXPECT_EQ(statuses, (std::vector<ProtocolStatus>{ProtocolStatus::Running, ProtocolStatus::Stopped}));
    EXPECT_EQ(Metrics().listening.Get(), "");
}

TEST_F(AsciiTcpProtocolTest, GivesTheNewestValue)
{
    TcpClient client(Start());
    Ask(client, "HELP"); // after the answer the client is counted

    ASSERT_TRUE(PublishUntil([&] { return Ask(client, "GET zMax") != "OK zMax none 0"; }));
    scanResults.ProcessResultSet(Frame(1'000'000).Set());

    EXPECT_TRUE(Becomes(client, "GET zMax", "OK zMax 1000000.000 1"));
    EXPECT_EQ(Ask(client, "GET points"), "OK points 1000000.000 1");
}

TEST_F(AsciiTcpProtocolTest, SendsALineForEachSetWhileSubscribed)
{
    TcpClient client(Start());
    EXPECT_EQ(Ask(client, "SUBSCRIBE"), "OK");

    for (uint64 counter = 1; counter <= 500; ++counter)
    {
        scanResults.ProcessResultSet(Frame(counter).Set());
    }

    for (int counter = 1; counter <= 500; ++counter)
    {
        ASSERT_EQ(client.ReceiveLine(), DataLine(std::to_string(counter)));
    }
    EXPECT_EQ(Ask(client, "UNSUBSCRIBE"), "OK");
    scanResults.ProcessResultSet(Frame(501).Set());
    EXPECT_TRUE(Becomes(client, "GET zMax", "OK zMax 501.000 1")); // and no data line is among the answers
    EXPECT_EQ(Number(Metrics(), "controlDrops"), 0u);
}

TEST_F(AsciiTcpProtocolTest, ServesOthersWhileAClientDoesNotReadAndReportsTheDrops)
{
    uint16 const port = Start();
    TcpClient slow(port, 4096);
    TcpClient other(port);
    Ask(slow, "SUBSCRIBE");
    Ask(other, "HELP");

    ASSERT_TRUE(PublishUntil(
        [&] { return Ask(other, "GET zMax").starts_with("OK zMax") && Number(Metrics(), "controlDrops") > 0; }));

    EXPECT_EQ(problems.List().front().text, "Control drops detected for ASCII over TCP protocol.");
    std::string first;
    while (std::chrono::steady_clock::now() < latest && !first.starts_with("DATA"))
    {
        first = slow.ReceiveLine(); // the client is still connected and gets the kept lines
    }
    EXPECT_EQ(first, DataLine("1"));
    protocol->OnStartScan();
    protocol->UpdateMetrics();
    EXPECT_EQ(problems.Count(), 0u);
}

TEST_F(AsciiTcpProtocolTest, TellsTheEndOfAnOperationToWhoBeganIt)
{
    uint16 const port = Start();
    TcpClient client(port);
    TcpClient other(port);
    Ask(other, "HELP");

    EXPECT_EQ(Ask(client, "START"), "OK");
    EXPECT_EQ(client.ReceiveLine(), "DONE");
    EXPECT_TRUE(Ask(client, "STATUS").find(" operation=done ") != std::string::npos);
    systemInterface.on["LoadJob(gone)"] = [] { ZU_THROW(-999, "no such job"); };
    EXPECT_EQ(Ask(client, "LOAD gone"), "OK");
    EXPECT_EQ(client.ReceiveLine(), "FAILED");

    EXPECT_EQ(Ask(other, "GET nothing"), "ERROR -999 There is no output of this name"); // no end came before it
    EXPECT_EQ(calls.Count("Start"), 1u);
}

TEST_F(AsciiTcpProtocolTest, PassesEachOperationOnWithItsArgument)
{
    scanEngineInterface.on["SoftwareTrigger(scanner-0)"] = [] {};
    TcpClient client(Start());
    for (char const* request :
         {"STOP", "CLEARALIGN", "CLEARALIGN scanner-0", "TRIGGER", "TRIGGER scanner-0", "LOAD a b"})
    {
        EXPECT_EQ(Ask(client, request), "OK") << request;
        EXPECT_EQ(client.ReceiveLine(), "DONE") << request;
    }

    EXPECT_EQ(calls.All(), (ZuTest::CallLog::Calls{"Stop", "ClearAlignment()", "ClearAlignment(scanner-0)",
                                                   "SoftwareTrigger()", "SoftwareTrigger(scanner-0)", "LoadJob(a b)"}));
    std::string const longest(63, 'j');
    EXPECT_EQ(Ask(client, "LOAD " + longest + "j"), "ERROR -997 The argument has more than 63 bytes");
    EXPECT_EQ(Ask(client, "LOAD " + longest), "OK");
    EXPECT_EQ(client.ReceiveLine(), "DONE");
    EXPECT_EQ(calls.Count("LoadJob(" + longest + ")"), 1u);
}

TEST_F(AsciiTcpProtocolTest, IsBusyWhileItsOperationRuns)
{
    systemInterface.on["Start"] = [this] { mayEnd.Wait(); };
    uint16 const port = Start();
    TcpClient client(port);
    TcpClient other(port);
    EXPECT_EQ(Ask(client, "START"), "OK");

    std::string const busy = "ERROR -976 An operation that a client of this service began is still running";
    EXPECT_EQ(Ask(client, "STOP"), busy);
    EXPECT_EQ(Ask(other, "STOP"), busy);
    EXPECT_NE(Ask(other, "STATUS").find(" operation=running "), std::string::npos);
    mayEnd.Open();

    EXPECT_EQ(client.ReceiveLine(), "DONE");
    EXPECT_EQ(Ask(other, "STOP"), "OK");
    EXPECT_EQ(other.ReceiveLine(), "DONE");
}

TEST_F(AsciiTcpProtocolTest, RefusesWhileAnotherProtocolsOperationRuns)
{
    systemInterface.on["Stop"] = [this] { mayEnd.Wait(); };
    TcpClient client(Start());
    operations.StopScan(ZuControl::ZuEthernetProtocol{100});

    EXPECT_EQ(Ask(client, "START"),
              "ERROR -976 Protocol 2 operation 0 rejected because another operation is in progress");

    EXPECT_NE(Ask(client, "STATUS").find(" operation=none "), std::string::npos);
    mayEnd.Open();
    EXPECT_TRUE(Becomes(client, "START", "OK"));
    EXPECT_EQ(client.ReceiveLine(), "DONE");
}

TEST_F(AsciiTcpProtocolTest, EndsTheConnectionOfAHalfClosedClientWhenItHasItsAnswers)
{
    systemInterface.on["Start"] = [this] { mayEnd.Wait(); };
    TcpClient client(Start());
    client.SendText("GET zMax\nSTART\nLIST");

    client.EndSending();

    EXPECT_EQ(client.ReceiveLine(), "OK zMax none 0");
    EXPECT_EQ(client.ReceiveLine(), "OK");
    mayEnd.Open();
    EXPECT_EQ(client.ReceiveLine(), "DONE");
    EXPECT_TRUE(client.IsClosedByServer());
    EXPECT_EQ(Number(Metrics(), "droppedClients"), 0u);
}

TEST_F(AsciiTcpProtocolTest, SendsResultsOnToAHalfClosedSubscriber)
{
    TcpClient client(Start());
    client.SendText("SUBSCRIBE\n");
    client.EndSending();
    EXPECT_EQ(client.ReceiveLine(), "OK");

    scanResults.ProcessResultSet(Frame(1).Set());

    EXPECT_EQ(client.ReceiveLine(), DataLine("1"));
}

TEST_F(AsciiTcpProtocolTest, DropsASilentClientAndNoSubscriber)
{
    Params().idleTimeout.Set(1);
    uint16 const port = Start();
    TcpClient silent(port);
    TcpClient halfALine(port);
    TcpClient subscriber(port);
    halfALine.SendText("LIS");
    Ask(subscriber, "SUBSCRIBE");

    EXPECT_TRUE(silent.IsClosedByServer());
    EXPECT_TRUE(halfALine.IsClosedByServer());

    scanResults.ProcessResultSet(Frame(1).Set());
    EXPECT_EQ(subscriber.ReceiveLine(), DataLine("1"));
    EXPECT_EQ(Number(Metrics(), "droppedClients"), 2u);
}

TEST_F(AsciiTcpProtocolTest, TurnsAwayWhoComesBeyondTheCap)
{
    Params().maxClients.Set(2);
    uint16 const port = Start();
    TcpClient first(port);
    TcpClient second(port);
    Ask(first, "HELP");
    Ask(second, "HELP");

    TcpClient third(port);

    EXPECT_TRUE(third.IsClosedByServer());
    EXPECT_EQ(Ask(first, "GET zMax"), "OK zMax none 0");
    Params().maxClients.Set(3);
    protocol->ParamsUpdate();
    TcpClient fourth(port);
    EXPECT_EQ(Ask(fourth, "GET zMax"), "OK zMax none 0");
    EXPECT_EQ(Number(Metrics(), "clients"), 3u);
    EXPECT_EQ(Number(Metrics(), "rejectedClients"), 1u);
}

TEST_F(AsciiTcpProtocolTest, FollowsAChangedMap)
{
    TcpClient client(Start());

    Connect("largest z", "profile/largest");

    EXPECT_EQ(Ask(client, "LIST"), "OK 6 largest%20z meanZ points width zMax zMin");
    EXPECT_EQ(Ask(client, "GET largest z"), "OK largest%20z none 0");
    EXPECT_EQ(Ask(client, "GET largest%20z"), "OK largest%20z none 0");
    protocol->Outputs().Clear(); // as the load of a new job does
    protocol->OutputsUpdate();
    EXPECT_EQ(Ask(client, "LIST"), "OK 5 meanZ points width zMax zMin");
}

TEST_F(AsciiTcpProtocolTest, WritesAsManyDigitsAsItIsTold)
{
    TcpClient client(Start());
    Ask(client, "HELP");
    scanResults.ProcessResultSet(Frame(7).Set());
    ASSERT_TRUE(Becomes(client, "GET zMax", "OK zMax 7.000 1"));

    Params().decimals.Set(1);
    protocol->ParamsUpdate();

    EXPECT_EQ(Ask(client, "GET zMax"), "OK zMax 7.0 1"); // over the same connection
}

TEST_F(AsciiTcpProtocolTest, BindsAnewWhenThePortChangesAndKeepsTheOldOneWhenItCannot)
{
    uint16 const first = Start();
    uint16 free = 0;
    {
        OccupiedPort const taken;
        free = taken.Number();
        Params().port.Set(free);
        EXPECT_EQ(ZuTest::RefusalOf([this] { protocol->ParamsUpdate(); }),
                  (ZuTest::Refusal{-976, "ASCII over TCP cannot listen on 127.0.0.1:" + std::to_string(free) +
                                             ": Address already in use"}));
        EXPECT_EQ(Port(), first);
        TcpClient client(first);
        EXPECT_EQ(Ask(client, "GET zMax"), "OK zMax none 0");
        EXPECT_EQ(Params().port.Get(), 0); // the refused port is not kept
    }

    Params().port.Set(free);
    protocol->ParamsUpdate();

    EXPECT_EQ(Metrics().listening.Get(), "127.0.0.1:" + std::to_string(free));
    TcpClient client(free);
    EXPECT_EQ(Ask(client, "GET zMax"), "OK zMax none 0");
}

TEST_F(AsciiTcpProtocolTest, NamesTheBusyPortWhenItCannotStart)
{
    OccupiedPort const taken;
    Params().port.Set(taken.Number());

    EXPECT_EQ(ZuTest::RefusalOf([this] { protocol->Start(); }).status, -976);

    EXPECT_TRUE(statuses.empty()); // the instance reports the failed start, not the protocol
    Params().port.Set(0);
    Start();
    EXPECT_EQ(statuses, std::vector<ProtocolStatus>{ProtocolStatus::Running});
}

TEST_F(AsciiTcpProtocolTest, PutsBackTheDefaults)
{
    Params().decimals.Set(1);
    Params().address.Set("0.0.0.0");

    protocol->ResetParams();

    EXPECT_EQ(Params().port.Get(), 5025);
    EXPECT_EQ(Params().address.Get(), "127.0.0.1");
    EXPECT_EQ(Params().maxClients.Get(), 16u);
    EXPECT_EQ(Params().decimals.Get(), 3u);
    EXPECT_EQ(Params().idleTimeout.Get(), 60u);
}

TEST_F(AsciiTcpProtocolTest, SendsATextToEveryClient)
{
    uint16 const port = Start();
    TcpClient first(port);
    TcpClient second(port);
    Ask(first, "HELP");
    Ask(second, "HELP");

    EXPECT_EQ(Invoke("sendText", "shift ends"), "2");

    EXPECT_EQ(first.ReceiveLine(), "TEXT shift ends");
    EXPECT_EQ(second.ReceiveLine(), "TEXT shift ends");
    EXPECT_EQ(Metrics().lastText.Get(), "shift ends");
}

TEST_F(AsciiTcpProtocolTest, DisconnectsEveryClient)
{
    uint16 const port = Start();
    TcpClient first(port);
    TcpClient second(port);
    Ask(first, "HELP");
    Ask(second, "SUBSCRIBE");

    EXPECT_EQ(Invoke("disconnectAll", ""), "2");

    EXPECT_TRUE(first.IsClosedByServer());
    EXPECT_TRUE(second.IsClosedByServer());
    TcpClient next(port);
    EXPECT_EQ(Ask(next, "GET zMax"), "OK zMax none 0");
    EXPECT_EQ(Number(Metrics(), "droppedClients"), 2u);
    EXPECT_EQ(Number(Metrics(), "clients"), 1u);
}

TEST_F(AsciiTcpProtocolTest, ReachesNobodyWithACommandWhileItIsStopped)
{
    EXPECT_EQ(Invoke("sendText", "kept all the same"), "0");
    EXPECT_EQ(Invoke("disconnectAll", ""), "0");

    EXPECT_EQ(Metrics().lastText.Get(), "kept all the same");
}

TEST_F(AsciiTcpProtocolTest, KeepsTheLastTextInItsSettings)
{
    nlohmann::json document;
    protocol->InitPersistDomain(PersistDomain::PROTOCOL, document);
    protocol->SavePersistDomain(PersistDomain::PROTOCOL, document);
    EXPECT_TRUE(document.is_null()); // nothing to keep
    Invoke("sendText", "shift ends");
    protocol->SavePersistDomain(PersistDomain::JOB, document);
    EXPECT_TRUE(document.is_null());
    protocol->SavePersistDomain(PersistDomain::PROTOCOL, document);
    EXPECT_EQ(document.dump(), R"({"lastText":"shift ends"})");

    nlohmann::json untouched;
    protocol->InitPersistDomain(PersistDomain::PROTOCOL, untouched);
    EXPECT_TRUE(untouched.is_null());
    EXPECT_EQ(Metrics().lastText.Get(), "");
    protocol->LoadPersistDomain(PersistDomain::PROTOCOL, document);
    EXPECT_EQ(Metrics().lastText.Get(), "shift ends");
    protocol->LoadPersistDomain(PersistDomain::JOB, nlohmann::json::object());
    EXPECT_EQ(Metrics().lastText.Get(), "shift ends");
    protocol->OnFactoryRestore();
    EXPECT_EQ(Metrics().lastText.Get(), "");
}

TEST_F(AsciiTcpProtocolTest, StoresThatAFactoryRestoreRemovedTheText)
{
    Invoke("sendText", "shift ends");
    protocol->OnFactoryRestore();

    nlohmann::json document;
    protocol->SavePersistDomain(PersistDomain::PROTOCOL, document);

    EXPECT_EQ(document.dump(), R"({"lastText":""})"); // null would leave the stored text in place
    AsciiTcpProtocol restarted(environ);
    restarted.LoadPersistDomain(PersistDomain::PROTOCOL, document);
    EXPECT_EQ(dynamic_cast<AsciiMetrics&>(restarted.UpdateMetrics()).lastText.Get(), "");
    nlohmann::json savedAgain;
    restarted.SavePersistDomain(PersistDomain::PROTOCOL, savedAgain);
    EXPECT_EQ(savedAgain, document);
}

TEST_F(AsciiTcpProtocolTest, StoresNothingForAFactoryRestoreWithoutAText)
{
    protocol->OnFactoryRestore();

    nlohmann::json document;
    protocol->SavePersistDomain(PersistDomain::PROTOCOL, document);

    EXPECT_TRUE(document.is_null());
}

TEST_F(AsciiTcpProtocolTest, RefusesSettingsThatHoldNoText)
{
    Invoke("sendText", "stays");
    for (char const* document : {"[]", "7", "{}", R"({"lastText": 7})", R"({"lastText": "a\nb"})"})
    {
        EXPECT_EQ(ZuTest::RefusalOf(
                      [&] { protocol->LoadPersistDomain(PersistDomain::PROTOCOL, nlohmann::json::parse(document)); }),
                  (ZuTest::Refusal{-984, "The settings of ASCII over TCP hold no text that could be sent"}))
            << document;
    }
    EXPECT_EQ(Metrics().lastText.Get(), "stays");
}

TEST_F(AsciiTcpProtocolTest, ShowsTheStateOfTheSystem)
{
    ZuControl::IControlDataCache::DataCacheSystemStats stats;
    stats.upTime = 1234;
    stats.runState = ZuCore::RunState{1};
    stats.loadedJob = "line 7";
    dataCache.Set(stats, {});
    problems.Add(0, "Test", "one");
    TcpClient client(Start());

    EXPECT_TRUE(
        Becomes(client, "STATUS", "OK state=running job=line%207 operation=none problems=1 uptime=1234 clients=1"));
}

TEST_F(AsciiTcpProtocolTest, CanBeStoppedAndStartedByTheJobThatItsClientLoads)
{
    systemInterface.on["LoadJob(next)"] = [this] {
        protocol->DeregisterControlScanResultsHandler(scanResults);
        protocol->Stop();
        protocol->Outputs().Clear();
        protocol->OutputsUpdate();
        protocol->Start();
        protocol->RegisterControlScanResultsHandler(scanResults);
        restarted.Open();
    };
    TcpClient client(Start());
    EXPECT_EQ(Ask(client, "LOAD next"), "OK");
    EXPECT_TRUE(client.IsClosedByServer());

    ASSERT_TRUE(restarted.Wait());
    TcpClient again(Port());
    while (std::chrono::steady_clock::now() < latest &&
           Ask(again, "STATUS").find(" operation=done ") == std::string::npos)
    {
        // the answer outlives the restart
    }
    EXPECT_NE(Ask(again, "STATUS").find(" operation=done "), std::string::npos);
    EXPECT_EQ(Ask(again, "START"), "OK");
    EXPECT_EQ(again.ReceiveLine(), "DONE");
}

TEST_F(AsciiTcpProtocolTest, CountsWhatItDoes)
{
    TcpClient client(Start());
    Ask(client, "LIST");
    Ask(client, "NONSENSE");
    Ask(client, "HELP"); // after its answer all earlier lines are counted

    AsciiMetrics& metrics = Metrics();

    EXPECT_EQ(Number(metrics, "requests"), 3u);
    EXPECT_EQ(Number(metrics, "errors"), 1u);
    EXPECT_EQ(Number(metrics, "acceptedClients"), 1u);
    EXPECT_EQ(Number(metrics, "clients"), 1u);
    EXPECT_EQ(Number(metrics, "bytesIn"), 19u);
    EXPECT_GT(Number(metrics, "bytesOut"), 50u);
    EXPECT_GE(Number(metrics, "largestHandlingUsec"), Number(metrics, "lastHandlingUsec"));
    protocol->ResetMetrics();
    EXPECT_EQ(Number(Metrics(), "requests"), 0u);
    EXPECT_EQ(Number(Metrics(), "clients"), 1u);
}

TEST_F(AsciiTcpProtocolTest, NeedsADataCacheAndAProblemsManager)
{
    environ.dataCache = nullptr;
    EXPECT_EQ(ZuTest::RefusalOf([this] { AsciiTcpProtocol const lacking(environ); }),
              (ZuTest::Refusal{-997, "ASCII over TCP cannot do without the data cache"}));
    environ.dataCache = &dataCache;
    environ.problems = nullptr;
    EXPECT_EQ(ZuTest::RefusalOf([this] { AsciiTcpProtocol const lacking(environ); }),
              (ZuTest::Refusal{-997, "ASCII over TCP cannot do without the problems manager"}));
}

TEST_F(AsciiTcpProtocolTest, GoesWhileResultsComeAndClientsRead)
{
    TcpClient client(Start());
    Ask(client, "SUBSCRIBE");
    std::thread publisher([this] {
        for (uint64 counter = 0; counter < 2000; ++counter)
        {
            scanResults.ProcessResultSet(Frame(counter).Set());
        }
    });
    client.ReceiveLine();

    protocol.reset(); // its handler is still registered with the fan-out

    publisher.join();
    EXPECT_THROW(
        while (true) { client.ReceiveLine(); }, std::runtime_error); // closed after the sent lines
}

TEST_F(AsciiTcpProtocolTest, TakesChangesFromEverywhereWhileItServes)
{
    TcpClient client(Start());
    Ask(client, "SUBSCRIBE");
    std::thread publisher([this] {
        for (uint64 counter = 1; counter <= 2000; ++counter)
        {
            scanResults.ProcessResultSet(Frame(counter).Set());
        }
    });
    std::thread changer([this] {
        for (uint32 i = 0; i < 200; ++i)
        {
            Params().decimals.Set(i % 10);
            protocol->ParamsUpdate();
            Connect("output " + std::to_string(i), "source " + std::to_string(i));
            Invoke("sendText", "text");
            protocol->UpdateMetrics();
        }
    });

    std::string last;
    while (!last.starts_with("DATA 2000 "))
    {
        last = client.ReceiveLine();
    }

    publisher.join();
    changer.join();
    EXPECT_EQ(Number(Metrics(), "resultSets"), 2000u);
}

TEST_F(AsciiTcpProtocolTest, IsMadeByThePlugin)
{
    auto const plugin = PluginCommon::ProtocolPlugin<AsciiTcpProtocol>::Make();

    ASSERT_EQ(plugin->ControlInfoCount(), 1u);
    ZuControl::ControlInfo const& info = plugin->ControlInfoAt(0);
    EXPECT_STREQ(info.TypeName(), "AsciiTcp");
    EXPECT_STREQ(info.DisplayName(), "ASCII over TCP");
    EXPECT_EQ(plugin->Type(), "ZuControl.ControlPlugin");
    EXPECT_STREQ(info.Factory().Create(environ)->DisplayName(), "ASCII over TCP");
}

} // namespace AsciiTcp
