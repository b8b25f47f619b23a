#include "Support/RandomDraws.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "Support/RegisterBlocks.h"
#include "ZuControl/ControlProtocol/LayoutCopy.h"
#include "ZuControl/ControlProtocol/ProtocolOutputActionTarget.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyActionTarget.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"
#include "ZuControl/ControlProtocol/RegisterProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <utility>

// A hundred thousand sequences of commands, all usages and kinds together: the preview of each command refuses as the
// command does, and shows the layout that the command leaves.

namespace ZuControl::ControlProtocol
{

using ZuTest::LogLine;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

static bool operator==(LayoutEntry const& left, LayoutEntry const& right)
{
    auto const values = [](LayoutEntry const& one) {
        return std::tie(one.outputId, one.textId, one.registers, one.source, one.type, one.scannerId, one.displayName,
                        one.bytesPerRegister, one.isBigEndian, one.areBytesSwapped, one.outputSize, one.dataOffset,
                        one.dataLength);
    };
    return values(left) == values(right);
}

static std::ostream& operator<<(std::ostream& stream, LayoutEntry const& entry)
{
    return stream << entry.type << ' ' << entry.source << " \"" << entry.displayName << "\" at " << entry.outputId
                  << entry.textId;
}

namespace
{

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool IS_SANITIZED = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
constexpr bool IS_SANITIZED = true;
#else
constexpr bool IS_SANITIZED = false;
#endif
#else
constexpr bool IS_SANITIZED = false;
#endif

constexpr int SequencesOf(int all)
{
    return IS_SANITIZED ? all / 20 : all;
}

/// The commands of a sequence: an action and a function that makes its arguments. The arguments are made twice, since a
/// command writes into them.
struct Command
{
    std::string action;
    std::function<std::shared_ptr<Zu::Params::Group>()> makeParams;
};

struct Outcome
{
    Refusal refusal;
    std::vector<std::string> refusedEntries;
};

} // namespace

class PreviewRandomTest : public testing::Test
{
protected:
    using Layouts = std::function<Layout()>;

    static std::vector<std::string> TextsOf(std::vector<EntryRefusal> const& refusals)
    {
        std::vector<std::string> texts;
        for (EntryRefusal const& refusal : refusals)
        {
            texts.push_back(refusal.text);
        }
        return texts;
    }

    std::vector<std::string> UserLines()
    {
        std::vector<std::string> texts;
        for (LogLine const& line : log.Lines())
        {
            if ((line.flags & Zu::Logging::FLAG_USER) != 0)
            {
                texts.push_back(line.text);
            }
        }
        log.Clear();
        return texts;
    }

    /// Each of `lines` stands in `texts`, in the same order. A refused entry may have given the log no user line.
    static bool HoldsInOrder(std::vector<std::string> const& texts, std::vector<std::string> const& lines)
    {
        auto next = lines.begin();
        for (std::string const& text : texts)
        {
            next += next != lines.end() && *next == text ? 1 : 0;
        }
        return next == lines.end();
    }

    /// Runs each command on the copy and then on the original.
    void Compare(LayoutCopy& copy, IControlActionTarget& target, std::vector<Command> const& commands,
                 Layouts const& readOriginal)
    {
        for (Command const& command : commands)
        {
            auto const planned = command.makeParams();
            Refusal const foreseen = RefusalOf([&] { copy.InvokeAction(command.action, *planned); });
            std::vector<std::string> const texts = TextsOf(copy.TakeRefusals());
            ASSERT_EQ(UserLines(), std::vector<std::string>{}) << "a preview writes no line";

            auto const params = command.makeParams();
            ASSERT_EQ(RefusalOf([&] { target.InvokeAction(command.action, *params); }), foreseen) << command.action;
            std::vector<std::string> const lines = UserLines();
            ASSERT_TRUE(HoldsInOrder(texts, lines))
                << command.action << testing::PrintToString(texts) << testing::PrintToString(lines);
            ASSERT_EQ(copy.Read().entries, readOriginal().entries) << command.action;
        }
    }

