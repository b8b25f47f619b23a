#include "Support/RandomDraws.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "Support/RegisterBlocks.h"
#include "WalkedAssembly.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <iterator>
#include <stdexcept>

namespace ZuControl::ControlProtocol
{

using ZuTest::Refusal;
using ZuTest::WalkedBlock;
using ZuTest::WalkedType;

namespace
{

constexpr uint16 NO_ID = ZuTest::WalkedAssembly::NO_ID;
constexpr int32 FOREIGN = -1; // in place of a status: the exception is no Zu::Exception

/// One way of using an assembly.
struct Usage
{
    char const* name;
    bool isGlobal;
    uint16 leastId;
    uint16 greatestId;
    uint16 lowest;           // lowest and highest requested id
    uint16 highest;          // likewise
    bool setsPlaces = false; // also sets ids of blocks and register counts of types through their records
};

std::ostream& operator<<(std::ostream& stream, Usage const& usage)
{
    return stream << usage.name;
}

std::vector<Usage> const USAGES = {
    {"Addresses", true, 100, 260, 90, 270},
    {"AddressesFromZero", true, 0, 200, 0, 210},
    {"LastAddresses", true, 0, 65534, 65400, 65534},
    {"OneAddress", true, 100, 100, 98, 102},
    {"AddressesThatAreSet", true, 100, 260, 90, 270, true},
    {"AllAddressesThatAreSet", true, 0, 65534, 0, 65534, true},
    {"PlainNumbers", false, 0, 65534, 0, 150},
    {"LastPlainNumbers", false, 0, 65534, 65500, 65534},
    {"PlainNumbersThatAreSet", false, 0, 65534, 0, 60, true},
};

std::vector<WalkedType> const TYPES = {
    {"Four", 4, 0, 30},
    {"One", 1, 0, 200},
    {"Ten", 10, 1, 5},
    {"None", 0, 0, 2},
    {"Pair", 3, 2, 6},
    {"Huge", 30'000, 0, 3},
    {"Sourced", 2, 0, 30, true},
    {"Needed", 2, 1, 9, true}, // cannot be added as a default, because its blocks need a data source
    {"Refusing", 2, 0, 9, false, {-980, "Register block type Refusing must support scan output data sources"}},
    {"Foreign", 2, 0, 9, false, {FOREIGN, "the factory is broken"}, true},
};

class ForeignFactory final : public IProtocolRegisterBlockFactory
{
public:
    std::shared_ptr<ProtocolRegisterBlock> Construct(RegisterBlockParams const&, ProtocolRegisterBlockInfo&) override
    {
        throw std::runtime_error("the factory is broken");
    }
};

std::unique_ptr<ProtocolRegisterBlockInfo> MakeType(WalkedType const& type)
{
    bool const isScanOutput = type.hasDataSource || type.construction.status != 1;
    auto params = isScanOutput ? ZuTest::TypeParams<ProtocolScanOutputRegisterBlock>(type.name, type.registers)
                               : ZuTest::TypeParams<>(type.name, type.registers);
    params.minInstanceCount = type.least;
    params.maxInstanceCount = type.most;
    params.hasDataSource = type.hasDataSource;
    if (type.isConstructionForeign)
    {
        params.factory = std::make_shared<ForeignFactory>();
    }
    return std::make_unique<ProtocolRegisterBlockInfo>(params);
}

WalkedBlock ReadBack(ProtocolRegisterBlock const& block)
{
    return {block.Type(), block.HasDataSource() ? block.DataSource() : "", block.ScannerId(), block.DisplayName(),
            block.OutputId()};
}

bool IsSame(ProtocolRegisterBlock const& block, WalkedBlock const& expected)
{
    return block.OutputId() == expected.outputId && block.Type() == expected.type &&
           block.DisplayName() == expected.displayName && block.ScannerId() == expected.scannerId &&
           (block.HasDataSource() ? block.DataSource() : "") == expected.dataSource;
}

/// The refusal that an operation of the model or of the assembly ends with.
template <typename Action>
Refusal OutcomeOf(Action&& action)
{
    try
    {
        return ZuTest::RefusalOf(action);
    }
    catch (Refusal const& refusal)
    {
        return refusal;
    }
    catch (std::runtime_error const& exception)
    {
        return {FOREIGN, exception.what()};
    }
}

} // namespace

/// An assembly and its model. Both get the same calls.
class ProtocolRegisterAssemblyBaseRandomTest : public testing::TestWithParam<Usage>
{
protected:
    ProtocolRegisterAssemblyBaseRandomTest()
    {
        for (WalkedType const& type : TYPES)
        {
            assembly.AddSupportedBlockType(MakeType(type));
        }
    }

