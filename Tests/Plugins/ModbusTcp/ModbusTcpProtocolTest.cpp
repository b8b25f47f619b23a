#include "Plugins/ModbusTcp/ModbusTcpProtocol.h"
#include "Plugins/Common/ProtocolPlugin.h"
#include "Support/CallLog.h"
#include "Support/FakeScanEngineInterface.h"
#include "Support/FakeSystemInterface.h"
#include "Support/Latch.h"
#include "Support/TestFrames.h"
#include "Tests/Plugins/Common/FakeDataCache.h"
#include "Tests/Plugins/Common/Number.h"
#include "Tests/Plugins/ModbusTcp/TestClient.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlInfo.h"
#include "ZuControl/Control/ControlModuleEnviron.h"
#include "ZuControl/Control/ControlProtocolOperations.h"
#include "ZuControl/Control/ControlScanResults.h"
#include "ZuControl/Control/IControlFactory.h"
#include "ZuControl/ControlProtocol/Fingerprint.h"
#include "ZuControl/ControlProtocol/LayoutCopy.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace ModbusTcp
{

using PluginCommon::FakeDataCache;
using PluginCommon::Number;
using ZuTest::TestFrame;

using Registers = TestClient::Registers;
using ZuControl::ProtocolStatus;

class FakeDeployment final : public ZuControl::IDeploymentQuery
{
public:
    bool IsPhysicalSensor() override
    {
        return true;
    }

    bool IsPhysicalBrackle() override
    {
        return false;
    }

    bool IsVirtualSensor() override
    {
        return false;
    }

    bool IsVirtualBrackle() override
    {
        return false;
    }

    bool IsTavrinServiceApp() override
    {
        return false;
    }
};

/// The service with the real operations and fan-out of the module, over fakes of system, scanner and cache.
class ModbusTcpProtocolTest : public testing::Test
{
protected:
    ModbusTcpProtocolTest()
    {
        environ.operations = &operations;
        environ.dataCache = &dataCache;
        environ.deployment = &deployment;
        environ.problems = &problems;
        protocol = std::make_unique<ModbusTcpProtocol>(environ);
        protocol->AddProtocolStatusUpdateEventHandler([this](ProtocolStatus status) { statuses.push_back(status); });
        Params().port.Set(0);
    }

    ModbusParams& Params()
    {
        return dynamic_cast<ModbusParams&>(protocol->Params());
    }

    std::string Listening()
    {
        return dynamic_cast<ModbusMetrics&>(protocol->UpdateMetrics()).listening.Get();
    }

    uint16 Port()
    {
        std::string const where = Listening();
        return static_cast<uint16>(std::stoi(where.substr(where.rfind(':') + 1)));
    }

    uint16 Start()
    {
        protocol->Start();
        protocol->RegisterControlScanResultsHandler(scanResults);
        return Port();
    }

    static TestFrame Frame(uint64 counter)
    {
        double const value = static_cast<double>(counter);
        TestFrame frame;
        frame.Stamp("profile/stamp", {0, counter, 0, 0, 0});
        for (char const* source : {"profile/zMax", "profile/zMin", "profile/width", "profile/meanZ", "profile/points"})
        {
            frame.Measurement(source, value / 1000, 1);
        }
        return frame;
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

    bool StatusBecomes(TestClient& client, Registers const& expected)
    {
        while (std::chrono::steady_clock::now() < latest)
        {
            if (client.Read(66, 2) == expected)
            {
                return true;
            }
        }
        ADD_FAILURE() << "request " << client.Read(66, 1)[0] << " has status " << client.Read(67, 1)[0];
        return false;
    }

    std::chrono::steady_clock::time_point const latest = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    ZuTest::Latch mayEnd; // both latches outlive the worker, which waits for one and opens the other
    ZuTest::Latch restarted;
    ZuTest::CallLog calls;
    ZuTest::FakeSystemInterface systemInterface{calls};
    ZuTest::FakeScanEngineInterface scanEngineInterface{calls};
    FakeDataCache dataCache;
    FakeDeployment deployment;
    ZuCommon::ProblemsManager problems;
    ZuControl::ControlScanResults scanResults{nullptr, nullptr};
    ZuControl::ControlProtocolOperations operations{systemInterface, scanEngineInterface};
    ZuControl::ControlProtocol::ControlProtocolEnviron environ;
    std::vector<ProtocolStatus> statuses;
    std::unique_ptr<ModbusTcpProtocol> protocol;
};

TEST_F(ModbusTcpProtocolTest, BeginsWithTheBlocksOfANewJob)
{
    auto& assembly = protocol->RegisterAssembly("registerAssembly-0");
    std::vector<std::string> placed;
    assembly.BeginLock();
    for (auto const& block : assembly.AddedRegisterBlocks())
    {
        placed.push_back(std::to_string(block->OutputId()) + " " + block->Type() + " " +
                         (block->HasDataSource() ? block->DataSource() : ""));
    }
    assembly.EndLock();

    EXPECT_EQ(placed, (std::vector<std::string>{"0 ControlInput ", "66 ControlOutput ", "68 System ", "140 Scanner ",
                                                "150 Stamp profile/stamp", "170 Measurement profile/zMax",
                                                "173 Measurement profile/zMin", "176 Measurement profile/width",
                                                "179 Measurement profile/meanZ", "182 Measurement profile/points"}));
    EXPECT_EQ(protocol->RegisterAssemblyList(), (std::vector<std::string>{"registerAssembly-0"}));
    EXPECT_EQ(protocol->EthernetProtocolId(), ZuControl::ZuEthernetProtocol{1});
    EXPECT_STREQ(protocol->DisplayName(), "Modbus TCP");
}

TEST_F(ModbusTcpProtocolTest, TellsThatItRunsAndStops)
{
    Start();
    EXPECT_NE(Listening(), "");

    protocol->Stop();

    EXPECT_EQ(statuses, (std::vector<ProtocolStatus>{ProtocolStatus::Running, ProtocolStatus::Stopped}));
    EXPECT_EQ(Listening(), "");
}

TEST_F(ModbusTcpProtocolTest, ShowsResultsOfOneFrameInOneRead)
{
    TestClient client(Start());
    client.Read(0, 1); // after the answer the client is counted

    ASSERT_TRUE(PublishUntil([&] { return client.Read(165, 1)[0] > 100; }));

    for (uint64 i = 0; i < 50; ++i)
    {
        scanResults.ProcessResultSet(Frame(1000 + i).Set());
        Registers const seen = client.Read(150, 35);
        for (std::size_t block = 20; block < 35; block += 3)
        {
            EXPECT_EQ(seen[block + 1], seen[15]) << "of another frame than the stamp";
            EXPECT_EQ(seen[block + 2], 1);
        }
    }
}

TEST_F(ModbusTcpProtocolTest, ShowsTheNewestResultToAMasterThatConnectsForEachRead)
{
    uint16 const port = Start();
    ASSERT_TRUE(PublishUntil([&] {
        return Number(dynamic_cast<ModbusMetrics&>(protocol->UpdateMetrics()), "resultSets") > 100;
    })); // without a client

    TestClient client(port);
    Registers const seen = client.Read(150, 35);

    EXPECT_GT(seen[15], 100);
    EXPECT_EQ(seen[21], seen[15]);
    EXPECT_EQ(Number(dynamic_cast<ModbusMetrics&>(protocol->UpdateMetrics()), "clients"), 1u);
}

TEST_F(ModbusTcpProtocolTest, MarksTheMeasurementsOfAnEarlierScanAsMissing)
{
    TestClient client(Start());
    EXPECT_EQ(client.Read(170, 3), (Registers{0x8000, 0, 0})); // before the first frame
    scanResults.ProcessResultSet(Frame(7).Set());
    while (client.Read(165, 1)[0] != 7 && std::chrono::steady_clock::now() < latest)
    {
    }
    EXPECT_EQ(client.Read(170, 3), (Registers{0, 7, 1}));

    protocol->OnStartScan();

    EXPECT_EQ(client.Read(170, 3), (Registers{0x8000, 0, 0}));
    EXPECT_EQ(client.Read(150, 20), Registers(20, 0));
}

TEST_F(ModbusTcpProtocolTest, ReadsGapsAsZeroUpToTheLastRegister)
{
    TestClient client(Start());

    EXPECT_EQ(client.Read(185, 100), Registers(100, 0));
    EXPECT_EQ(client.Read(9999, 1), Registers{0});
    EXPECT_EQ(client.Ask({4, 0x27, 0x10, 0, 1}), (TestClient::Bytes{0x84, 2}));
}

TEST_F(ModbusTcpProtocolTest, CarriesOutACommandAndAnswersUnderItsRequestId)
{
    TestClient client(Start());
    EXPECT_EQ(client.Read(66, 2), (Registers{0, 0}));

    EXPECT_EQ(client.Write(0, {41, 1}), 0);

    EXPECT_TRUE(StatusBecomes(client, {41, 2}));
    EXPECT_EQ(calls.Count("Start"), 1u);
    EXPECT_EQ(client.Read(0, 2), (Registers{41, 1})); // written values read back
}

TEST_F(ModbusTcpProtocolTest, IsBusyWhileItsOperationRuns)
{
    systemInterface.on["Start"] = [this] { mayEnd.Wait(); };
    TestClient client(Start());
    client.Write(0, {1, 1});

    EXPECT_EQ(client.Read(66, 2), (Registers{1, 1}));
    EXPECT_EQ(client.Write(0, {2, 2}), 6);
    EXPECT_EQ(client.Read(0, 2), (Registers{1, 1}));
    mayEnd.Open();

    EXPECT_TRUE(StatusBecomes(client, {1, 2}));
    EXPECT_EQ(client.Write(0, {2, 2}), 0);
    EXPECT_TRUE(StatusBecomes(client, {2, 2}));
    EXPECT_EQ(calls.Count("Stop"), 1u);
}

TEST_F(ModbusTcpProtocolTest, FailsACommandWhileAnotherProtocolsOperationRuns)
{
    systemInterface.on["Stop"] = [this] { mayEnd.Wait(); };
    TestClient client(Start());
    operations.StopScan(ZuControl::ZuEthernetProtocol{100});

    EXPECT_EQ(client.Write(0, {5, 1}), 0);

    EXPECT_EQ(client.Read(66, 2), (Registers{5, 3}));
    mayEnd.Open();
    EXPECT_EQ(calls.Count("Start"), 0u);
}

TEST_F(ModbusTcpProtocolTest, FailsWhatTheSystemRefusesAndWhatHasNoName)
{
    systemInterface.on["LoadJob(gone)"] = [] { ZU_THROW(-999, "no such job"); };
    TestClient client(Start());

    client.Write(0, {1, 5, 'g', 'o', 'n', 'e', 0});
    EXPECT_TRUE(StatusBecomes(client, {1, 3}));
    client.Write(0, {2, 5, 0});
    EXPECT_TRUE(StatusBecomes(client, {2, 3}));
    client.Write(0, {3, 99});
    EXPECT_TRUE(StatusBecomes(client, {3, 3}));
    client.Write(0, {4, 0});
    EXPECT_TRUE(StatusBecomes(client, {4, 2})); // the command "none" always succeeds

    EXPECT_EQ(calls.Count("LoadJob(gone)"), 1u);
}

TEST_F(ModbusTcpProtocolTest, RefusesWritesOutsideTheCommandBlock)
{
    TestClient client(Start());

    EXPECT_EQ(client.Write(66, {1}), 2);
    EXPECT_EQ(client.Write(65, {1, 1}), 2);
    EXPECT_EQ(client.Write(9999, {1, 1}), 2);
    EXPECT_EQ(client.Read(65, 1), Registers{0});
}

TEST_F(ModbusTcpProtocolTest, CanBeStoppedAndStartedByTheJobThatItsClientLoads)
{
    systemInterface.on["LoadJob(next)"] = [this] {
        protocol->DeregisterControlScanResultsHandler(scanResults);
        protocol->Stop();
        protocol->ConfigureDefaultRegisterAssembly();
        protocol->Start();
        protocol->RegisterControlScanResultsHandler(scanResults);
        restarted.Open();
    };
    TestClient client(Start());
    client.Send({0, 1, 0, 0, 0, 21, 1, 16, 0, 0, 0, 7, 14, 0, 10, 0, 5, 0, 'n', 0, 'e', 0, 'x', 0, 't', 0, 0});

    ASSERT_TRUE(calls.WaitFor("LoadJob(next)"));
    ASSERT_TRUE(restarted.Wait());
    TestClient again(Port());
    EXPECT_TRUE(StatusBecomes(again, {10, 2})); // the answer outlives the restart
}

TEST_F(ModbusTcpProtocolTest, ShowsTheStateOfAnIdleSystem)
{
    ZuControl::IControlDataCache::DataCacheSystemStats stats;
    stats.upTime = 0x0001000200030004;
    stats.runState = ZuCore::RunState{1};
    stats.loadedJob = "job";
    stats.linkStatus = {1};
    ZuControl::IControlDataCache::DataCacheScannerInfo info;
    info.currentEncoderValue = -1;
    info.currentSyncTime = 5;
    dataCache.Set(stats, info);
    problems.Add(0, "Test", "one");
    TestClient client(Start());

    Registers system;
    do
    {
        system = client.Read(68, 72);
    } while (system[0] == 0 && std::chrono::steady_clock::now() < latest);

    EXPECT_EQ(Registers(system.begin(), system.begin() + 10), (Registers{1, 2, 3, 4, 1, 3, 'j', 'o', 'b', 0}));
    EXPECT_EQ(Registers(system.begin() + 70, system.end()), (Registers{1, 1}));
    ASSERT_TRUE(dataCache.calls.WaitFor("ScannerInfo()", 2));
    EXPECT_EQ(client.Read(140, 10), (Registers{0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0, 0, 0, 5, 0, 1}));
}

TEST_F(ModbusTcpProtocolTest, ChangesTheRegisterOrderInPlace)
{
    TestClient client(Start());
    client.Read(0, 1);
    ASSERT_TRUE(PublishUntil([&] { return client.Read(165, 1)[0] > 0; }));

    Params().registerOrder.Set(RegisterOrderLittleEndian);
    protocol->ParamsUpdate();

    ASSERT_TRUE(PublishUntil([&] { return client.Read(162, 1)[0] > 0; }));
    EXPECT_EQ(client.Read(165, 1), Registers{0});
    client.Write(0, {0x0102, 1});
    EXPECT_TRUE(StatusBecomes(client, {0x0102, 2})); // single registers are the same in both orders
}

TEST_F(ModbusTcpProtocolTest, TakesCommandsInARegisterOrderWithSwappedBytes)
{
    TestClient client(Start());
    Params().registerOrder.Set(RegisterOrderLittleEndianSwapped);
    protocol->ParamsUpdate();

    client.Write(0, {0x0201, 0x0100});
    EXPECT_TRUE(StatusBecomes(client, {0x0201, 0x0200}));
    EXPECT_EQ(client.Read(0, 2), (Registers{0x0201, 0x0100}));

    Params().registerOrder.Set(RegisterOrderBigEndianSwapped);
    protocol->ParamsUpdate();
    client.Write(0, {0x0301, 0x0200});
    EXPECT_TRUE(StatusBecomes(client, {0x0301, 0x0200}));
}

TEST_F(ModbusTcpProtocolTest, BindsAnewWhenThePortChangesAndKeepsTheOldOneWhenItCannot)
{
    uint16 const first = Start();
    uint16 free = 0;
    {
        OccupiedPort const taken;
        free = taken.Number();
        Params().port.Set(free);
        EXPECT_THROW(protocol->ParamsUpdate(), Zu::Exception);
        TestClient client(Port());
        EXPECT_EQ(client.Read(150, 1), Registers{0});
    }
    EXPECT_NE(first, 0);
    EXPECT_EQ(Params().port.Get(), 0); // the refused port is not kept

    Params().port.Set(free);
    protocol->ParamsUpdate();

    EXPECT_EQ(Listening(), "127.0.0.1:" + std::to_string(free));
    TestClient client(free);
    EXPECT_EQ(client.Read(150, 1), Registers{0});
}

TEST_F(ModbusTcpProtocolTest, NamesTheBusyPortWhenItCannotStart)
{
    OccupiedPort const taken;
    Params().port.Set(taken.Number());

    try
    {
        protocol->Start();
        FAIL() << "the port was free";
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(std::string(exception.what()), "Modbus TCP cannot listen on 127.0.0.1:" +
                                                     std::to_string(taken.Number()) + ": Address already in use");
    }

    EXPECT_TRUE(statuses.empty()); // the instance reports the failed start, not the protocol
    Params().port.Set(0);
    Start();
    EXPECT_EQ(statuses, std::vector<ProtocolStatus>{ProtocolStatus::Running});
}

TEST_F(ModbusTcpProtocolTest, PutsBackTheDefaults)
{
    Params().maxClients.Set(3);
    Params().address.Set("0.0.0.0");
    Params().registerOrder.Set(RegisterOrderLittleEndian);

    protocol->ResetParams();

    EXPECT_EQ(Params().port.Get(), 1502);
    EXPECT_EQ(Params().address.Get(), "127.0.0.1");
    EXPECT_EQ(Params().maxClients.Get(), 16u);
    EXPECT_EQ(Params().registerOrder.Get(), RegisterOrderBigEndian);
    EXPECT_EQ(Params().idleTimeout.Get(), 60u);
}

TEST_F(ModbusTcpProtocolTest, KeepsItsClientsWhenALoadPutsBackTheDefaultsAndSetsWhatWasThere)
{
    TestClient client(Start());
    client.Read(0, 1);
    uint16 const port = Params().port.Get();

    protocol->ResetParams();
    client.Read(0, 1);
    Params().port.Set(port);
    protocol->ParamsUpdate();

    EXPECT_EQ(client.Read(9000, 1), std::vector<uint16>{0});
}

TEST_F(ModbusTcpProtocolTest, ShowsABlockWhereItHasBeenMoved)
{
    TestClient client(Start());
    client.Read(0, 1);
    ASSERT_TRUE(PublishUntil([&] { return client.Read(171, 1)[0] > 0; }));
    ZuControl::ControlProtocol::UpdateBlockParams move;
    move.outputId.Set(170);
    move.newParams.outputId.Set(600);

    protocol->RegisterAssembly("registerAssembly-0").Update(move);
    protocol->RegisterAssemblyUpdate("registerAssembly-0");

    EXPECT_EQ(client.Read(170, 3), (Registers{0, 0, 0}));
    EXPECT_GT(client.Read(601, 1)[0], 0);
}

TEST_F(ModbusTcpProtocolTest, HandsOverResultsToASlowReaderAndTellsWhatItLost)
{
    constexpr char const* PROBLEM =
        "Modbus TCP has lost results: the PLC reads the result queue at register 300 too slowly";
    ZuControl::ControlProtocol::AddBlockParams added;
    auto& block = added.blocks.Add();
    block.type.Set("ResultQueue");
    block.outputId.Set(300);
    block.dataSource.Set("profile/zMax,queued");
    protocol->RegisterAssembly("registerAssembly-0").Add(added);
    protocol->RegisterAssemblyUpdate("registerAssembly-0");
    Params().queueDepth.Set(2);
    TestClient client(Start());
    auto const sources = protocol->DataSourceList();
    EXPECT_EQ(std::vector<std::string>(sources.end() - 2, sources.end()),
              (std::vector<std::string>{"profile/zMax", "queued"}));

    for (int i = 1; i <= 4; ++i)
    {
        scanResults.ProcessResultSet(TestFrame().Measurement("queued", i / 1000.0).Set()); // no other block has it
    }
    while (client.Read(303, 1)[0] < 2 && std::chrono::steady_clock::now() < latest)
    {
    }

    auto& metrics = dynamic_cast<ModbusMetrics&>(protocol->UpdateMetrics());
    EXPECT_EQ(Number(metrics, "queuedResults"), 2u);
    EXPECT_EQ(Number(metrics, "queueOverflows"), 2u);
    ASSERT_EQ(problems.Count(), 1u);
    EXPECT_EQ(problems.List()[0].text, PROBLEM);
    for (uint16 value = 1; value <= 2; ++value)
    {
        Registers const seen = client.Read(300, 48);
        EXPECT_EQ(seen[19], value);
        EXPECT_EQ(client.Ask({6, 0x01, 0x2C, uint8(seen[1] >> 8), uint8(seen[1] & 0xFF)}).at(0), 6);
    }
    EXPECT_EQ(client.Read(301, 1), Registers{0});
    protocol->UpdateMetrics();
    EXPECT_EQ(problems.Count(), 0u);
    EXPECT_EQ(Number(metrics, "queuedResults"), 0u);
}

TEST_F(ModbusTcpProtocolTest, CountsWhatItDoes)
{
    {
        TestClient client(Start());
        client.Read(0, 1);
        client.Write(0, {1, 0});
        client.Write(66, {1});
    }

    auto& metrics = dynamic_cast<ModbusMetrics&>(protocol->UpdateMetrics());

    EXPECT_EQ(Number(metrics, "requests"), 3u);
    EXPECT_EQ(Number(metrics.exceptions, "2"), 1u);
    EXPECT_EQ(Number(metrics.exceptions, "1"), 0u);
    EXPECT_EQ(Number(metrics, "commands"), 1u);
    EXPECT_EQ(Number(metrics, "registersWritten"), 2u);
    EXPECT_EQ(Number(metrics, "acceptedClients"), 1u);
    EXPECT_EQ(Number(metrics, "controlDrops"), 0u);
    EXPECT_GE(Number(metrics, "largestHandlingUsec"), Number(metrics, "lastHandlingUsec"));
    EXPECT_EQ(problems.Count(), 0u);
}

TEST_F(ModbusTcpProtocolTest, CountsAnewAfterAResetButForItsLifetime)
{
    auto& metrics = dynamic_cast<ModbusMetrics&>(protocol->UpdateMetrics());
    TestClient client(Start());
    client.Read(0, 1);
    client.Read(0, 1);

    protocol->ResetMetrics();
    client.Read(0, 1);
    protocol->UpdateMetrics();

    EXPECT_EQ(Number(metrics, "requests"), 1u);
    EXPECT_EQ(Number(metrics, "acceptedClients"), 0u);
    EXPECT_EQ(Number(metrics, "clients"), 1u); // the present number of clients
    EXPECT_EQ(Number(metrics.lifetime, "requests"), 3u);
    EXPECT_EQ(Number(metrics.lifetime, "acceptedClients"), 1u);
}

TEST_F(ModbusTcpProtocolTest, KeepsTheCountsOfItsLifetimeOverARestart)
{
    nlohmann::json document;
    protocol->InitPersistDomain(ZuCommon::PersistDomain::PROTOCOL, document);
    EXPECT_TRUE(document.is_null()); // at the first start there is no value to store yet
    {
        TestClient client(Start());
        client.Read(0, 1);
        client.Write(66, {1});
    }
    protocol->SavePersistDomain(ZuCommon::PersistDomain::PROTOCOL, document);
    EXPECT_EQ(document.at("lifetime").at("requests"), 2);
    EXPECT_EQ(document.at("lifetime").at("exceptions"), 1);

    ModbusTcpProtocol restarted(environ);
    restarted.LoadPersistDomain(ZuCommon::PersistDomain::PROTOCOL, document);

    auto& metrics = dynamic_cast<ModbusMetrics&>(restarted.UpdateMetrics());
    EXPECT_EQ(Number(metrics, "requests"), 0u);
    EXPECT_EQ(Number(metrics.lifetime, "requests"), 2u);
    EXPECT_EQ(Number(metrics.lifetime, "bytesIn"), document.at("lifetime").at("bytesIn"));
    nlohmann::json again;
    restarted.SavePersistDomain(ZuCommon::PersistDomain::PROTOCOL, again);
    EXPECT_EQ(again, document);
}

TEST_F(ModbusTcpProtocolTest, AddsToTheCountsThatItHasLoadedLate)
{
    auto& metrics = dynamic_cast<ModbusMetrics&>(protocol->UpdateMetrics());
    TestClient client(Start());
    client.Read(0, 1);

    protocol->LoadPersistDomain(ZuCommon::PersistDomain::PROTOCOL, {{"lifetime", {{"requests", 100}}}});
    client.Read(0, 1);
    protocol->UpdateMetrics();

    EXPECT_EQ(Number(metrics.lifetime, "requests"), 101u);
    EXPECT_EQ(Number(metrics, "requests"), 2u);
}

TEST_F(ModbusTcpProtocolTest, RefusesCountsThatAreNoneAndKeepsNothingInAJob)
{
    auto& metrics = dynamic_cast<ModbusMetrics&>(protocol->UpdateMetrics());
    using Json = nlohmann::json;
    auto const load = [this](Json const& document) {
        protocol->LoadPersistDomain(ZuCommon::PersistDomain::PROTOCOL, document);
    };

    EXPECT_THROW(load({{"lifetime", {{"acceptedClients", 7}, {"requests", "many"}}}}), Json::type_error);
    EXPECT_THROW(load({{"lifetime", {{"acceptedClients", 7}, {"requests", -1}}}}), Zu::Exception);
    EXPECT_THROW(load(Json::object()), Json::out_of_range);
    EXPECT_THROW(load(Json::array()), Json::type_error);
    protocol->LoadPersistDomain(ZuCommon::PersistDomain::JOB, {{"lifetime", {{"acceptedClients", 7}}}});
    Json document;
    protocol->SavePersistDomain(ZuCommon::PersistDomain::JOB, document);

    EXPECT_TRUE(document.is_null());
    EXPECT_EQ(Number(metrics.lifetime, "acceptedClients"), 0u);
}

TEST_F(ModbusTcpProtocolTest, LetsAnyThreadReadItsMetricsWhileTheyAreBroughtUpToDate)
{
    uint16 const port = Start();
    std::atomic<bool> done{false};
    std::thread updating([this, &done] {
        while (!done)
        {
            protocol->UpdateMetrics();
        }
    });
    std::thread asking([this, port, &done] {
        TestClient client(port);
        for (int i = 0; i < 200; ++i)
        {
            client.Read(0, 1);
        }
        protocol->Stop();
        done = true;
    });

    nlohmann::json last;
    while (!done)
    {
        last = Zu::Properties::JsonSerializer::Serialize(protocol->GetMetrics());
        std::string const listening = last.at("listening");
        EXPECT_TRUE(listening.empty() || listening == "127.0.0.1:" + std::to_string(port)) << listening;
        EXPECT_LE(last.at("requests"), 200);
    }
    updating.join();
    asking.join();
}

TEST_F(ModbusTcpProtocolTest, ShowsTheFingerprintInRegistersAfterEachChange)
{
    using namespace ZuControl::ControlProtocol;
    auto& assembly = protocol->RegisterAssembly("registerAssembly-0");
    auto const number = [&assembly] { return Fingerprint::Of({ReadLayout(assembly)}); };
    AddBlockParams params;
    params.blocks.Add().type.Set("MapFingerprint");
    params.blocks.At(0).outputId.Set(300);
    assembly.Add(params);
    protocol->RegisterAssemblyUpdate("registerAssembly-0");
    TestClient client(Start());
    EXPECT_EQ(client.Read(300, 2), (Registers{static_cast<uint16>(number() >> 16), static_cast<uint16>(number())}));
    uint32 const before = number();

    Params().registerOrder.Set(RegisterOrderLittleEndian);
    protocol->ParamsUpdate();

    uint32 const little = number();
    EXPECT_NE(little, before);
    EXPECT_EQ(client.Read(300, 2), (Registers{static_cast<uint16>(little), static_cast<uint16>(little >> 16)}));

    Params().registerOrder.Set(RegisterOrderLittleEndianSwapped);
    protocol->ParamsUpdate();

    auto const swapped = [](uint32 word) { return static_cast<uint16>(word << 8 | (word >> 8 & 0xFF)); };
    uint32 const littleSwapped = number();
    EXPECT_NE(littleSwapped, little);
    EXPECT_EQ(client.Read(300, 2), (Registers{swapped(littleSwapped & 0xFFFF), swapped(littleSwapped >> 16)}));
    protocol->ConfigureDefaultRegisterAssembly();
    EXPECT_EQ(client.Read(300, 2), (Registers{0, 0}));
}

TEST_F(ModbusTcpProtocolTest, ShowsNoStateOfOneMapWithTheFingerprintOfAnother)
{
    using namespace ZuControl::ControlProtocol;
    auto& assembly = protocol->RegisterAssembly("registerAssembly-0");
    AddBlockParams params;
    params.blocks.Add().type.Set("MapFingerprint");
    params.blocks.At(0).outputId.Set(190);
    assembly.Add(params);
    protocol->RegisterAssemblyUpdate("registerAssembly-0");
    TestClient client(Start());
    client.Write(0, {41, 1});
    ASSERT_TRUE(StatusBecomes(client, {41, 2}));
    auto const setOrder = [&](char const* order) {
        ModbusUpdateBlockParams update;
        update.outputId.Set(66);
        update.order.Set(order);
        assembly.Update(update);
        protocol->RegisterAssemblyUpdate("registerAssembly-0");
        return Fingerprint::Of({ReadLayout(assembly)});
    };
    uint32 const swapped = setOrder("BADC");
    uint32 const plain = setOrder("ABCD");
    std::atomic<bool> done{false};
    std::thread changes([&] {
        for (int i = 0; i < 300; ++i)
        {
            setOrder(i % 2 == 0 ? "BADC" : "ABCD");
        }
        done = true;
    });

    uint64 wrong = 0;
    while (!done)
    {
        Registers const seen = client.Read(67, 125); // the status of the command, and the fingerprint
        uint32 const fingerprint = uint32{seen[123]} << 16 | seen[124];
        wrong += (fingerprint == plain && seen[0] != 2) || (fingerprint == swapped && seen[0] != 0x0200) ? 1 : 0;
    }
    changes.join();

    EXPECT_EQ(wrong, 0u);
    EXPECT_EQ(client.Read(67, 1), Registers{2});
}

TEST_F(ModbusTcpProtocolTest, NeedsADataCacheAndAProblemsManager)
{
    environ.dataCache = nullptr;

    try
    {
        ModbusTcpProtocol const lacking(environ);
        FAIL() << "it was built";
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(exception.Status(), -997);
        EXPECT_STREQ(exception.what(), "Modbus TCP cannot do without the data cache");
    }
}

TEST_F(ModbusTcpProtocolTest, GoesWhileResultsComeAndClientsRead)
{
    TestClient client(Start());
    std::thread publisher([this] {
        for (uint64 counter = 0; counter < 2000; ++counter)
        {
            scanResults.ProcessResultSet(Frame(counter).Set());
        }
    });
    client.Read(150, 35);

    protocol.reset(); // its handler is still registered with the fan-out

    publisher.join();
    EXPECT_TRUE(client.IsClosedByServer());
}

TEST_F(ModbusTcpProtocolTest, IsMadeByThePlugin)
{
    auto const plugin = PluginCommon::ProtocolPlugin<ModbusTcpProtocol>::Make();

    ASSERT_EQ(plugin->ControlInfoCount(), 1u);
    ZuControl::ControlInfo const& info = plugin->ControlInfoAt(0);
    EXPECT_STREQ(info.TypeName(), "ModbusTcp");
    EXPECT_STREQ(info.DisplayName(), "Modbus TCP");
    EXPECT_EQ(plugin->Type(), "ZuControl.ControlPlugin");
    EXPECT_STREQ(info.Factory().Create(environ)->DisplayName(), "Modbus TCP");
}

} // namespace ModbusTcp