    ZuTest::RandomDraws draws{20261122};
    ZuTest::LogRecorder log;
};

namespace
{

struct Usage
{
    bool isGlobal;
    uint16 leastId;
    uint16 greatestId;
    uint16 lowest; // of the requested ids
    uint16 highest;
};

Usage const USAGES[] = {{true, 100, 160, 95, 165},
                        {true, 65480, 65534, 65470, 65534},
                        {false, 0, 65534, 0, 30},
                        {false, 0, 65534, 65520, 65534}};

std::unique_ptr<ProtocolRegisterBlockInfo> TypeOf(char const* name, uint16 registers, uint16 least, uint16 most,
                                                  bool hasDataSource = false)
{
    auto params = hasDataSource ? ZuTest::TypeParams<ProtocolScanOutputRegisterBlock>(name, registers)
                                : ZuTest::TypeParams<>(name, registers);
    params.minInstanceCount = least;
    params.maxInstanceCount = most;
    params.hasDataSource = hasDataSource;
    return std::make_unique<ProtocolRegisterBlockInfo>(params);
}

} // namespace

class AssemblyPreviewRandomTest : public PreviewRandomTest
{
protected:
    struct Subject
    {
        explicit Subject(Usage const& newUsage)
            : usage(newUsage), assembly(usage.isGlobal, usage.leastId, usage.greatestId)
        {
            assembly.AddSupportedBlockType(TypeOf("Four", 4, 0, 30));
            assembly.AddSupportedBlockType(TypeOf("One", 1, 1, 8));
            assembly.AddSupportedBlockType(TypeOf("None", 0, 0, 2));
            assembly.AddSupportedBlockType(TypeOf("Sourced", 3, 0, 30, true));
            assembly.InitDefaultRegisterBlocksForRegisterAssembly();
        }

        Usage const usage;
        ProtocolRegisterAssemblyBase assembly;
        ProtocolRegisterAssemblyActionTarget target{assembly};
    };

    uint16 SomeId(Usage const& usage)
    {
        return draws.OneIn(8)
                   ? RegisterBlockParams::NO_OUTPUT_ID
                   : static_cast<uint16>(usage.lowest + draws.Below(uint32{usage.highest} - usage.lowest + 1));
    }

    std::string SomeText(char const* start)
    {
        return draws.OneIn(3) ? "" : start + std::to_string(draws.Below(20));
    }

    Command SomeAdd(Usage const& usage)
    {
        struct Block
        {
            std::string type, source, scanner, name;
            uint16 id;
        };
        static char const* const NAMES[] = {"Four", "Four", "One", "Sourced", "Sourced", "None", "", "four"};
        std::vector<Block> blocks;
        for (uint32 i = draws.Below(4); i > 0; --i)
        {
            blocks.push_back({NAMES[draws.Below(8)], SomeText("s"), SomeText("c"), SomeText("n"), SomeId(usage)});
        }
        bool const autoShift = draws.OneIn(2);
        return {"add", [blocks, autoShift] {
                    auto params = std::make_shared<AddBlockParams>();
                    params->autoShift.Set(autoShift);
                    for (Block const& block : blocks)
                    {
                        RegisterBlockParams& added = params->blocks.Add();
                        added.type.Set(block.type);
                        added.dataSource.Set(block.source);
                        added.scannerId.Set(block.scanner);
                        added.displayName.Set(block.name);
                        added.outputId.Set(block.id);
                    }
                    return params;
                }};
    }

