#include "ZuControl/Protocol/ControlDir.h"

#include "Support/ResourceFixture.h"
#include "ZuControl/Protocol/ControlActionResource.h"
#include "ZuControl/Protocol/ControlOutputsActionResource.h"
#include "ZuControl/Protocol/ControlOutputsResource.h"
#include "ZuControl/Protocol/ControlRegisterAssemblyActionResource.h"
#include "ZuControl/Protocol/ControlRegisterAssemblyResource.h"
#include "ZuControl/Protocol/ControlResource.h"
#include "ZuControl/Protocol/UnofferedResource.h"
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

    ZuRest::ResourceRouter router;
};

TEST_F(ControlDirTest, RoutesEachPathToItsResource)
{
    manager.Put("a");
    ControlDir const dir(router, manager);

    EXPECT_EQ(router.Resources().size(), 13u);
    ExpectAt<ControlResource>("/controls");
    ExpectAt<ControlResource>("/controls/a");
    ExpectAt<ControlActionResource>("/controls/a/commands");
    ExpectAt<ControlActionResource>("/controls/a/commands/go");
    ExpectAt<ControlOutputsResource>("/controls/a/outputs");
    ExpectAt<ControlOutputsActionResource>("/controls/a/outputs/commands");
    ExpectAt<ControlOutputsActionResource>("/controls/a/outputs/commands/add");
    ExpectAt<ControlRegisterAssemblyResource>("/controls/a/registerAssemblies");
    ExpectAt<ControlRegisterAssemblyResource>("/controls/a/registerAssemblies/r");
    ExpectAt<ControlRegisterAssemblyActionResource>("/controls/a/registerAssemblies/r/commands");
    ExpectAt<ControlRegisterAssemblyActionResource>("/controls/a/registerAssemblies/r/commands/add");
}

TEST_F(ControlDirTest, SaysWhatThisSystemDoesNotOffer)
{
    ControlDir const dir(router, manager);
    Refusal const noHardware{-996, "This system offers no inputs and outputs."};

    EXPECT_EQ(ReadAt("/controls/a/metrics"), (Refusal{-996, "This system offers no metrics of protocols."}));
    EXPECT_EQ(ReadAt("/controls/hardware/metrics"),
              (Refusal{-996, "This system offers no metrics of inputs and outputs."}));
    for (char const* const path :
         {"/controls/hardware", "/controls/hardware/0", "/controls/hardware/0/digital/1",
          "/controls/hardware/0/analog/1", "/controls/hardware/0/marlet/1", "/controls/hardware/0/serial/1"})
    {
        ExpectAt<UnofferedResource>(path);
        EXPECT_EQ(ReadAt(path), noHardware) << path;
    }
}

TEST_F(ControlDirTest, TakesAllItsRoutesAway)
{
    auto& instance = manager.Put("a");
    auto dir = std::make_unique<ControlDir>(router, manager);

    dir.reset();

    EXPECT_TRUE(router.Resources().empty());
    EXPECT_TRUE(manager.loadEvent.Empty());
    EXPECT_TRUE(instance.paramsEvent.Empty());
    EXPECT_TRUE(instance.outputsEvent.Empty());
    EXPECT_TRUE(instance.assemblyEvent.Empty());
}

TEST_F(ControlDirTest, LeavesNoRouteBehindWhenOneIsTaken)
{
    UnofferedResource stranger("mine");
    router.Register("/controls/:any/outputs", stranger);

    EXPECT_EQ(RefusalOf([this] { ControlDir{router, manager}; }).status, -987);

    EXPECT_EQ(router.Resources(), (std::vector<ZuRest::IResource*>{&stranger}));
    EXPECT_TRUE(manager.loadEvent.Empty());
}

} // namespace ZuControl::Protocol
