#include "Support/RandomDraws.h"
#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "WalkedRegisters.h"
#include "WalkedTexts.h"
#include "ZuControl/ControlProtocol/RegisterProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"

#include <gtest/gtest.h>

#include <memory>

namespace ZuControl::ControlProtocol
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

/// A map of plain numbers and its model. All kinds of maps together run a million operations.
template <uint16 MOST_ITEMS>
struct NumberKind
{
    using Map = StandardProtocolOutputMap;
    using Walked = ZuTest::WalkedNumbers;
    using Record = StandardOutputs;
    using Item = StandardOutputItem;
    using ItemArgs = StandardOutputItemArgs;
    using List = StandardOutputsArgs;

    static constexpr uint32 SOURCES = MOST_ITEMS * 5 / 3;

    static uint16 MakeId(ZuTest::RandomDraws& draws)
    {
        // Two clusters of ids, one of them at the end of the range, and sometimes the invalid id.
        return static_cast<uint16>(draws.OneIn(6) ? 65529 + draws.Below(7) : draws.Below(MOST_ITEMS * 5 / 3));
    }

    Map map{MOST_ITEMS, 0, 65534};
    Walked walked{MOST_ITEMS};
};

template <uint16 START, uint16 COUNT, uint16 ITEM_SIZE, uint16 MOST_ITEMS>
struct RegisterKind
{
    using Map = RegisterProtocolOutputMap;
    using Walked = ZuTest::WalkedRegisters;
    using Record = RegisterOutputs;
    using Item = RegisterOutputItem;
    using ItemArgs = RegisterOutputItemArgs;
    using List = RegisterOutputsArgs;

    static constexpr uint32 SOURCES = MOST_ITEMS * 5 / 3;

    static uint16 MakeId(ZuTest::RandomDraws& draws)
    {
        // Also some addresses before the register space and behind it; behind it 16 bits may wrap to 0.
        return draws.OneIn(48) ? Walked::NO_ID : static_cast<uint16>(START - 2U + draws.Below(COUNT + 4U));
    }

    Map map{START, COUNT, ITEM_SIZE, MOST_ITEMS};
    Walked walked{START, COUNT, ITEM_SIZE, MOST_ITEMS};
};

template <uint16 MOST_ITEMS>
struct TextKind
{
    using Map = TextIdStandardProtocolOutputMap;
    using Walked = ZuTest::WalkedTexts;
    using Record = TextIdStandardOutputs;
    using Item = TextIdStandardOutputItem;
    using ItemArgs = TextIdStandardOutputItemArgs;
    using List = TextIdStandardOutputsArgs;

    static constexpr uint32 SOURCES = MOST_ITEMS * 5 / 3;

    static std::string MakeId(ZuTest::RandomDraws& draws)
    {
        std::string const letters = "aAbB\xC3";
        std::string id;
        for (uint32 number = draws.Below(2 * MOST_ITEMS); number > 0; number /= 5)
        {
            id += letters[number % 5];
        }
        return id;
    }

    Map map{MOST_ITEMS};
    Walked walked{MOST_ITEMS};
};

struct Numbers : NumberKind<24>
{
    static constexpr char const* NAME = "Numbers";
    static constexpr int OPERATIONS = 950'000;
};

struct ManyNumbers : NumberKind<300>
{
    static constexpr char const* NAME = "ManyNumbers";
    static constexpr int OPERATIONS = 50'000;
};

struct Registers : RegisterKind<100, 60, 2, 24>
{
    static constexpr char const* NAME = "Registers";
    static constexpr int OPERATIONS = 750'000;
};

struct ManyRegisters : RegisterKind<0, 2000, 3, 300>
{
    static constexpr char const* NAME = "ManyRegisters";
    static constexpr int OPERATIONS = 40'000;
};

struct LastRegisters : RegisterKind<65500, 60, 1, 24>
{
    static constexpr char const* NAME = "LastRegisters";
    static constexpr int OPERATIONS = 200'000;
};

struct RegistersWithoutSize : RegisterKind<100, 60, 0, 24>
{
    static constexpr char const* NAME = "RegistersWithoutSize";
    static constexpr int OPERATIONS = 10'000;
};

struct Texts : TextKind<24>
{
    static constexpr char const* NAME = "Texts";
    static constexpr int OPERATIONS = 950'000;
};

struct ManyTexts : TextKind<300>
{
    static constexpr char const* NAME = "ManyTexts";
    static constexpr int OPERATIONS = 50'000;
};

template <typename Item>
constexpr bool IS_SIZED = requires(Item item)
{
    item.outputSize;
};

} // namespace