    Command SomeRemove(Usage const& usage, Layout const& layout)
    {
        std::vector<uint16> ids;
        for (uint32 i = draws.Below(4); i > 0; --i)
        {
            bool const isKnown = !layout.entries.empty() && !draws.OneIn(3);
            ids.push_back(isKnown ? layout.entries[draws.IndexOf(layout.entries)].outputId : SomeId(usage));
        }
        return {"remove", [ids] {
                    auto params = std::make_shared<RemoveBlockParams>();
                    for (uint16 const id : ids)
                    {
                        params->outputIdList.Add().outputId.Set(id);
                    }
                    return params;
                }};
    }

    Command SomeUpdate(Usage const& usage, Layout const& layout)
    {
        bool const isKnown = !layout.entries.empty() && !draws.OneIn(4);
        uint16 const id = isKnown ? layout.entries[draws.IndexOf(layout.entries)].outputId : SomeId(usage);
        return {"update", [id, newId = SomeId(usage), source = SomeText("s"), scanner = SomeText("c"),
                           name = SomeText("n"), autoShift = draws.OneIn(2)] {
                    auto params = std::make_shared<UpdateBlockParams>();
                    params->outputId.Set(id);
                    params->autoShift.Set(autoShift);
                    params->newParams.outputId.Set(newId);
                    params->newParams.dataSource.Set(source);
                    params->newParams.scannerId.Set(scanner);
                    params->newParams.displayName.Set(name);
                    return params;
                }};
    }

