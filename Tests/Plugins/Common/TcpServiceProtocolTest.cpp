#include "Plugins/Common/TcpServiceProtocol.h"
#include "Support/CallLog.h"
#include "Support/Certificates.h"
#include "Support/FakeScanEngineInterface.h"
#include "Support/FakeSystemInterface.h"
#include "Support/Refusal.h"
#include "Support/ScratchFolder.h"
#include "Tests/Plugins/Common/FakeDataCache.h"
#include "Tests/Plugins/Common/TcpClient.h"
#include "ZuApi/Exception.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlModuleEnviron.h"
#include "ZuControl/Control/ControlProtocolOperations.h"
#include "ZuControl/Control/IControlFactory.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <string>
#include <vector>

namespace PluginCommon
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

class NoDeployment final : public ZuControl::IDeploymentQuery
{
public:
    bool IsPhysicalSensor() override
    {
        return false;
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

/// Listens on any free port by default. Has a level of its own.
struct LevelParams final : public TcpParams
{
public:
    LevelParams() : TcpParams(0)
    {
        Register("level", "Level", level);
        RegisterLimits();
    }

    ~LevelParams() override
    {
        Deregister("level");
    }

    void SetDefaults() override
    {
        TcpParams::SetDefaults();
        level.Set(0);
    }

    Zu::Params::Value<uint32> level;
};

/// Sends nothing. Runs an action when bytes come.
class SilentConversation final : public ITcpConversation
{
public:
    explicit SilentConversation(std::function<void()> newWhenReceived) : whenReceived(std::move(newWhenReceived))
    {
    }

    std::span<char> Room() override
    {
        return bytes;
    }

    void Received(std::size_t count) override
    {
        if (count > 0)
        {
            whenReceived();
        }
    }

    void InputEnded() override
    {
        step = Step::CLOSE;
    }

    std::string_view Pending() const override
    {
        return {};
    }

    void Sent(std::size_t) override
    {
    }

    Step NextStep() const override
    {
        return step;
    }

    uint64 ProgressCount() const override
    {
        return 0;
    }

private:
    std::function<void()> const whenReceived;
    char bytes[16];
    Step step = Step::CONTINUE;
};

/// Refuses levels above the highest one.
class LevelService final : public TcpServiceProtocol
{
public:
    explicit LevelService(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ)
        : TcpServiceProtocol(
              {.number = ZuControl::ZuEthernetProtocol{201}, .typeName = "Level", .displayName = "The level service"},
              environ)
    {
        InitService({params, metrics, counters});
    }

    ~LevelService() override
    {
        EndService();
    }

    LevelParams params;
    uint32 highestLevel = 5;
    std::vector<uint32> levels; ///< all applied levels
    ZuTest::CallLog refusals;   ///< of the commands of clients; "" for one that was begun

    using TcpServiceProtocol::RunCommand;

private:
    std::unique_ptr<ITcpConversation> MakeConversation() override
    {
        return std::make_unique<SilentConversation>([this] {
            Command command{};
            command.commandId = ZuControl::ControlProtocol::CommandStop;
            refusals.Add(RefusalOf([&] { RunCommand(command); }).text);
        });
    }

    void ApplyOwnParams() override
    {
        if (params.level.Get() > highestLevel)
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "level %u is too high", params.level.Get());
        }
        levels.push_back(params.level.Get());
    }

    TcpCounters counters;
    TcpMetrics metrics{counters};
};

class TcpServiceProtocolTest : public testing::Test
{
protected:
    TcpServiceProtocolTest()
    {
        environ.operations = &operations;
        environ.dataCache = &dataCache;
        environ.deployment = &deployment;
        environ.problems = &problems;
        service = std::make_unique<LevelService>(environ);
    }

    std::string Listening()
    {
        return dynamic_cast<TcpMetrics&>(service->UpdateMetrics()).listening.Get();
    }

    std::string Parameters()
    {
        return Zu::Properties::JsonSerializer::Serialize(service->params).dump();
    }

    std::vector<std::string> Problems()
    {
        std::vector<std::string> texts;
        for (auto const& problem : problems.List())
        {
            texts.push_back(problem.text);
        }
        return texts;
    }

    ZuTest::CallLog calls;
    ZuTest::FakeSystemInterface systemInterface{calls};
    ZuTest::FakeScanEngineInterface scanEngineInterface{calls};
    FakeDataCache dataCache;
    NoDeployment deployment;
    ZuCommon::ProblemsManager problems;
    ZuControl::ControlProtocolOperations operations{systemInterface, scanEngineInterface};
    ZuControl::ControlProtocol::ControlProtocolEnviron environ;
    std::unique_ptr<LevelService> service;
};

