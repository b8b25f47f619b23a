#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"

#include "Support/BlockedThread.h"
#include "Support/Latch.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "Support/RegisterBlocks.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlRegisterBlocks.h"
#include "ZuControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <functional>
#include <stdexcept>
#include <thread>
#include <typeinfo>

namespace ZuControl::ControlProtocol
{

using ZuTest::LogLine;
using ZuTest::Refusal;
using ZuTest::RefusalOf;
using ZuTest::UserWarning;

namespace
{

using Names = std::vector<std::string>;
using Lines = std::vector<LogLine>;
Refusal const DONE{1, ""};
Refusal const NOTHING_ADDED{0, "No register blocks were added."};
Refusal const NOTHING_REMOVED{0, "No register blocks were removed."};
constexpr uint16 NO_ID = 65535;

/// A block that throws a Zu::Exception in its constructor.
struct FailingBlock : public ProtocolRegisterBlock
{
    FailingBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo)
        : ProtocolRegisterBlock(params, usedInfo)
    {
        ZU_THROW(-5, "100%% refused");
    }
};

/// A block that throws another exception in its constructor.
struct StrangeBlock : public ProtocolRegisterBlock
{
    StrangeBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo)
        : ProtocolRegisterBlock(params, usedInfo)
    {
        throw std::runtime_error("strange");
    }
};

class NullFactory final : public IProtocolRegisterBlockFactory
{
public:
    std::shared_ptr<ProtocolRegisterBlock> Construct(RegisterBlockParams const&, ProtocolRegisterBlockInfo&) override
    {
        return nullptr;
    }
};

/// Counts the lines that are written while a condition holds.
class LineCounter final : public Zu::Logging::ISink
{
public:
    explicit LineCounter(std::function<bool()> newIsFree) : isFree(std::move(newIsFree))
    {
    }

    bool Wants(uint64 /*flags*/) const override
    {
        return true;
    }

    void Write(Zu::Logging::Entry const& /*entry*/) override
    {
        linesWithTheLockFree += isFree() ? 1 : 0;
    }

    int linesWithTheLockFree = 0;

private:
    std::function<bool()> const isFree;
};

/// An assembly that overrides how blocks are added.
class OwnAssembly final : public ProtocolRegisterAssemblyBase
{
public:
    void Add(Zu::Params::Group& params) override
    {
        ++calls;
        onAdd();
        ProtocolRegisterAssemblyBase::Add(params);
    }

    std::function<void()> onAdd;
    int calls = 0;
};

// The operation is private and has no caller. The test reaches it through an explicit instantiation, which may name
// private members.
using GapQuestion = bool (ProtocolRegisterAssemblyBase::*)(std::list<std::shared_ptr<ProtocolRegisterBlock>>::iterator,
                                                           uint16, uint16);
GapQuestion gapQuestion = nullptr;

template <GapQuestion Question>
struct Opened
{
    static inline bool const done = [] {
        gapQuestion = Question;
        return true;
    }();
};
template struct Opened<&ProtocolRegisterAssemblyBase::hasGap>;

} // namespace

class ProtocolRegisterAssemblyBaseTest : public testing::Test
{
protected:
    void Build(bool isGlobal, uint16 least = 0, uint16 greatest = 65534)
    {
        assembly = std::make_unique<ProtocolRegisterAssemblyBase>(isGlobal, least, greatest);
        Offer(ZuTest::TypeParams("T", 4));
    }

    void Offer(RegisterBlockInfoParams const& params)
    {
        assembly->AddSupportedBlockType(std::make_unique<ProtocolRegisterBlockInfo>(params));
    }

    void OfferScanOutput()
    {
        auto params = ZuTest::TypeParams<ProtocolScanOutputRegisterBlock>("S", 1);
        params.hasDataSource = true;
        Offer(params);
    }

    Refusal Add(uint16 id = NO_ID, bool autoShift = false, std::string const& type = "T",
                std::string const& dataSource = "")
    {
        AddBlockParams params;
        params.autoShift.Set(autoShift);
        RegisterBlockParams& block = params.blocks.Add();
        block.type.Set(type);
        block.outputId.Set(id);
        block.displayName.Set("b" + std::to_string(++number));
        block.dataSource.Set(dataSource);
        return RefusalOf([&] { assembly->Add(params); });
    }

    void AddAt(std::vector<uint16> const& ids)
    {
        for (uint16 const id : ids)
        {
            ASSERT_EQ(Add(id), DONE);
        }
    }

    Refusal Remove(std::vector<uint16> const& ids)
    {
        RemoveBlockParams params;
        for (uint16 const id : ids)
        {
            params.outputIdList.Add().outputId.Set(id);
        }
        return RefusalOf([&] { assembly->Remove(params); });
    }

    Refusal Compact(uint16 start = NO_ID)
    {
        CompactBlocksParams params;
        params.startingOutputId.Set(start);
        return RefusalOf([&] { assembly->Compact(params); });
    }

    Refusal Move(uint16 id, uint16 newId, bool autoShift = false)
    {
        update.outputId.Set(id);
        update.autoShift.Set(autoShift);
        update.newParams.outputId.Set(newId);
        return RefusalOf([&] { assembly->Update(update); });
    }

    /// The blocks in list order, as "name@id".
    Names Placed()
    {
        Names placed;
        assembly->BeginLock();
        for (auto const& block : assembly->AddedRegisterBlocks())
        {
            placed.push_back(block->DisplayName() + "@" + std::to_string(block->OutputId()));
        }
        assembly->EndLock();
        return placed;
    }