    Command SomeCommand(Usage const& usage, Layout const& layout)
    {
        switch (draws.Below(10))
        {
        case 0:
            return {"compact", [id = SomeId(usage)] {
                        auto params = std::make_shared<CompactBlocksParams>();
                        params->startingOutputId.Set(id);
                        return params;
                    }};
        case 1:
            return {draws.OneIn(5) ? "Add" : "compact", [] { return std::make_shared<CompactBlocksParams>(); }};
        case 2:
        case 3:
        case 4:
            return SomeRemove(usage, layout);
        case 5:
        case 6:
            return SomeUpdate(usage, layout);
        default:
            return SomeAdd(usage);
        }
    }
};

TEST_F(AssemblyPreviewRandomTest, ShowsWhatTheCommandsDo)
{
    for (Usage const& usage : USAGES)
    {
        Subject subject(usage);
        log.Clear();
        for (int i = 0; i < SequencesOf(15'000); ++i)
        {
            auto const copy = subject.target.CopyForPreview();
            Layout const before = copy->Read();
            std::vector<Command> commands;
            for (uint32 j = 1 + draws.Below(3); j > 0; --j)
            {
                commands.push_back(SomeCommand(usage, before));
            }
            Compare(*copy, subject.target, commands, [&] { return ReadLayout(subject.assembly); });
            ASSERT_FALSE(HasFatalFailure()) << "sequence " << i << ", " << draws;
        }
    }
}

/// One kind of output map.
template <typename Item, typename ItemArgs, typename ListArgs>
class OutputMapPreviewRandomTest : public PreviewRandomTest
{
protected:
    using OutputId = typename Item::OutputId;

    struct Values
    {
        OutputId id;
        std::string source;
        uint16 size, offset;
    };

    virtual OutputId SomeId() = 0;

    Values SomeValues(uint32 mostSources = 20)
    {
        std::string source = draws.OneIn(15) ? "" : "source " + std::to_string(draws.Below(mostSources));
        return {SomeId(), source, static_cast<uint16>(draws.Below(7)), static_cast<uint16>(draws.Below(2))};
    }

    static void Fill(Item& item, Values const& values)
    {
        item.outputId.Set(values.id);
        item.source.Set(values.source);
        if constexpr (requires { item.outputSize; })
        {
            item.outputSize.Set(values.size);
            item.dataOffset.Set(values.offset);
        }
    }

    template <typename Args>
    static void SetShift(Args& args, bool autoShift)
    {
        if constexpr (requires { args.autoShift; })
        {
            args.autoShift.Set(autoShift);
        }
    }

    Command SomeCommand()
    {
        uint32 const choice = draws.Below(20);
        bool const autoShift = draws.OneIn(2);
        if (choice == 0)
        {
            return {draws.OneIn(4) ? "removeAll" : "AddAll", [] { return std::make_shared<Zu::Params::Group>(""); }};
        }
        if (choice == 1)
        {
            return {"compactId", [] { return std::make_shared<Zu::Params::Group>(""); }};
        }
        if (choice < 13)
        {
            return {choice < 8 ? "add" : "remove", [values = SomeValues(), autoShift] {
                        auto args = std::make_shared<ItemArgs>();
                        Fill(*args, values);
                        SetShift(*args, autoShift);
                        return args;
                    }};
        }
        std::vector<Values> list;
        for (uint32 i = choice < 16 ? draws.Below(4) : (draws.OneIn(20) ? 1 : 2); i > 0; --i)
        {
            list.push_back(SomeValues());
        }
        return {choice < 16 ? "addAll" : "updateId", [list, autoShift] {
                    auto args = std::make_shared<ListArgs>();
                    for (Values const& values : list)
                    {
                        Fill(args->map.Add(), values);
                    }
                    SetShift(*args, autoShift);
                    return args;
                }};
    }

    void CompareSequences(IProtocolOutput& map, int sequences)
    {
        ProtocolOutputActionTarget target(map);
        auto const read = [&map] {
            map.BeginLock();
            Layout layout = ReadLayout(map.OutputMap());
            map.EndLock();
            return layout;
        };
        for (int i = 0; i < SequencesOf(sequences); ++i)
        {
            std::vector<Command> commands;
            for (uint32 j = 1 + draws.Below(3); j > 0; --j)
            {
                commands.push_back(SomeCommand());
            }
            auto const copy = target.CopyForPreview();
            Compare(*copy, target, commands, read);
            ASSERT_FALSE(HasFatalFailure()) << "sequence " << i << ", " << draws;
        }
    }
};

class NumbersPreviewRandomTest
    : public OutputMapPreviewRandomTest<StandardOutputItem, StandardOutputItemArgs, StandardOutputsArgs>
{
protected:
    uint16 SomeId() override
    {
        return static_cast<uint16>(draws.OneIn(6) ? 65529 + draws.Below(7) : draws.Below(20));
    }
};

TEST_F(NumbersPreviewRandomTest, ShowsWhatTheCommandsDo)
{
    StandardProtocolOutputMap map(12, 0, 65534);
    CompareSequences(map, 14'000);
}

class RegistersPreviewRandomTest
    : public OutputMapPreviewRandomTest<RegisterOutputItem, RegisterOutputItemArgs, RegisterOutputsArgs>
{
protected:
    uint16 SomeId() override
    {
        return draws.OneIn(30) ? RegisterOutputItem::DEFAULT_OUTPUT_ID : static_cast<uint16>(98 + draws.Below(44));
    }
};

TEST_F(RegistersPreviewRandomTest, ShowsWhatTheCommandsDo)
{
    RegisterProtocolOutputMap map(100, 40, 2, 12);
    CompareSequences(map, 11'000);
    map.SetStartAddress(104); // the preview has the moved space, and the place where a compaction begins
    CompareSequences(map, 3'000);
    RegisterProtocolOutputMap withoutSize(100, 40, 0, 12);
    CompareSequences(withoutSize, 1'000);
}

class TextsPreviewRandomTest : public OutputMapPreviewRandomTest<TextIdStandardOutputItem, TextIdStandardOutputItemArgs,
                                                                 TextIdStandardOutputsArgs>
{
protected:
    std::string SomeId() override
    {
        return draws.OneIn(10) ? "" : std::string(1 + draws.Below(2), static_cast<char>('a' + draws.Below(8)));
    }
};

TEST_F(TextsPreviewRandomTest, ShowsWhatTheCommandsDo)
{
    TextIdStandardProtocolOutputMap map(12);
    CompareSequences(map, 11'000);
}

} // namespace ZuControl::ControlProtocol