TEST_F(TcpServiceProtocolTest, RestoresTheParametersOfTheLastAcceptedUpdate)
{
    service->params.maxClients.Set(7);
    service->params.level.Set(2);
    service->ParamsUpdate();
    service->Start();
    std::string const before = Parameters();
    std::string const endpoint = Listening();
    service->params.address.Set("nonsense");
    service->params.maxClients.Set(3);
    service->params.level.Set(4);

    EXPECT_EQ(RefusalOf([this] { service->ParamsUpdate(); }),
              (Refusal{-997, "The level service cannot listen on nonsense:0: the address is not an IP address"}));

    EXPECT_EQ(Parameters(), before);
    EXPECT_EQ(Listening(), endpoint);
    EXPECT_EQ(service->levels.back(), 2u);
    EXPECT_TRUE(Problems().empty());
}

TEST_F(TcpServiceProtocolTest, RestoresItsParametersWhenThePortIsTaken)
{
    service->Start();
    std::string const before = Parameters();
    OccupiedPort const taken;
    service->params.port.Set(taken.Number());

    EXPECT_EQ(RefusalOf([this] { service->ParamsUpdate(); }).status, -976);

    EXPECT_EQ(Parameters(), before);
}

TEST_F(TcpServiceProtocolTest, RestoresItsParametersWhenTheServiceItselfRefusesThem)
{
    service->Start();
    std::string const before = Parameters();
    std::string const endpoint = Listening();
    service->params.address.Set("127.0.0.2");
    service->params.level.Set(9);

    EXPECT_EQ(RefusalOf([this] { service->ParamsUpdate(); }), (Refusal{-997, "level 9 is too high"}));

    EXPECT_EQ(Parameters(), before);
    EXPECT_EQ(Listening(), endpoint);
}

TEST_F(TcpServiceProtocolTest, RestoresNoParametersFromBeforeAReset)
{
    std::string const defaults = Parameters();
    service->params.address.Set("127.0.0.2"); // of the job that is replaced
    service->ParamsUpdate();
    service->Start();
    service->ResetParams();
    service->params.address.Set("nonsense"); // of the new job

    EXPECT_EQ(RefusalOf([this] { service->ParamsUpdate(); }).status, -997);

    EXPECT_EQ(Parameters(), defaults);
    EXPECT_TRUE(Listening().starts_with("127.0.0.1:")) << Listening();
}

TEST_F(TcpServiceProtocolTest, RefusesTheCommandsOfClientsThatMayNotWrite)
{
    service->params.writers.Set("127.0.0.2");
    service->Start();
    uint16 const port = static_cast<uint16>(std::stoi(Listening().substr(Listening().find(':') + 1)));
    TcpClient reader(port);
    TcpClient writer(port, 0, "127.0.0.2");

    reader.SendText("x");
    EXPECT_TRUE(service->refusals.WaitFor("This client may run no commands"));
    writer.SendText("x");
    EXPECT_TRUE(service->refusals.WaitFor(""));
}

TEST_F(TcpServiceProtocolTest, TellsTheAddressAndTheRoleWithACommand)
{
    ZuTest::CallLog ends;
    auto const subscription =
        operations.SubscribeToEveryEnd([&](ZuControl::ControlProtocolOperations::Ended const& end) {
            ends.Add(std::string(end.name) + " " + end.origin.address + " " + ZuCommon::RoleName(end.origin.role));
        });
    service->Start();
    TcpClient client(static_cast<uint16>(std::stoi(Listening().substr(Listening().find(':') + 1))), 0, "127.0.0.2");

    client.SendText("x");

    EXPECT_TRUE(ends.WaitFor("scan stop 127.0.0.2 operator"));
}

TEST_F(TcpServiceProtocolTest, TellsTheHostOfClientsThatMayNotConnect)
{
    ZuTest::CallLog refusals;
    auto const subscription =
        operations.Notices().SubscribeToRefusals([&](ZuControl::ServiceNotices::Refusal const& refusal) {
            refusals.Add(std::to_string(static_cast<int32>(refusal.protocol)) + " " + refusal.client.address + " " +
                         ZuCommon::RoleName(refusal.client.role) + " " + refusal.what + ": " + refusal.reason);
        });
    service->params.allowedClients.Set("127.0.0.2");
    service->Start();
    TcpClient denied(static_cast<uint16>(std::stoi(Listening().substr(Listening().find(':') + 1))));

    EXPECT_TRUE(denied.IsClosedByServer());
    EXPECT_TRUE(refusals.WaitFor("201 127.0.0.1 none connection: it may not connect"));
}

