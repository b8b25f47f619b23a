#include "ZuControl/Protocol/ControlDir.h"

#include "Support/FakeResource.h"
#include "Support/ResourceFixture.h"
#include "ZuControl/Protocol/ControlActionResource.h"
#include "ZuControl/Protocol/ControlOutputsResource.h"
#include "ZuControl/Protocol/ControlPlcResources.h"
#include "ZuControl/Protocol/ControlRegisterAssemblyResource.h"
#include "ZuControl/Protocol/ControlResource.h"
#include "ZuControl/Protocol/HardwareControlResource.h"
#include "ZuControl/Protocol/MetricsResources.h"
#include "ZuControl/Protocol/OutputResources.h"
#include "ZuRest/Answer.h"
#include "ZuRest/Request.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "ZuRest/ResourceRouter.h"

namespace ZuControl::Protocol
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

class ControlDirTest : public ZuTest::ResourceFixture
{
protected:
    template <typename Resource>
    void ExpectAt(std::string const& path)
    {
        auto const match = router.Find(path);
        ASSERT_TRUE(match.has_value()) << path;
        EXPECT_NE(dynamic_cast<Resource*>(match->resource), nullptr) << path;
    }

    Refusal ReadAt(std::string const& path)
    {
        auto const match = router.Find(path);
        return RefusalOf([&] { match->resource->DocumentProvider()->Document({path, match->keys, false}, response); });
    }

    ZuTest::FakeControlInstance& instance{manager.Put("a")}; // before the timers walk the set of instances
    ControlMetrics metrics{manager};
    ZuRest::ResourceRouter router;
};

TEST_F(ControlDirTest, RoutesEachPathToItsResource)
{
    ControlDir const dir(router, manager, metrics);

    EXPECT_EQ(router.Resources().size(), 16u);
    ExpectAt<ControlResource>("/controls");
    ExpectAt<ControlResource>("/controls/a");
    ExpectAt<ControlActionResource>("/controls/a/commands");
    ExpectAt<ControlActionResource>("/controls/a/commands/go");
    ExpectAt<ControlMetricsResource>("/controls/a/metrics");
    ExpectAt<ControlOutputsResource>("/controls/a/outputs");
    ExpectAt<ControlOutputsActionResource>("/controls/a/outputs/commands");
    ExpectAt<ControlOutputsActionResource>("/controls/a/outputs/commands/add");
    ExpectAt<ControlRegisterAssemblyResource>("/controls/a/registerAssemblies");
    ExpectAt<ControlRegisterAssemblyResource>("/controls/a/registerAssemblies/r");
    ExpectAt<ControlRegisterAssemblyActionResource>("/controls/a/registerAssemblies/r/commands");
    ExpectAt<ControlRegisterAssemblyActionResource>("/controls/a/registerAssemblies/r/commands/add");
    ExpectAt<HardwareControlResource>("/controls/hardware");
    ExpectAt<HardwareControlResource>("/controls/hardware/0");
    for (char const* const port : {"", "/1"})
    {
        ExpectAt<DigitalOutputResource>(std::string("/controls/hardware/0/digital") + port);
        ExpectAt<AnalogOutputResource>(std::string("/controls/hardware/0/analog") + port);
        ExpectAt<MarletOutputResource>(std::string("/controls/hardware/0/marlet") + port);
        ExpectAt<SerialOutputResource>(std::string("/controls/hardware/0/serial") + port);
    }
    ExpectAt<HardwareMetricsResource>("/controls/hardware/metrics");
    ExpectAt<ControlOutputsPreviewResource>("/controls/a/outputs/preview");
    ExpectAt<ControlRegisterAssemblyPreviewResource>("/controls/a/registerAssemblies/r/preview");
    ExpectAt<ControlPlcResource>("/controls/a/plc");
}

TEST_F(ControlDirTest, HasNoMetricsOfTheHardware)
{
    ControlDir const dir(router, manager, metrics);

    EXPECT_EQ(ReadAt("/controls/hardware/metrics"),
              (Refusal{-999, "Control protocol type not recognized: 'hardware'."}));
}

TEST_F(ControlDirTest, ShowsADeviceWithTheRecordsOfItsOutputsInIt)
{
    ControlDir const dir(router, manager, metrics);
    ZuRest::ResourceRequestProcessor processor(router, "/relations/{rel}");
    auto const send = [&processor](std::string const& method, std::string const& path, std::string const& body) {
        ZuRest::Request request;
        request.method = method;
        request.path = path;
        request.body = body;
        return processor.Process(request).answer;
    };

    EXPECT_EQ(send("PUT", "/controls/hardware/0/serial/1", R"({"rate": 9600})").status, 200u);

    Json const devices = Json::parse(send("GET", "/controls/hardware", "").body).at("_embedded").at("item");
    ASSERT_EQ(devices.size(), 2u);
    for (std::size_t i = 0; i < devices.size(); ++i)
    {
        std::string const path = "/controls/hardware/" + std::to_string(i);
        Json const& device = devices.at(i);
        EXPECT_EQ(device.at("_links").at("self").at("href"), path);
        EXPECT_EQ(device.at("_links").at("zu::scanner").at("href"), "/scanners/" + std::to_string(i));
        EXPECT_EQ(device.at("_embedded").size(), 4u);
        Json const& serial = device.at("_embedded").at("zu:serialOutput");
        EXPECT_EQ(serial.at("rate"), 9600);
        EXPECT_EQ(serial.at("_links").at("self").at("href"), path + "/serial");
        EXPECT_EQ(device.at("_embedded").at("zu:digitalOutput").at("inverted"), false);
        EXPECT_EQ(device.at("_embedded").at("zu:analogOutput").at("currentMax"), 0.0);
        EXPECT_EQ(device.at("_embedded").at("zu:marletOutput").at("dataMax"), 0.0);
    }
}

TEST_F(ControlDirTest, TakesAllItsRoutesAway)
{
    auto dir = std::make_unique<ControlDir>(router, manager, metrics);

    dir.reset();

    EXPECT_TRUE(router.Resources().empty());
    EXPECT_TRUE(manager.loadEvent.Empty());
    EXPECT_TRUE(instance.paramsEvent.Empty());
    EXPECT_TRUE(instance.outputsEvent.Empty());
    EXPECT_TRUE(instance.assemblyEvent.Empty());
}

TEST_F(ControlDirTest, LeavesNoRouteBehindWhenOneIsTaken)
{
    ZuTest::FakeResource stranger;
    router.Register("/controls/:any/outputs", stranger);

    EXPECT_EQ(RefusalOf([this] { ControlDir{router, manager, metrics}; }).status, -987);

    EXPECT_EQ(router.Resources(), (std::vector<ZuRest::IResource*>{&stranger}));
    EXPECT_TRUE(manager.loadEvent.Empty());
}

} // namespace ZuControl::Protocol