    /// A requested id: mostly near the others, sometimes none.
    uint16 SomeId()
    {
        if (draws.OneIn(8))
        {
            return NO_ID;
        }
        if (draws.OneIn(2) && !walked.blocks.empty())
        {
            return SomeBlock()->outputId;
        }
        return static_cast<uint16>(usage.lowest + draws.Below(uint32{usage.highest} - usage.lowest + 1));
    }

    std::list<WalkedBlock>::iterator SomeBlock()
    {
        return std::next(walked.blocks.begin(), static_cast<std::ptrdiff_t>(draws.IndexOf(walked.blocks)));
    }

    std::string SomeType()
    {
        if (draws.OneIn(40))
        {
            return draws.OneIn(2) ? "" : "four";
        }
        return TYPES[draws.IndexOf(TYPES)].name;
    }

    /// A text with one of a few numbers, sometimes an empty text.
    std::string SomeText(char const* start)
    {
        return draws.OneIn(3) ? "" : start + std::to_string(draws.Below(20));
    }

    void AddSome()
    {
        AddBlockParams params;
        std::vector<WalkedBlock> list;
        bool const autoShift = draws.OneIn(2);
        params.autoShift.Set(autoShift);
        for (uint32 i = draws.Below(4); i > 0; --i)
        {
            list.push_back({SomeType(), SomeText("source "), SomeText("scanner "), SomeText("name "), SomeId()});
            RegisterBlockParams& block = params.blocks.Add();
            block.type.Set(list.back().type);
            block.dataSource.Set(list.back().dataSource);
            block.scannerId.Set(list.back().scannerId);
            block.displayName.Set(list.back().displayName);
            block.outputId.Set(list.back().outputId);
        }
        Compare([&] { walked.Add(list, autoShift); }, [&] { assembly.Add(params); });
        for (std::size_t i = 0; i < list.size(); ++i)
        {
            RegisterBlockParams const& block = params.blocks.At(i);
            ASSERT_EQ(block.outputId.Get(), list[i].outputId) << "argument " << i;
            ASSERT_EQ(block.displayName.Get(), list[i].displayName) << "argument " << i;
        }
    }

    void RemoveSome()
    {
        RemoveBlockParams params;
        std::vector<uint16> list;
        for (uint32 i = draws.Below(4); i > 0; --i)
        {
            list.push_back(SomeId());
            params.outputIdList.Add().outputId.Set(list.back());
        }
        Compare([&] { walked.Remove(list); }, [&] { assembly.Remove(params); });
    }

    void UpdateOne()
    {
        uint16 const id = SomeId();
        bool const autoShift = draws.OneIn(2);
        WalkedBlock const given{"", SomeText("source "), SomeText("scanner "), SomeText("name "), SomeId()};
        UpdateBlockParams params;
        params.outputId.Set(id);
        params.autoShift.Set(autoShift);
        params.newParams.outputId.Set(given.outputId);
        params.newParams.dataSource.Set(given.dataSource);
        params.newParams.scannerId.Set(given.scannerId);
        params.newParams.displayName.Set(given.displayName);
        Compare([&] { walked.Update(id, given, autoShift); }, [&] { assembly.Update(params); });
    }

    void CompactAll()
    {
        uint16 const start = SomeId();
        CompactBlocksParams params;
        params.startingOutputId.Set(start);
        Compare([&] { walked.Compact(start); }, [&] { assembly.Compact(params); });
    }

    void ResetAll()
    {
        Compare([&] { walked.Reset(); }, [&] { assembly.ResetRegisterAssembly(); });
    }

    void InitDefaults()
    {
        Compare([&] { walked.InitDefaults(); }, [&] { assembly.InitDefaultRegisterBlocksForRegisterAssembly(); });
    }

    /// A plug-in may set a block's id, with the operation or through the record.
    void SetAnId()
    {
        if (!usage.setsPlaces || walked.blocks.empty())
        {
            return;
        }
        auto const walkedBlock = SomeBlock();
        auto const index = std::distance(walked.blocks.begin(), walkedBlock);
        walkedBlock->outputId =
            static_cast<uint16>(usage.lowest + draws.Below(uint32{usage.highest} - usage.lowest + 1));
        assembly.BeginLock();
        ProtocolRegisterBlock& block = **std::next(assembly.AddedRegisterBlocks().begin(), index);
        if (draws.OneIn(2))
        {
            block.SetOutputId(walkedBlock->outputId);
        }
        else
        {
            Zu::Properties::JsonSerializer::Deserialize(block, {{"outputId", walkedBlock->outputId}});
        }
        assembly.EndLock();
    }

