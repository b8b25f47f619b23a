#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"

#include "Support/Latch.h"
#include "Support/Refusal.h"
#include "Support/RegisterBlocks.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementRegisterBlocks.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyActionTarget.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <gtest/gtest.h>

#include <thread>

namespace ZuControl::ControlProtocol
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;
using Texts = std::vector<std::string>;

namespace
{

struct Assembly
{
    explicit Assembly(char const* id, Texts const& sources = {}) : base(true, 0, 99, id, id)
    {
        base.AddSupportedBlockType(std::make_unique<DefaultMeasurementDecisionRegisterBlockInfo>());
        AddBlockParams params;
        for (std::string const& source : sources)
        {
            RegisterBlockParams& block = params.blocks.Add();
            block.type.Set("Decision");
            block.dataSource.Set(source);
        }
        base.Add(params);
    }

    ProtocolRegisterAssemblyBase base;
    ProtocolRegisterAssemblyActionTarget target{base};
};

/// An assembly that blocks each call of `DataSourceList` until `answer` opens.
class SlowAssembly final : public ProtocolRegisterAssemblyBase
{
public:
    std::vector<std::string> DataSourceList() const override
    {
        asked.Open();
        EXPECT_TRUE(answer.Wait());
        return {};
    }

    mutable ZuTest::Latch asked;
    ZuTest::Latch answer;
};

} // namespace

TEST(ProtocolRegisterAssemblyGroup, BeginsEmpty)
{
    ProtocolRegisterAssemblyGroup const group;

    EXPECT_TRUE(group.Empty());
    EXPECT_EQ(group.List(), Texts{});
    EXPECT_EQ(group.DataSourceList(), Texts{});
    EXPECT_FALSE(group.HasRegisterAssembly("a"));
}

TEST(ProtocolRegisterAssemblyGroup, ListsItsAssembliesInByteOrder)
{
    Assembly b("b");
    Assembly a("a");
    ProtocolRegisterAssemblyGroup group;

    group.Add(b.base, b.target);
    group.Add(a.base, a.target);

    EXPECT_FALSE(group.Empty());
    EXPECT_EQ(group.List(), (Texts{"a", "b"}));
    EXPECT_TRUE(group.HasRegisterAssembly("b"));
    EXPECT_FALSE(group.HasRegisterAssembly("c"));
    EXPECT_FALSE(group.HasRegisterAssembly(nullptr));
    EXPECT_EQ(&group.RegisterAssembly("b"), &b.base);
    EXPECT_EQ(&group.ActionTarget("a"), &a.target);
}

TEST(ProtocolRegisterAssemblyGroup, KeepsTheFirstOfTwoWithOneIdentifier)
{
    Assembly first("a");
    Assembly second("a");
    ProtocolRegisterAssemblyGroup group;
    group.Add(first.base, first.target);

    EXPECT_EQ(RefusalOf([&] { group.Add(second.base, second.target); }),
              (Refusal{-997, "Failed to insert register assembly a. Check if it is a duplicate"}));

    EXPECT_EQ(&group.RegisterAssembly("a"), &first.base);
}

TEST(ProtocolRegisterAssemblyGroup, RefusesLookUpsInOrder)
{
    ProtocolRegisterAssemblyGroup group;
    Refusal const noId{-997, "No register assembly identifier provided"};
    Refusal const empty{-999, "No register assembly has been added"};
    EXPECT_EQ(RefusalOf([&] { group.RegisterAssembly(nullptr); }), noId);
    EXPECT_EQ(RefusalOf([&] { group.RegisterAssembly("a"); }), empty);
    EXPECT_EQ(RefusalOf([&] { group.ActionTarget(nullptr); }), noId);
    EXPECT_EQ(RefusalOf([&] { group.ActionTarget("a"); }), empty);

    Assembly a("a");
    group.Add(a.base, a.target);

    EXPECT_EQ(RefusalOf([&] { group.RegisterAssembly("x"); }), (Refusal{-999, "Register assembly x not found"}));
    EXPECT_EQ(RefusalOf([&] { group.ActionTarget("x"); }), (Refusal{-999, "Register assembly x not found"}));
}

TEST(ProtocolRegisterAssemblyGroup, SaysWithoutItsLockWhetherItIsEmpty)
{
    SlowAssembly assembly;
    ProtocolRegisterAssemblyActionTarget target(assembly);
    ProtocolRegisterAssemblyGroup group;
    group.Add(assembly, target);
    std::thread asking([&] { group.DataSourceList(); }); // holds the lock of the group until `answer` opens
    ASSERT_TRUE(assembly.asked.Wait());

    EXPECT_FALSE(group.Empty());
    EXPECT_FALSE(group.HasRegisterAssembly(nullptr));
    EXPECT_EQ(&group.RegisterAssembly(assembly.Id()), &assembly) << "who holds an assembly's lock may look it up";

    assembly.answer.Open();
    asking.join();
}

TEST(ProtocolRegisterAssemblyGroup, GivesEachDataSourceOnce)
{
    Assembly a("a", {"x", "y", "x"});
    Assembly b("b", {"y", "z"});
    ProtocolRegisterAssemblyGroup group;
    group.Add(b.base, b.target);
    group.Add(a.base, a.target);

    EXPECT_EQ(group.DataSourceList(), (Texts{"x", "y", "z"}));
    EXPECT_EQ(a.base.DataSourceList(), (Texts{"x", "y", "x"}));
}

} // namespace ZuControl::ControlProtocol
