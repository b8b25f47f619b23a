#include "Plugins/SparkplugMqtt/SparkplugMqttProtocol.h"
#include "Plugins/Common/ProtocolPlugin.h"
#include "Support/CallLog.h"
#include "Support/FakeHost.h"
#include "Support/FakeScanEngineInterface.h"
#include "Support/FakeSystemInterface.h"
#include "Support/Refusal.h"
#include "Tests/Plugins/Common/FakeDataCache.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlProtocolOperations.h"
#include "ZuControl/Control/ControlScanResults.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace SparkplugMqtt
{

using PluginCommon::FakeDataCache;
using ZuCommon::PersistDomain;
using ZuControl::ProtocolStatus;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

/// The service with the real operations and fan-out of the module, over fakes of system, scanner and cache. No server
/// listens.
class SparkplugMqttProtocolTest : public testing::Test
{
protected:
    SparkplugMqttProtocolTest()
    {
        deployment.physicalSensor = true;
        environ.operations = &operations;
        environ.dataCache = &dataCache;
        environ.deployment = &deployment;
        environ.problems = &problems;
        protocol = std::make_unique<SparkplugMqttProtocol>(environ);
        protocol->AddProtocolStatusUpdateEventHandler([this](ProtocolStatus status) { statuses.push_back(status); });
        Params().servers[0].Set("127.0.0.1:1");
    }

    SparkplugParams& Params()
    {
        return dynamic_cast<SparkplugParams&>(protocol->Params());
    }

    SparkplugMetrics& Metrics()
    {
        return dynamic_cast<SparkplugMetrics&>(protocol->UpdateMetrics());
    }

    void SetPassword(std::string const& password)
    {
        PasswordParams args;
        args.password.Set(password);
        protocol->ActionTarget()->InvokeAction("setPassword", args);
    }

    nlohmann::json Saved()
    {
        nlohmann::json document;
        protocol->SavePersistDomain(PersistDomain::PROTOCOL, document);
        return document;
    }

    static bool Becomes(std::function<bool()> const& condition)
    {
        auto const latest = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!condition() && std::chrono::steady_clock::now() < latest)
        {
            std::this_thread::yield();
        }
        return condition();
    }

    ZuTest::CallLog calls;
    ZuTest::FakeSystemInterface systemInterface{calls};
    ZuTest::FakeScanEngineInterface scanEngineInterface{calls};
    ZuControl::ControlProtocolOperations operations{systemInterface, scanEngineInterface};
    FakeDataCache dataCache;
    ZuTest::FakeDeployment deployment;
    ZuCommon::ProblemsManager problems;
    ZuControl::ControlScanResults scanResults{nullptr, nullptr};
    ZuControl::ControlProtocol::ControlProtocolEnviron environ;
    std::vector<ProtocolStatus> statuses;
    std::unique_ptr<SparkplugMqttProtocol> protocol;
};

TEST_F(SparkplugMqttProtocolTest, StartsWithoutAServerAndTriesAgain)
{
    protocol->Start();
    protocol->Start();
    EXPECT_TRUE(Becomes([this] { return Metrics().session.Get() == "pausing"; }));
    EXPECT_EQ(Metrics().server.Get(), "127.0.0.1:1");
    protocol->Stop();
    EXPECT_EQ(Metrics().session.Get(), "");
    EXPECT_EQ(statuses, (std::vector{ProtocolStatus::Running, ProtocolStatus::Stopped}));
}

TEST_F(SparkplugMqttProtocolTest, RefusesToStartWithParametersThatAreNotAllowed)
{
    Params().groupId.Set("a/b"); // as a job does, which is not validated
    EXPECT_EQ(RefusalOf([this] { protocol->Start(); }),
              (Refusal{Zu::Status::BAD_ARGUMENT,
                       "An id has 1 to 128 bytes of UTF-8 without control characters, +, # and /"}));
    EXPECT_EQ(statuses, std::vector<ProtocolStatus>{});
}

TEST_F(SparkplugMqttProtocolTest, RestoresParametersThatItRefuses)
{
    protocol->Start();
    Params().servers[0].Set("");
    EXPECT_EQ(RefusalOf([this] { protocol->ParamsUpdate(); }),
              (Refusal{Zu::Status::BAD_ARGUMENT, "Sparkplug needs the address of a server"}));
    EXPECT_EQ(Params().servers[0].Get(), "127.0.0.1:1");
    EXPECT_TRUE(Becomes([this] { return !Metrics().session.Get().empty(); }));
}