    /// A plug-in may set the register count of a type through its record.
    void SetARegisterCount()
    {
        if (!usage.setsPlaces)
        {
            return;
        }
        std::size_t const index = draws.IndexOf(TYPES);
        walked.types[index].registers = static_cast<uint16>(draws.Below(12));
        assembly.BeginLock();
        Zu::Properties::JsonSerializer::Deserialize(*assembly.SupportedRegisterBlockTypes()[index],
                                                    {{"registerCount", walked.types[index].registers}});
        assembly.EndLock();
    }

    void Operate()
    {
        uint32 const choice = draws.Below(1000);
        if (choice < 400)
        {
            AddSome();
        }
        else if (choice < 630)
        {
            RemoveSome();
        }
        else if (choice < 960)
        {
            UpdateOne();
        }
        else if (choice < 980)
        {
            SetAnId();
        }
        else if (choice < 985)
        {
            SetARegisterCount();
        }
        else if (choice < 995)
        {
            CompactAll();
        }
        else if (choice < 997)
        {
            ResetAll();
        }
        else
        {
            InitDefaults();
        }
    }

    /// Runs the same operation on both and compares status, text and log lines in their order.
    template <typename WalkedAction, typename Action>
    void Compare(WalkedAction&& expected, Action&& done)
    {
        Refusal const expectedOutcome = OutcomeOf(expected);
        ASSERT_EQ(OutcomeOf(done), expectedOutcome);
        ASSERT_EQ(log.LinesWithShortTraces(), walked.lines);
        if (!walked.lines.empty())
        {
            log.Clear();
            walked.lines.clear();
        }
    }

    void CompareBlocks()
    {
        assembly.BeginLock();
        auto const& blocks = assembly.AddedRegisterBlocks();
        ASSERT_EQ(blocks.size(), walked.blocks.size());
        auto expected = walked.blocks.begin();
        for (auto const& block : blocks)
        {
            if (!IsSame(*block, *expected)) // tested first, so that equal blocks cost no copy of a text
            {
                ASSERT_EQ(ReadBack(*block), *expected);
            }
            ASSERT_EQ(block->EndAddress(), walked.End(*expected));
            ++expected;
        }
        for (std::size_t i = 0; i < TYPES.size(); ++i)
        {
            ProtocolRegisterBlockInfo const& type = *assembly.SupportedRegisterBlockTypes()[i];
            WalkedType const& walkedType = walked.types[i];
            ASSERT_EQ(type.AtMinInstance(), walkedType.instances <= walkedType.least) << walkedType.name;
            ASSERT_EQ(type.AtMaxInstance(), walkedType.instances >= walkedType.most) << walkedType.name;
        }
        assembly.EndLock();
    }

    void CompareQuestions()
    {
        std::list<std::string> const names{SomeType(), SomeType()};
        std::vector<WalkedBlock> found;
        for (auto const& block : assembly.FindAddedBlocksOfTypes(names))
        {
            found.push_back(ReadBack(*block));
        }
        ASSERT_EQ(found, walked.OfTypes(names));

        std::map<std::string, WalkedBlock> bySource;
        for (auto const& [source, block] : assembly.FindAddedScanOutputBlocksSortedByDataSource())
        {
            bySource[source] = ReadBack(*block);
        }
        ASSERT_EQ(bySource, walked.ByDataSource());
        ASSERT_EQ(assembly.DataSourceList(), walked.DataSources());
    }

    Usage const usage = GetParam();
    ZuTest::RandomDraws draws{7};
    ProtocolRegisterAssemblyBase assembly{usage.isGlobal, usage.leastId, usage.greatestId};
    ZuTest::WalkedAssembly walked{usage.isGlobal, usage.leastId, usage.greatestId, TYPES};
    ZuTest::LogRecorder log;
};

TEST_P(ProtocolRegisterAssemblyBaseRandomTest, DoesWhatAWalkAlongTheListDoes)
{
    int const operations = ZuTest::OperationsOf(1'000'000 / static_cast<int>(USAGES.size()) + 1);
    for (int i = 0; i < operations; ++i)
    {
        Operate();
        CompareBlocks();
        if (draws.OneIn(16))
        {
            CompareQuestions();
        }
        ASSERT_FALSE(HasFatalFailure()) << "operation " << i << ", " << draws;
    }
}

INSTANTIATE_TEST_SUITE_P(EveryUsage, ProtocolRegisterAssemblyBaseRandomTest, testing::ValuesIn(USAGES),
                         [](auto const& tested) { return std::string(tested.param.name); });

} // namespace ZuControl::ControlProtocol