    /// Expects one log line, for a refused element.
    void ExpectLine(std::string const& text)
    {
        EXPECT_EQ(log.Lines(), (Lines{UserWarning(text)}));
        log.Clear();
    }

    /// Whether the calling thread holds the lock. Releases it for the test, which works only for the holder, and takes
    /// it again.
    bool IsLockHeld()
    {
        if (RefusalOf([this] { assembly->EndLock(); }) != DONE)
        {
            return false;
        }
        assembly->BeginLock();
        return true;
    }

    /// Sets a member of the first block's record as a plug-in can, without the assembly's operations.
    void SetInBlock(nlohmann::json const& members)
    {
        assembly->BeginLock();
        Zu::Properties::JsonSerializer::Deserialize(*assembly->AddedRegisterBlocks().front(), members);
        assembly->EndLock();
    }

    /// The same for the first type.
    void SetInType(nlohmann::json const& members)
    {
        assembly->BeginLock();
        Zu::Properties::JsonSerializer::Deserialize(*assembly->SupportedRegisterBlockTypes().front(), members);
        assembly->EndLock();
    }

    int CountOf(std::string const& type)
    {
        int count = -1;
        assembly->BeginLock();
        for (auto const& info : assembly->SupportedRegisterBlockTypes())
        {
            if (info->Type() == type)
            {
                count = Zu::Properties::JsonSerializer::Serialize(*info).at("instanceCount").get<int>();
            }
        }
        assembly->EndLock();
        return count;
    }

    std::unique_ptr<ProtocolRegisterAssemblyBase> assembly;
    UpdateBlockParams update;
    ZuTest::LogRecorder log;
    int number = 0;
};

TEST_F(ProtocolRegisterAssemblyBaseTest, RefusesARangeThatIsNoneBeforeTheIdentifier)
{
    EXPECT_EQ(RefusalOf([] { ProtocolRegisterAssemblyBase(true, 5, 4, nullptr); }),
              (Refusal{-997, "Minimum output id value 5 and/or maximum output id value 4 are invalid."}));
    EXPECT_EQ(RefusalOf([] { ProtocolRegisterAssemblyBase(false, 0, 65535); }),
              (Refusal{-997, "Minimum output id value 0 and/or maximum output id value 65535 are invalid."}));
    Refusal const badId{-997, "Invalid value for register assembly identifier."};
    EXPECT_EQ(RefusalOf([] { ProtocolRegisterAssemblyBase(true, 0, 9, nullptr); }), badId);
    EXPECT_EQ(RefusalOf([] { ProtocolRegisterAssemblyBase(true, 0, 9, ""); }), badId);
}

TEST_F(ProtocolRegisterAssemblyBaseTest, ShowsWhatItWasMadeWith)
{
    ProtocolRegisterAssemblyBase byDefault;
    EXPECT_EQ(Zu::Properties::JsonSerializer::Serialize(byDefault.Attributes()),
              (nlohmann::json{{"isGlobalAddressSpaceUsed", false}, {"outputIdMin", 0}, {"outputIdMax", 65534}}));
    EXPECT_EQ(Zu::Properties::JsonSerializer::Serialize(byDefault.Properties()),
              (nlohmann::json{{"displayName", "Register Assembly 0"}, {"id", "registerAssembly-0"}}));
    EXPECT_STREQ(byDefault.Id(), "registerAssembly-0");
    EXPECT_EQ(Zu::Properties::JsonSerializer::Serialize(RegisterAssemblyAttributes()),
              (nlohmann::json{{"isGlobalAddressSpaceUsed", false}, {"outputIdMin", 0}, {"outputIdMax", 0}}));

    EXPECT_EQ(Zu::Properties::JsonSerializer::SerializeSchema(byDefault.Properties()).at("properties"),
              nlohmann::json::parse(R"({
        "displayName": {"type": "string", "title": "Register Assembly display name", "sortOrder": 0, "readOnly": true},
        "id": {"type": "string", "title": "Register Assembly Identifier", "sortOrder": 100, "readOnly": true}})"));
    EXPECT_EQ(Zu::Properties::JsonSerializer::SerializeSchema(byDefault.Attributes()).at("properties"),
              nlohmann::json::parse(R"({
        "isGlobalAddressSpaceUsed":
            {"type": "boolean", "title": "Is Global Address Space Used", "sortOrder": 0, "readOnly": true},
        "outputIdMin":
            {"type": "integer", "title": "Minimum Output Id", "sortOrder": 100, "readOnly": true, "minimum": 0},
        "outputIdMax":
            {"type": "integer", "title": "Maximum Output Id", "sortOrder": 200, "readOnly": true, "minimum": 0}})"));
    EXPECT_STREQ(ProtocolRegisterAssemblyBase::REGISTER_BLOCK_INSTANCE_FORMATID_DELIMITER, "-");
}

TEST_F(ProtocolRegisterAssemblyBaseTest, OffersATypeOnce)
{
    Build(true);

    EXPECT_EQ(RefusalOf([&] { Offer(ZuTest::TypeParams("T", 8)); }),
              (Refusal{-987, "This register block type is already supported."}));

    assembly->BeginLock();
    ASSERT_EQ(assembly->SupportedRegisterBlockTypes().size(), 1u);
    EXPECT_EQ(assembly->SupportedRegisterBlockTypes()[0]->RegisterCount(), 4);
    EXPECT_TRUE(assembly->SupportedRegisterBlockTypes()[0]->IsGlobalAddressSpaceUsed());
    assembly->EndLock();
}