TEST_F(TcpServiceProtocolTest, HasAProblemUntilItCanReadItsCertificateAgain)
{
    using ZuTest::CertificateWish;
    using ZuTest::TestCertificate;
    ZuTest::ScratchFolder const folder;
    auto const certify = [&](char const* name) {
        CertificateWish wish;
        wish.commonName = name;
        wish.purpose = CertificateWish::Purpose::SERVER;
        TestCertificate(wish).Write(folder.path, "server");
    };
    certify("first");
    operations.Notices().NotifyReplacedFiles(); // no effect: the service does not run
    service->params.security.Set(TcpSecurity::SERVER_CERTIFICATE);
    service->params.certificateFile.Set(folder / "server.pem");
    service->params.keyFile.Set(folder / "server.key");
    service->Start();

    std::ofstream(folder / "server.pem") << "nothing";
    operations.Notices().NotifyReplacedFiles();
    operations.Notices().NotifyReplacedFiles();
    std::string const text =
        "The certificate of The level service stays as it was: The level service cannot use TLS: " +
        std::string(folder / "server.pem") + ": there is no certificate in it";
    EXPECT_EQ(Problems(), std::vector{text});

    certify("second");
    operations.Notices().NotifyReplacedFiles();
    EXPECT_EQ(Problems(), std::vector<std::string>());
}

TEST_F(TcpServiceProtocolTest, RestoresItsParametersWhenAListIsRefusedAlsoWhileItDoesNotRun)
{
    std::string const before = Parameters();
    service->params.allowedClients.Set("10.0.0.0/8, ten");

    EXPECT_EQ(RefusalOf([this] { service->ParamsUpdate(); }),
              (Refusal{-997, "allowedClients: \"ten\" is neither an IP address nor a network such as 192.168.0.0/24 or "
                             "fd00::/8"}));

    EXPECT_EQ(Parameters(), before);
}

TEST_F(TcpServiceProtocolTest, ReportsThatItIsOpenToANetworkWhileItIs)
{
    service->params.address.Set("0.0.0.0");
    service->ParamsUpdate();
    EXPECT_TRUE(Problems().empty()); // it does not run

    service->Start();
    EXPECT_EQ(Problems(), std::vector<std::string>{"The level service at " + Listening() +
                                                   " serves every machine that reaches it: list the networks of its "
                                                   "clients in allowedClients, ask them for certificates (security), "
                                                   "or let it listen on 127.0.0.1"});
    service->params.allowedClients.Set("10.0.0.0/8");
    service->ParamsUpdate();
    EXPECT_TRUE(Problems().empty());
    service->params.allowedClients.Set("");
    service->ParamsUpdate();
    EXPECT_EQ(Problems().size(), 1u);
    service->ParamsUpdate();
    EXPECT_EQ(Problems().size(), 1u);
    service->Stop();
    EXPECT_TRUE(Problems().empty());
}

TEST_F(TcpServiceProtocolTest, KeepsTheParametersWithWhichItCannotStart)
{
    OccupiedPort const taken;
    service->params.port.Set(taken.Number());
    service->ParamsUpdate(); // accepted: the service does not run

    EXPECT_EQ(RefusalOf([this] { service->Start(); }).status, -976);

    EXPECT_EQ(service->params.port.Get(), taken.Number());
}

TEST_F(TcpServiceProtocolTest, ReportsAProblemThatNamesBothWhenItCannotRestore)
{
    service->params.level.Set(3);
    service->ParamsUpdate();
    service->highestLevel = 1;
    service->params.level.Set(4);

    EXPECT_EQ(RefusalOf([this] { service->ParamsUpdate(); }), (Refusal{-997, "level 4 is too high"}));

    EXPECT_EQ(Problems(), std::vector<std::string>{"The level service refused new parameters (level 4 is too high) and "
                                                   "cannot go back to the earlier ones: level 3 is too high"});
    service->params.level.Set(1);
    service->ParamsUpdate();
    EXPECT_TRUE(Problems().empty());
}

} // namespace PluginCommon