/// A map and its model. Both get the same calls.
template <typename Kind>
class ProtocolOutputBaseRandomTest : public testing::Test
{
protected:
    using Walked = typename Kind::Walked::Item;
    using Id = decltype(Walked::id);

    Id SomeId()
    {
        return draws.OneIn(2) && !walked.items.empty() ? walked.items[draws.IndexOf(walked.items)].id
                                                       : Kind::MakeId(draws);
    }

    Walked SomeItem()
    {
        if (draws.OneIn(8) && !walked.items.empty())
        {
            return LikeOneThatIsThere();
        }
        uint32 const source = draws.Below(Kind::SOURCES + 1);
        Walked item{SomeId(), source == 0 ? "" : "source " + std::to_string(source)};
        if constexpr (IS_SIZED<typename Kind::Item>)
        {
            item.size = static_cast<uint16>(draws.OneIn(500) ? 65535 - draws.Below(3) : draws.Below(7));
            item.offset = static_cast<uint16>(draws.Below(2));
            item.length = static_cast<uint16>(draws.Below(2));
        }
        return item;
    }

    /// An item that differs in at most one member.
    Walked LikeOneThatIsThere()
    {
        Walked item = walked.items[draws.IndexOf(walked.items)];
        switch (draws.Below(6))
        {
        case 0:
            item.source += '+';
            break;
        case 1:
            item.id = Kind::MakeId(draws);
            break;
        case 2:
            item.size ^= IS_SIZED<typename Kind::Item> ? 1 : 0;
            break;
        case 3:
            item.offset ^= IS_SIZED<typename Kind::Item> ? 1 : 0;
            break;
        case 4:
            item.length ^= IS_SIZED<typename Kind::Item> ? 1 : 0;
            break;
        default:
            break;
        }
        return item;
    }

    static void Fill(typename Kind::Item& item, Walked const& from)
    {
        item.outputId.Set(from.id);
        item.source.Set(from.source);
        if constexpr (IS_SIZED<typename Kind::Item>)
        {
            item.outputSize.Set(from.size);
            item.dataOffset.Set(from.offset);
            item.dataLength.Set(from.length);
        }
    }

    static Walked ReadBack(typename Kind::Item const& item)
    {
        Walked read{item.outputId.Get(), item.source.Get()};
        if constexpr (IS_SIZED<typename Kind::Item>)
        {
            read.size = item.outputSize.Get();
            read.offset = item.dataOffset.Get();
            read.length = item.dataLength.Get();
        }
        return read;
    }

    static bool IsSame(typename Kind::Item const& item, Walked const& expected)
    {
        bool isSame = item.outputId.Get() == expected.id && item.source.Get() == expected.source;
        if constexpr (IS_SIZED<typename Kind::Item>)
        {
            isSame = isSame && item.outputSize.Get() == expected.size && item.dataOffset.Get() == expected.offset &&
                     item.dataLength.Get() == expected.length;
        }
        return isSame;
    }

    template <typename Args>
    static void SetShift(Args& args, bool autoShift)
    {
        if constexpr (requires { args.autoShift; })
        {
            args.autoShift.Set(autoShift);
        }
    }

    void AddOne()
    {
        Walked const item = SomeItem();
        bool const autoShift = draws.OneIn(2);
        typename Kind::ItemArgs args;
        Fill(args, item);
        SetShift(args, autoShift);
        Compare([&] { walked.Add(item, autoShift); }, [&] { map.Add(args); });
        ASSERT_EQ(ReadBack(args), item);
    }

    void AddSome()
    {
        typename Kind::List args;
        std::vector<Walked> list;
        for (uint32 i = draws.Below(5); i > 0; --i)
        {
            list.push_back(SomeItem());
            Fill(args.map.Add(), list.back());
        }
        Compare([&] { walked.AddAll(list); }, [&] { map.AddAll(args); });
        CompareArguments(list, args);
    }

    void RemoveOne()
    {
        Walked item = SomeItem(); // only the id matters
        item.id = SomeId();
        typename Kind::ItemArgs args;
        Fill(args, item);
        Compare([&] { walked.Remove(item); }, [&] { map.Remove(args); });
    }

    void UpdateOne()
    {
        typename Kind::List args;
        std::vector<Walked> list;
        for (uint32 i = draws.OneIn(50) ? draws.Below(4) : 2; i > 0; --i)
        {
            list.push_back(SomeItem());
            Fill(args.map.Add(), list.back());
        }
        bool const autoShift = draws.OneIn(2);
        SetShift(args, autoShift);
        Compare([&] { walked.Update(list, autoShift); }, [&] { map.UpdateId(args); });
        CompareArguments(list, args);
    }

    void CompactAll()
    {
        Compare([&] { walked.Compact(); }, [&] { map.CompactId(); });
    }

    void ClearAll()
    {
        walked.items.clear();
        map.Clear();
    }