TEST_F(ProtocolRegisterAssemblyBaseTest, PlacesBlocksWithoutAnIdOneBehindTheOther)
{
    Build(true, 100, 199);
    AddBlockParams params;
    params.blocks.Add().type.Set("T");
    params.blocks.Add().type.Set("T");

    assembly->Add(params);

    EXPECT_EQ(Placed(), (Names{"T name@100", "T name@104"}));
    EXPECT_EQ(params.blocks.At(1).outputId.Get(), 104); // the caller's record has the chosen id
    EXPECT_EQ(params.blocks.At(1).displayName.Get(), "T name");
    EXPECT_EQ(CountOf("T"), 2);
}

TEST_F(ProtocolRegisterAssemblyBaseTest, RefusesElementsInOrderOfTheTests)
{
    Build(true, 100, 199);
    auto single = ZuTest::TypeParams("One", 4);
    single.maxInstanceCount = 1;
    single.hasDataSource = true;
    single.factory = ZuTest::TypeParams<ProtocolScanOutputRegisterBlock>("", 0).factory;
    Offer(single);
    Offer(ZuTest::TypeParams<FailingBlock>("Failing", 4));

    EXPECT_EQ(Add(300, false, ""), NOTHING_ADDED);
    ExpectLine("Cannot add block. Register block type must be specified in order to add a register block.");
    EXPECT_EQ(Add(300, false, "x"), NOTHING_ADDED);
    ExpectLine("Cannot add block. The type or size of the x block is incompatible with this protocol.");
    EXPECT_EQ(Add(300, false, "One"), NOTHING_ADDED);
    ExpectLine("Cannot add block. A data source is required for block type One.");
    EXPECT_EQ(Add(198, false, "One", "d"), NOTHING_ADDED);
    ExpectLine("Cannot add block One because the block output id range [198, 201] lies outside the valid output id "
               "range [100, 199].");
    EXPECT_EQ(Add(102, false, "One", "d"), DONE);
    EXPECT_EQ(Add(300, false, "One"), NOTHING_ADDED);
    ExpectLine("Cannot add block. The maximum number of blocks of block type One have already been added.");
    EXPECT_EQ(Add(100, false, "Failing"), NOTHING_ADDED);
    ExpectLine("The block output id range [100 - 103] overlaps with the output id range [102 - 105] of an existing "
               "block: b5.");
    EXPECT_EQ(Add(106, false, "Failing"), NOTHING_ADDED);
    ExpectLine("100% refused");
    EXPECT_EQ(Placed(), (Names{"b5@102"}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, TellsTheRangeWithoutWrapping)
{
    Build(true, 0, 65534);

    EXPECT_EQ(Add(65533), NOTHING_ADDED);

    ExpectLine("Cannot add block T because the block output id range [65533, 65536] lies outside the valid output id "
               "range [0, 65534].");
}

TEST_F(ProtocolRegisterAssemblyBaseTest, AddsWhatItCanAndLogsTheRest)
{
    Build(true, 100, 199);
    AddBlockParams params;
    params.blocks.Add().type.Set("x");
    params.blocks.Add().type.Set("T");
    params.blocks.Add();

    EXPECT_EQ(RefusalOf([&] { assembly->Add(params); }), DONE);

    EXPECT_EQ(
        log.Lines(),
        (Lines{UserWarning("Cannot add block. The type or size of the x block is incompatible with this protocol."),
               UserWarning("Cannot add block. Register block type must be specified in order to add a register "
                           "block.")}));
    EXPECT_EQ(Placed(), (Names{"T name@100"}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, RefusesAnElementWithoutATypeBeforeItTakesTheLock)
{
    Build(true, 100, 199);
    assembly->BeginLock();

    Refusal refusal{};
    std::thread([&] { refusal = Add(100, false, ""); }).join(); // would not come back if it waited

    assembly->EndLock();
    EXPECT_EQ(refusal, NOTHING_ADDED);
}

TEST_F(ProtocolRegisterAssemblyBaseTest, HoldsItsLockForEachElementAndNotWhileItLogs)
{
    Build(true, 100, 199);
    auto const sink = std::make_shared<LineCounter>([this] { return !IsLockHeld(); });
    Zu::Logging::AddSink(sink);
    AddBlockParams params;
    for (char const* const type : {"x", "T", "x"})
    {
        params.blocks.Add().type.Set(type);
    }

    assembly->Add(params);
    EXPECT_EQ(Remove({150, 100, 160}), DONE);

    Zu::Logging::RemoveSink(sink);
    EXPECT_EQ(sink->linesWithTheLockFree, 4);
    EXPECT_EQ(log.Lines().size(), 4u);
}

TEST_F(ProtocolRegisterAssemblyBaseTest, DoesNothingForEmptyArrays)
{
    Build(true, 100, 199);

    EXPECT_EQ(RefusalOf([&] {
                  AddBlockParams params;
                  assembly->Add(params);
              }),
              DONE);
    EXPECT_EQ(Remove({}), DONE);
    EXPECT_EQ(log.Lines().size(), 0u);
}

TEST_F(ProtocolRegisterAssemblyBaseTest, LetsStrangeExceptionsEndTheCall)
{
    Build(true, 100, 199);
    Offer(ZuTest::TypeParams<StrangeBlock>("Strange", 4));
    AddBlockParams params;
    params.blocks.Add().type.Set("Strange");
    params.blocks.Add().type.Set("T");

    EXPECT_THROW(assembly->Add(params), std::runtime_error);

    EXPECT_EQ(Placed(), Names{});
    EXPECT_EQ(log.Lines().size(), 0u);
}

TEST_F(ProtocolRegisterAssemblyBaseTest, RefusesABlockThatItsFactoryDoesNotMake)
{
    Build(true, 100, 199);
    auto broken = ZuTest::TypeParams("Broken", 4);
    broken.factory = std::make_shared<NullFactory>();
    Offer(broken);
    AddAt({100});

    EXPECT_EQ(Add(102, true, "Broken"), NOTHING_ADDED);

    ExpectLine(""); // the refusal has no text
    EXPECT_FALSE(IsLockHeld());
    EXPECT_EQ(Placed(), (Names{"b1@106"})); // the shift is not undone
    EXPECT_EQ(CountOf("Broken"), 0);
    EXPECT_EQ(Compact(196), DONE); // nothing of the refused block is counted
}

TEST_F(ProtocolRegisterAssemblyBaseTest, TakesNoRecordOfAnotherClass)
{
    Build(true);
    RegisterBlockParams other;

    EXPECT_THROW(assembly->Add(other), std::bad_cast);
    EXPECT_THROW(assembly->Remove(other), std::bad_cast);
    EXPECT_THROW(assembly->Compact(other), std::bad_cast);
    EXPECT_THROW(assembly->Update(other), std::bad_cast);
}

TEST_F(ProtocolRegisterAssemblyBaseTest, ShiftsBlocksInTheWayUntilAGapTakesThemUp)
{
    Build(true, 0, 199);
    AddAt({100, 110});

    EXPECT_EQ(Add(102, true), DONE);

    EXPECT_EQ(Placed(), (Names{"b3@102", "b1@106", "b2@110"}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, CountsTheWholeTailBeforeItShifts)
{
    Build(true, 100, 119);
    AddAt({100, 108, 116});

    EXPECT_EQ(Add(109, true), NOTHING_ADDED); // refused although the gap could absorb the shift
    ExpectLine("");
    EXPECT_EQ(Placed(), (Names{"b1@100", "b2@108", "b3@116"}));

    EXPECT_EQ(Add(106, true), DONE);
    EXPECT_EQ(Placed(), (Names{"b1@100", "b5@106", "b2@110", "b3@116"}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, CountsTheMovedBlockInItsOwnTail)
{
    Build(true, 100, 115);
    AddAt({100, 104, 108, 112});

    EXPECT_EQ(Move(112, 104, true), (Refusal{-977, ""}));

    EXPECT_EQ(Placed(), (Names{"b1@100", "b2@104", "b3@108", "b4@112"}));
    EXPECT_EQ(log.Lines().size(), 0u);
}

TEST_F(ProtocolRegisterAssemblyBaseTest, KeepsAShiftWhoseBlockThenFails)
{
    Build(true, 100, 199);
    Offer(ZuTest::TypeParams<FailingBlock>("Failing", 4));
    AddAt({100});

    EXPECT_EQ(Add(100, true, "Failing"), NOTHING_ADDED);

    EXPECT_EQ(Placed(), (Names{"b1@104"}));
    EXPECT_EQ(CountOf("Failing"), 0);
    EXPECT_EQ(Add(100), DONE);
    EXPECT_EQ(Placed(), (Names{"b3@100", "b1@104"}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, ShiftsPlainNumbersOneByOne)
{
    Build(false);
    AddAt({1, 2, 3});

    EXPECT_EQ(Add(2), NOTHING_ADDED);
    ExpectLine("The block output id 2 conflicts with the output id 2 of an existing block: b2.");
    EXPECT_EQ(Add(2, true), DONE);

    EXPECT_EQ(Placed(), (Names{"b1@1", "b5@2", "b2@3", "b3@4"}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, ChecksNoRangeOfPlainNumbers)
{
    Build(false, 10, 20);

    AddAt({500, 65534});
    EXPECT_EQ(Add(65534, true), DONE);

    EXPECT_EQ(Placed(), (Names{"b1@500", "b3@65534", "b2@65535"}));
    EXPECT_EQ(Remove({65535}), NOTHING_REMOVED);
    ExpectLine("Cannot remove block. Register block output id must be specified in order to remove a register block.");
    EXPECT_EQ(Move(65535, 1),
              (Refusal{-997, "Register output id must be specified in order to update a register block."}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, GoesOnBehindTheLastPlainNumberInSixteenBits)
{
    Build(false);
    AddAt({65534});

    EXPECT_EQ(Add(), DONE);
    EXPECT_EQ(Add(), DONE);

    EXPECT_EQ(Placed(), (Names{"b3@0", "b1@65534", "b2@65535"}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, RemovesByTheFirstIdAlone)
{
    Build(true, 100, 199);
    AddAt({100, 110});

    EXPECT_EQ(Remove({101}), NOTHING_REMOVED);
    ExpectLine("Cannot remove block. There are no register blocks with output id 101.");
    EXPECT_EQ(Remove({101, 100, 100}), DONE);
    EXPECT_EQ(log.Lines(),
              (Lines{UserWarning("Cannot remove block. There are no register blocks with output id 101."),
                     UserWarning("Cannot remove block. There are no register blocks with output id 100.")}));

    EXPECT_EQ(Placed(), (Names{"b2@110"})); // the gap stays
    EXPECT_EQ(CountOf("T"), 1);
}

TEST_F(ProtocolRegisterAssemblyBaseTest, KeepsTheLeastNumberOfAType)
{
    Build(true, 100, 199);
    auto needed = ZuTest::TypeParams("Needed", 4);
    needed.minInstanceCount = 1;
    Offer(needed);
    EXPECT_EQ(Add(100, false, "Needed"), DONE);

    EXPECT_EQ(Remove({100}), NOTHING_REMOVED);

    ExpectLine("Cannot remove block with output id 100. The minimum number of instances of this block type exist in "
               "the register assembly.");
    EXPECT_EQ(Placed(), (Names{"b1@100"}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, CompactsFromItsFirstIdOrTheGivenOne)
{
    Build(true, 100, 199);
    AddAt({110, 120});

    EXPECT_EQ(Compact(), DONE);
    EXPECT_EQ(Placed(), (Names{"b1@100", "b2@104"}));
    EXPECT_EQ(Compact(150), DONE);
    EXPECT_EQ(Placed(), (Names{"b1@150", "b2@154"}));

    Build(false, 10, 20);
    AddAt({110, 120});
    EXPECT_EQ(Compact(), DONE);
    EXPECT_EQ(Placed(), (Names{"b3@0", "b4@1"}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, RefusesToCompactToWhereThereIsNoRoom)
{
    Build(true, 100, 199);
    Offer(ZuTest::TypeParams("Large", 60));
    EXPECT_EQ(Add(100, false, "Large"), DONE);

    EXPECT_EQ(Compact(150), (Refusal{-977, "Cannot compact blocks. The requested output id range [150, 209] cannot lie "
                                           "outside the valid output id range [100, 199]."}));
    EXPECT_EQ(Compact(99), (Refusal{-997, "Cannot compact blocks. The requested output id 99 cannot lie outside the "
                                          "valid output id range [100, 199]."}));
    EXPECT_EQ(Compact(200), (Refusal{-997, "Cannot compact blocks. The requested output id 200 cannot lie outside the "
                                           "valid output id range [100, 199]."}));
    EXPECT_EQ(Compact(140), DONE);
    EXPECT_EQ(Placed(), (Names{"b1@140"}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, CompactsPlainNumbersBeyondTheLast)
{
    Build(false);
    AddAt({1, 2, 3});

    EXPECT_EQ(Compact(65534), DONE);

    EXPECT_EQ(Placed(), (Names{"b1@65534", "b2@65535", "b3@0"})); // the list is no longer sorted
    EXPECT_EQ(Add(0), DONE);                                      // the search stops at the first block behind it
    EXPECT_EQ(Placed(), (Names{"b4@0", "b1@65534", "b2@65535", "b3@0"}));
    EXPECT_EQ(Remove({0}), DONE); // the first with this id
    EXPECT_EQ(Placed(), (Names{"b1@65534", "b2@65535", "b3@0"}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, CompactsPlainNumbersOutsideOfTheRange)
{
    Build(false, 10, 20);
    AddAt({1, 5});

    EXPECT_EQ(Compact(500), DONE);

    EXPECT_EQ(Placed(), (Names{"b1@500", "b2@501"}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, RefusesToCompactWithoutWaitingForTheLock)
{
    Build(true, 100, 199);
    Offer(ZuTest::TypeParams("Large", 60));
    EXPECT_EQ(Add(100, false, "Large"), DONE);
    assembly->BeginLock();

    Refusal refusal{};
    std::thread([&] { refusal = Compact(150); }).join(); // would not come back if it waited

    assembly->EndLock();
    EXPECT_EQ(refusal.status, -977);
}

TEST_F(ProtocolRegisterAssemblyBaseTest, ComparesTheRoomAgainUnderItsLock)
{
    Build(true, 100, 199);
    AddAt({100});
    assembly->BeginLock();
    std::atomic<long> compactorId{0};
    Refusal refusal{};
    std::thread compactor([&] {
        compactorId = ZuTest::ThisThreadId();
        refusal = Compact(196);
    });
    while (compactorId == 0)
    {
        std::this_thread::yield();
    }

    // The compactor has compared the room for one block and waits for the lock. Now there is another block.
    EXPECT_TRUE(ZuTest::WaitUntilBlockedIn(compactorId, *assembly));
    AddAt({110});
    assembly->EndLock();
    compactor.join();

    EXPECT_EQ(refusal, (Refusal{-977, "Cannot compact blocks. The requested output id range [196, 203] cannot lie "
                                      "outside the valid output id range [100, 199]."}));
    EXPECT_EQ(Placed(), (Names{"b1@100", "b2@110"}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, UpdatesABlockInPlace)
{
    Build(true, 100, 199);
    AddAt({100, 110});
    update.newParams.displayName.Set("new");
    update.newParams.scannerId.Set("scanner-1");
    update.newParams.dataSource.Set("ignored");

    EXPECT_EQ(Move(100, 100), DONE);

    EXPECT_EQ(Placed(), (Names{"new@100", "b2@110"}));
    update.newParams.displayName.Set("");
    update.newParams.scannerId.Set("");
    EXPECT_EQ(Move(100, NO_ID), DONE); // the block keeps its place and names
    EXPECT_EQ(Placed(), (Names{"new@100", "b2@110"}));
    assembly->BeginLock();
    EXPECT_EQ(assembly->AddedRegisterBlocks().front()->ScannerId(), "scanner-1");
    assembly->EndLock();
    EXPECT_EQ(log.Lines().size(), 0u);
}

TEST_F(ProtocolRegisterAssemblyBaseTest, MovesABlockInTheList)
{
    Build(true, 100, 199);
    AddAt({100, 110, 120});

    EXPECT_EQ(Move(100, 130), DONE);
    EXPECT_EQ(Placed(), (Names{"b2@110", "b3@120", "b1@130"}));
    EXPECT_EQ(Move(130, 102), DONE);
    EXPECT_EQ(Placed(), (Names{"b1@102", "b2@110", "b3@120"}));
    EXPECT_EQ(Move(102, 104), DONE); // overlaps its own old place
    EXPECT_EQ(Move(104, 119, true), DONE);
    EXPECT_EQ(Placed(), (Names{"b2@110", "b1@119", "b3@123"}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, AppliesNothingOfAnUpdateThatConflicts)
{
    Build(true, 100, 199);
    AddAt({100, 110});
    update.newParams.displayName.Set("new");

    EXPECT_EQ(Move(100, 112), (Refusal{-980, "The block output id range [112 - 115] overlaps with the output id range "
                                             "[110 - 113] of an existing block: b2."}));
    EXPECT_EQ(Move(100, 198), (Refusal{-997, "Cannot update block T because the block output id range [198, 201] lies "
                                             "outside the valid output id range [100, 199]."}));
    EXPECT_EQ(Move(105, 150), (Refusal{-999, "There are no register blocks with output id 105."}));

    EXPECT_EQ(Placed(), (Names{"b1@100", "b2@110"}));
    EXPECT_EQ(log.Lines().size(), 0u);
}

TEST_F(ProtocolRegisterAssemblyBaseTest, ChangesTheDataSourceOfABlockThatHasOne)
{
    Build(true, 100, 199);
    OfferScanOutput();
    EXPECT_EQ(Add(100, false, "S", "x"), DONE);
    update.newParams.dataSource.Set("y");

    EXPECT_EQ(Move(100, NO_ID), DONE);

    EXPECT_EQ(assembly->DataSourceList(), (Names{"y"}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, FindsBlocksByDataSourceAndByType)
{
    Build(true, 100, 199);
    OfferScanOutput();
    EXPECT_EQ(Add(110, false, "S", "x"), DONE);
    EXPECT_EQ(Add(105, false, "S", "x"), DONE);
    EXPECT_EQ(Add(107, false, "S", "a"), DONE);
    AddAt({100});

    EXPECT_EQ(assembly->DataSourceList(), (Names{"x", "a", "x"}));
    auto const bySource = assembly->FindAddedScanOutputBlocksSortedByDataSource();
    ASSERT_EQ(bySource.size(), 2u);
    EXPECT_EQ(bySource.at("x")->OutputId(), 105); // of two blocks the block with the lower id
    EXPECT_EQ(bySource.at("a")->OutputId(), 107);

    std::vector<uint16> found;
    for (auto const& block : assembly->FindAddedBlocksOfTypes({"S", "T", "S", "x"}))
    {
        found.push_back(block->OutputId());
    }
    EXPECT_EQ(found, (std::vector<uint16>{100, 105, 107, 110}));
    EXPECT_EQ(assembly->FindAddedBlocksOfTypes({"x"}).size(), 0u);
}

TEST_F(ProtocolRegisterAssemblyBaseTest, PlacesOneBlockOfEachTypeThatMustHaveOne)
{
    Build(true, 100, 199);
    for (char const* const name : {"B", "A"})
    {
        auto params = ZuTest::TypeParams(name, 2);
        params.minInstanceCount = 2;
        params.maxInstanceCount = 2;
        Offer(params);
    }
    auto source = ZuTest::TypeParams<ProtocolScanOutputRegisterBlock>("S", 1);
    source.minInstanceCount = 1;
    source.hasDataSource = true;
    Offer(source);
    AddAt({150});

    for (int i = 0; i < 2; ++i) // the second run starts again and reaches no limit
    {
        log.Clear();
        assembly->InitDefaultRegisterBlocksForRegisterAssembly();

        EXPECT_EQ(Placed(), (Names{"B name@100", "A name@102"}));
        EXPECT_EQ(CountOf("T"), 0);
        EXPECT_EQ(CountOf("A"), 1);
        ExpectLine("Cannot add block. A data source is required for block type S.");
    }
}

TEST_F(ProtocolRegisterAssemblyBaseTest, AddsTheDefaultsThroughTheVirtualOperationUnderTheLock)
{
    auto own = std::make_unique<OwnAssembly>();
    OwnAssembly& derived = *own;
    assembly = std::move(own);
    auto needed = ZuTest::TypeParams("Needed", 4);
    needed.minInstanceCount = 1;
    Offer(needed);
    derived.onAdd = [this] { EXPECT_TRUE(IsLockHeld()); };

    assembly->InitDefaultRegisterBlocksForRegisterAssembly();

    EXPECT_EQ(derived.calls, 1);
    EXPECT_EQ(Placed(), (Names{"Needed name@0"}));
    EXPECT_FALSE(IsLockHeld());
}

TEST_F(ProtocolRegisterAssemblyBaseTest, PassesOnThatNoneOfTheDefaultsCouldBeAdded)
{
    Build(false);
    auto source = ZuTest::TypeParams<ProtocolScanOutputRegisterBlock>("S", 1);
    source.minInstanceCount = 1;
    source.hasDataSource = true;
    Offer(source);
    AddAt({5});

    EXPECT_EQ(RefusalOf([&] { assembly->InitDefaultRegisterBlocksForRegisterAssembly(); }), NOTHING_ADDED);

    ExpectLine("Cannot add block. A data source is required for block type S.");
    EXPECT_EQ(Placed(), Names{}); // the old blocks are removed despite the failure
}

TEST_F(ProtocolRegisterAssemblyBaseTest, DoesWithoutDefaultsWhereNoTypeNeedsABlock)
{
    Build(false);
    AddAt({5});

    assembly->InitDefaultRegisterBlocksForRegisterAssembly();

    EXPECT_EQ(Placed(), Names{});
    EXPECT_EQ(CountOf("T"), 0);
}

TEST_F(ProtocolRegisterAssemblyBaseTest, HandsItsListsOutUnderItsLockAlone)
{
    Build(true);
    Refusal const wrongState{-1000, ""};
    EXPECT_EQ(RefusalOf([&] { assembly->AddedRegisterBlocks(); }), wrongState);
    EXPECT_EQ(RefusalOf([&] { assembly->SupportedRegisterBlockTypes(); }), wrongState);

    assembly->BeginLock();
    assembly->BeginLock();
    EXPECT_EQ(RefusalOf([&] { assembly->AddedRegisterBlocks(); }), DONE);
    assembly->EndLock();

    EXPECT_EQ(RefusalOf([&] { assembly->AddedRegisterBlocks(); }), wrongState); // one EndLock is enough
    assembly->EndLock();
    EXPECT_EQ(RefusalOf([&] { assembly->EndLock(); }), wrongState);
}

TEST_F(ProtocolRegisterAssemblyBaseTest, ChangesTheByteOrderOfPlacedBlocks)
{
    Build(true);
    auto type = ZuTest::TypeParams<DefaultControlOutputRegisterBlock>("Answer", 3);
    type.isProtocolBigEndian = true;
    Offer(type);
    EXPECT_EQ(Add(100, false, "Answer"), DONE);
    std::shared_ptr<ProtocolRegisterBlock> const block = assembly->FindAddedBlocksOfTypes({"Answer"}).front();
    DefaultControlOutputRegisterBlock::DefaultCommandResultData const answer{0x1234, CommandStatusDone};
    EXPECT_EQ(ZuTest::Written(*block, 3, &answer, sizeof answer), (ZuTest::Bytes{0x12, 0x34, 0x02}));

    assembly->ChangeBigEndianSupportedBlocks(false);

    EXPECT_EQ(ZuTest::Written(*block, 3, &answer, sizeof answer), (ZuTest::Bytes{0x34, 0x12, 0x02}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, TellsWhetherARangeFitsAheadOfTheTail)
{
    Build(true, 100, 111);
    AddAt({100, 108});
    assembly->BeginLock();
    auto& blocks = const_cast<std::list<std::shared_ptr<ProtocolRegisterBlock>>&>(assembly->AddedRegisterBlocks());

    EXPECT_TRUE((assembly.get()->*gapQuestion)(std::next(blocks.begin()), 104, 107));
    EXPECT_FALSE((assembly.get()->*gapQuestion)(std::next(blocks.begin()), 104, 108));
    EXPECT_TRUE((assembly.get()->*gapQuestion)(blocks.begin(), 100, 103));
    EXPECT_TRUE((assembly.get()->*gapQuestion)(blocks.end(), 100, 111));
    assembly->EndLock();
}

TEST_F(ProtocolRegisterAssemblyBaseTest, CountsItsChanges)
{
    Build(true, 100, 199);
    uint64 last = assembly->ChangeCount();
    auto const hasChanged = [&] {
        uint64 const count = assembly->ChangeCount();
        bool const changed = count != last;
        last = count;
        return changed;
    };
    AddAt({100});
    EXPECT_TRUE(hasChanged());
    EXPECT_EQ(Move(100, 110), DONE);
    EXPECT_TRUE(hasChanged());
    EXPECT_EQ(Compact(), DONE);
    EXPECT_TRUE(hasChanged());
    EXPECT_EQ(Add(98), NOTHING_ADDED);
    EXPECT_FALSE(hasChanged());
    EXPECT_EQ(Remove({100}), DONE);
    EXPECT_TRUE(hasChanged());
    assembly->ChangeBigEndianSupportedBlocks(false);
    EXPECT_TRUE(hasChanged());
    assembly->ResetRegisterAssembly();
    EXPECT_TRUE(hasChanged());
    EXPECT_EQ(Placed(), Names{});
    EXPECT_FALSE(hasChanged());
}

TEST_F(ProtocolRegisterAssemblyBaseTest, SeesIdsThatWereSetPastIt)
{
    Build(true, 100, 199);
    AddAt({100, 110, 120});
    assembly->BeginLock();
    assembly->AddedRegisterBlocks().front()->SetOutputId(150);
    assembly->EndLock();

    EXPECT_EQ(Add(152), NOTHING_ADDED);
    ExpectLine("The block output id range [152 - 155] overlaps with the output id range [150 - 153] of an existing "
               "block: b1.");
    EXPECT_EQ(Add(100), DONE);
    EXPECT_EQ(Placed(), (Names{"b5@100", "b1@150", "b2@110", "b3@120"}));
    EXPECT_EQ(Remove({150}), DONE);
    EXPECT_EQ(Placed(), (Names{"b5@100", "b2@110", "b3@120"}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, SeesIdsThatWereSetThroughTheRecord)
{
    Build(true, 100, 199);
    AddAt({100, 110, 120});
    SetInBlock({{"outputId", 150}});

    EXPECT_EQ(Add(152), NOTHING_ADDED);
    ExpectLine("The block output id range [152 - 155] overlaps with the output id range [150 - 153] of an existing "
               "block: b1.");
    EXPECT_EQ(Add(100), DONE);
    EXPECT_EQ(Placed(), (Names{"b5@100", "b1@150", "b2@110", "b3@120"}));
    EXPECT_EQ(Move(100, 105), DONE); // finds the block that is there now
    EXPECT_EQ(Remove({150}), DONE);
    EXPECT_EQ(Placed(), (Names{"b5@105", "b2@110", "b3@120"}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, SeesIdsThatWereCopiedIntoABlock)
{
    Build(true, 100, 199);
    AddAt({100, 110});
    assembly->BeginLock();
    auto const& blocks = assembly->AddedRegisterBlocks();
    blocks.front()->CopyValues(*blocks.back());
    assembly->EndLock();

    EXPECT_EQ(Remove({100}), NOTHING_REMOVED);
    ExpectLine("Cannot remove block. There are no register blocks with output id 100.");
    EXPECT_EQ(Add(100), DONE);
    EXPECT_EQ(Remove({110}), DONE);
    EXPECT_EQ(Placed(), (Names{"b3@100", "b2@110"})); // of two blocks at one id the first is removed
}

TEST_F(ProtocolRegisterAssemblyBaseTest, SeesAnIdThatAnObserverOfItsOwnChangeSets)
{
    Build(true, 100, 199);
    AddAt({100, 110, 120});
    assembly->BeginLock();
    ProtocolRegisterBlock& last = *assembly->AddedRegisterBlocks().back();
    assembly->AddedRegisterBlocks().front()->Find("outputId")->AddObserver([&last](Zu::Properties::Node&) {
        last.SetOutputId(140);
    });
    assembly->EndLock();

    EXPECT_EQ(Move(100, 102), DONE);

    EXPECT_EQ(Placed(), (Names{"b1@102", "b2@110", "b3@140"}));
    EXPECT_EQ(Add(120), DONE);
    EXPECT_EQ(Remove({140}), DONE);
    EXPECT_EQ(Placed(), (Names{"b1@102", "b2@110", "b4@120"}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, SeesARegisterCountThatWasSetInATypeOfPlacedBlocks)
{
    Build(true, 100, 199);
    AddAt({100, 110});
    SetInType({{"registerCount", 8}});

    EXPECT_EQ(Add(104), NOTHING_ADDED);
    ExpectLine("The block output id range [104 - 111] overlaps with the output id range [100 - 107] of an existing "
               "block: b1.");
    EXPECT_EQ(Compact(185), (Refusal{-977, "Cannot compact blocks. The requested output id range [185, 200] cannot lie "
                                           "outside the valid output id range [100, 199]."}));
    EXPECT_EQ(Compact(184), DONE);
    EXPECT_EQ(Placed(), (Names{"b1@184", "b2@192"}));
    SetInType({{"registerCount", 2}});
    EXPECT_EQ(Compact(197).status, -977);
    EXPECT_EQ(Compact(196), DONE); // no operation in between counts the registers again
    EXPECT_EQ(Placed(), (Names{"b1@196", "b2@198"}));
}

TEST_F(ProtocolRegisterAssemblyBaseTest, CountsChangesThatWereMadeWithoutIt)
{
    Build(true, 100, 199);
    AddAt({100});
    uint64 const before = assembly->ChangeCount();
    SetInBlock({{"outputId", 110}});
    uint64 const behindTheId = assembly->ChangeCount();
    SetInType({{"registerCount", 8}});

    EXPECT_GT(behindTheId, before);
    EXPECT_GT(assembly->ChangeCount(), behindTheId);
}

TEST_F(ProtocolRegisterAssemblyBaseTest, IsChangedAndReadByThreadsAtOnce)
{
    Build(true, 0, 9999);
    Offer(ZuTest::TypeParams("Large", 100));
    EXPECT_EQ(Add(9000, false, "Large"), DONE);
    ZuTest::Latch go;
    auto const change = [&](uint16 first) {
        ASSERT_TRUE(go.Wait());
        for (uint16 i = 0; i < 200; ++i)
        {
            AddBlockParams add;
            RegisterBlockParams& block = add.blocks.Add();
            block.type.Set("T");
            block.outputId.Set(static_cast<uint16>(first + 4 * i));
            assembly->Add(add);
            RemoveBlockParams remove;
            remove.outputIdList.Add().outputId.Set(static_cast<uint16>(first + 4 * i));
            if (i % 2 == 0)
            {
                assembly->Remove(remove);
            }
        }
    };
    std::thread low(change, uint16{0});
    std::thread high(change, uint16{5000});
    std::thread reader([&] {
        ASSERT_TRUE(go.Wait());
        for (int i = 0; i < 200; ++i)
        {
            assembly->BeginLock();
            uint32 end = 0;
            for (auto const& block : assembly->AddedRegisterBlocks())
            {
                EXPECT_GE(block->OutputId(), end);
                end = block->EndAddress();
            }
            assembly->EndLock();
            EXPECT_EQ(Compact(9950).status, -977); // counts the registers without the lock
        }
    });
    go.Open();
    low.join();
    high.join();
    reader.join();

    EXPECT_EQ(CountOf("T"), 200);
}

} // namespace ZuControl::ControlProtocol