TEST_F(SparkplugMqttProtocolTest, CountsItsConnectionsOverARestart)
{
    nlohmann::json const before = {{"password", ""}, {"bdSeq", 255}};
    protocol->LoadPersistDomain(PersistDomain::PROTOCOL, before);
    protocol->Start();
    EXPECT_TRUE(Becomes([this] { return Saved()["bdSeq"] == 0; }));
    protocol->Stop();
    uint64 const last = Saved()["bdSeq"].get<uint64>(); // 255 again if the attempt had failed before the stop
    protocol->Start();
    EXPECT_TRUE(Becomes([this, last] { return Saved()["bdSeq"] == (last + 1) % 256; }));
}

TEST_F(SparkplugMqttProtocolTest, AsksTheHostForASecondSaveOfItsNumber)
{
    std::atomic<uint32> wishes{0};
    protocol->AddParamsInternalUpdateEventHandler([&wishes](bool) { ++wishes; });
    protocol->Start();
    EXPECT_TRUE(Becomes([&] { return wishes == 1; }));
    Saved();
    EXPECT_TRUE(Becomes([&] { return wishes == 2; })); // the first save is in the file when the second one comes
    protocol->Stop();
}

TEST_F(SparkplugMqttProtocolTest, KeepsThePasswordInItsOwnDomainOnly)
{
    EXPECT_TRUE(Saved().is_null());
    EXPECT_EQ(Metrics().password.Get(), "not set");
    SetPassword("sesame");
    EXPECT_EQ(Metrics().password.Get(), "set");
    EXPECT_EQ(Saved(), (nlohmann::json{{"password", "sesame"}}));
    nlohmann::json job;
    protocol->SavePersistDomain(PersistDomain::JOB, job);
    EXPECT_TRUE(job.is_null());
    EXPECT_EQ(Zu::Properties::JsonSerializer::Serialize(Params()).dump().find("sesame"), std::string::npos);
    EXPECT_EQ(Zu::Properties::JsonSerializer::Serialize(Metrics()).dump().find("sesame"), std::string::npos);
    auto const shown = protocol->ActionTarget()->GetActionParams("setPassword");
    EXPECT_EQ(Zu::Properties::JsonSerializer::Serialize(*shown).dump().find("sesame"), std::string::npos);

    nlohmann::json const saved = Saved();
    nlohmann::json none;
    protocol->InitPersistDomain(PersistDomain::PROTOCOL, none);
    EXPECT_TRUE(Saved().is_null());
    protocol->LoadPersistDomain(PersistDomain::PROTOCOL, saved);
    EXPECT_EQ(Saved(), saved);
    protocol->OnFactoryRestore();
    EXPECT_EQ(Metrics().password.Get(), "not set");
}

TEST_F(SparkplugMqttProtocolTest, RefusesSettingsThatAreNotItsOwn)
{
    for (nlohmann::json const& wrong : {nlohmann::json(), nlohmann::json::array(), nlohmann::json{{"password", 5}}})
    {
        EXPECT_EQ(RefusalOf([&] { protocol->LoadPersistDomain(PersistDomain::PROTOCOL, wrong); }).status,
                  Zu::Status::BAD_FORMAT);
    }
    EXPECT_EQ(RefusalOf([this] { protocol->ActionTarget()->GetActionParams("setpassword"); }).status,
              Zu::Status::NOT_FOUND);
    EXPECT_EQ(RefusalOf([this] { SetPassword(std::string(257, 'x')); }).status, Zu::Status::BAD_ARGUMENT);
}

TEST_F(SparkplugMqttProtocolTest, WantsTheStampWithTheOutputs)
{
    std::vector<std::string> const all = {"profile/meanZ", "profile/points", "profile/width",
                                          "profile/zMax",  "profile/zMin",   "profile/stamp"};
    EXPECT_EQ(protocol->DataSourceList(), all);
}

TEST_F(SparkplugMqttProtocolTest, NeedsACacheAndAProblemsManager)
{
    environ.dataCache = nullptr;
    EXPECT_EQ(RefusalOf([this] { SparkplugMqttProtocol{environ}; }),
              (Refusal{Zu::Status::BAD_ARGUMENT, "Sparkplug MQTT cannot do without the data cache"}));
}

TEST_F(SparkplugMqttProtocolTest, BindsNewParametersWhileItRuns)
{
    protocol->Start();
    protocol->RegisterControlScanResultsHandler(scanResults);
    Params().servers[0].Set("127.0.0.1:2");
    protocol->ParamsUpdate();
    EXPECT_TRUE(Becomes([this] { return Metrics().server.Get() == "127.0.0.1:2"; }));
    protocol->ResetParams();
    EXPECT_EQ(Params().nodeId.Get(), "node");
    protocol->DeregisterControlScanResultsHandler(scanResults);
}

} // namespace SparkplugMqtt