    void MoveStart()
    {
        if constexpr (IS_SIZED<typename Kind::Item>)
        {
            uint16 const start = draws.OneIn(2) ? Kind::MakeId(draws) : map.StartAddress();
            walked.SetStart(start);
            map.SetStartAddress(start);
            ASSERT_EQ(map.StartAddress(), walked.Start());
        }
    }

    void Operate()
    {
        uint32 const choice = draws.Below(1000);
        if (choice < 450)
        {
            AddOne();
        }
        else if (choice < 550)
        {
            AddSome();
        }
        else if (choice < 770)
        {
            RemoveOne();
        }
        else if (choice < 980)
        {
            UpdateOne();
        }
        else if (choice < 992)
        {
            CompactAll();
        }
        else if (choice < 996)
        {
            MoveStart();
        }
        else
        {
            ClearAll();
        }
    }

    /// Runs the same operation on both and compares status, text and log lines in their order.
    template <typename WalkedAction, typename Action>
    void Compare(WalkedAction&& expected, Action&& done)
    {
        Refusal expectedRefusal{1, ""};
        try
        {
            expected();
        }
        catch (Refusal const& refusal)
        {
            expectedRefusal = refusal;
        }
        ASSERT_EQ(RefusalOf(done), expectedRefusal);
        ASSERT_EQ(log.LinesWithShortTraces(), walked.lines);
        if (!walked.lines.empty())
        {
            log.Clear();
            walked.lines.clear();
        }
    }

    /// The same for an operation that returns a value unless it is refused.
    template <typename WalkedQuestion, typename Question>
    void CompareAnswers(WalkedQuestion&& expected, Question&& asked)
    {
        decltype(expected()) expectedAnswer{};
        decltype(expected()) answer{};
        Compare([&] { expectedAnswer = expected(); }, [&] { answer = asked(); });
        ASSERT_EQ(answer, expectedAnswer);
    }

    void CompareArguments(std::vector<Walked> const& expected, typename Kind::List const& args)
    {
        ASSERT_EQ(args.map.Count(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i)
        {
            ASSERT_EQ(ReadBack(args.map.At(i)), expected[i]) << "argument " << i;
        }
    }

    void CompareItems()
    {
        ASSERT_EQ(map.Count(), walked.items.size());
        map.BeginLock();
        auto const& record = dynamic_cast<typename Kind::Record const&>(map.OutputMap());
        for (std::size_t i = 0; i < walked.items.size(); ++i)
        {
            typename Kind::Item const& item = record.map.At(i);
            if (!IsSame(item, walked.items[i])) // tested first, so that equal items cost no copy of a text
            {
                ASSERT_EQ(ReadBack(item), walked.items[i]) << "at " << i;
            }
        }
        map.EndLock();
    }

    void CompareQuestions()
    {
        Walked const asked = SomeItem();
        typename Kind::Item item;
        Fill(item, asked);
        ASSERT_EQ(map.BSearchForInsert(item), walked.Search(asked.id));
        ASSERT_EQ(map.IsDuplicateDataSource(item), walked.HasSource(asked.source));
        CompareAnswers([&] { return walked.OverlappingState(asked); }, [&] { return map.GetOverlappingState(item); });
        if (draws.OneIn(8))
        {
            std::size_t const index = draws.Below(static_cast<uint32>(walked.items.size()) + 3);
            CompareAnswers([&] { return walked.At(index); }, [&] { return ReadBack(map.At(index)); });
            ASSERT_EQ(map.DataSourceList(), walked.Sources());
        }
    }

    ZuTest::RandomDraws draws{20261121};
    Kind kind;
    typename Kind::Map& map = kind.map;
    typename Kind::Walked& walked = kind.walked;
    ZuTest::LogRecorder log;
};

struct KindName
{
    template <typename Kind>
    static std::string GetName(int /*index*/)
    {
        return Kind::NAME;
    }
};

using EveryKind = testing::Types<Numbers, ManyNumbers, Registers, ManyRegisters, LastRegisters, RegistersWithoutSize,
                                 Texts, ManyTexts>;
TYPED_TEST_SUITE(ProtocolOutputBaseRandomTest, EveryKind, KindName);

TYPED_TEST(ProtocolOutputBaseRandomTest, AnswersAsAWalkAlongTheListDoes)
{
    int const operations = ZuTest::OperationsOf(TypeParam::OPERATIONS);
    for (int i = 0; i < operations; ++i)
    {
        this->Operate();
        this->CompareItems();
        this->CompareQuestions();
        ASSERT_FALSE(this->HasFatalFailure()) << "operation " << i << ", " << this->draws;
    }
}

} // namespace ZuControl::ControlProtocol
