#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "ZuControl/ControlProtocol/RegisterProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace ZuControl::ControlProtocol
{

using ZuTest::Error;
using ZuTest::LogLine;
using ZuTest::Refusal;
using ZuTest::RefusalOf;
using ZuTest::UserError;
using ZuTest::UserWarning;
using ZuTest::Warning;

namespace
{

// A million operations over the three kinds where they are fast; enough to meet every case where they are not.
#ifdef NDEBUG
constexpr int OPERATIONS = 350'000;
#else
constexpr int OPERATIONS = 20'000;
#endif

constexpr std::size_t MOST_ITEMS = 24;
constexpr uint16 NO_ID = 65535;
std::string const SPACE = "ZuControl::ControlProtocol::";
std::string const NOT_ALL =
    "One or more sources could not be added to the connection map. Logs may have additional information.";

template <typename Id>
struct WalkedItem
{
    Id id{};
    std::string source;
    uint16 size = 0;

    bool operator==(WalkedItem const&) const = default;
};

/// The same map without any index: sources are found by walking along the list. It throws a Refusal.
template <typename Id>
class WalkedMap
{
public:
    using Item = WalkedItem<Id>;

    virtual ~WalkedMap() = default;

    virtual void Add(Item const& item, bool autoShift)
    {
        BaseAdd(item, autoShift);
    }

    virtual void AddAll(std::vector<Item>& list) = 0;
    virtual void Compact() = 0;
    virtual void Update(std::vector<Item>& pair, bool autoShift) = 0;

    void Remove(Id const& id)
    {
        if (id == noId)
        {
            throw Refusal{-997, ""};
        }
        std::size_t const index = Search(id);
        if (!IsAt(index, id))
        {
            throw Refusal{-999, ""};
        }
        items.erase(items.begin() + static_cast<std::ptrdiff_t>(index));
    }

    std::size_t Search(Id const& id) const
    {
        if (items.empty())
        {
            return 0;
        }
        std::size_t low = 0;
        std::size_t high = items.size() - 1;
        while (low <= high)
        {
            std::size_t const middle = (low + high) >> 1;
            if (id > items[middle].id)
            {
                low = middle + 1;
            }
            else if (id == items[middle].id)
            {
                return middle;
            }
            else if (middle == 0)
            {
                break;
            }
            else
            {
                high = middle - 1;
            }
        }
        return low;
    }

    bool HasSource(std::string const& source) const
    {
        return std::ranges::any_of(items, [&source](Item const& item) { return item.source == source; });
    }

    std::vector<Item> items;
    std::vector<LogLine> lines; // of the present operation

protected:
    explicit WalkedMap(Id noneGiven) : noId(std::move(noneGiven))
    {
    }

    virtual unsigned State(Item const& item) const
    {
        return IsAt(Search(item.id), item.id) ? 1 : 0;
    }

    virtual bool IsComplete(Item const& item) const
    {
        return item.id != noId && !item.source.empty();
    }

    virtual bool CanShift() const = 0;
    virtual bool HasRoomBehind(Id const& id) const = 0;
    virtual void OverlapInsert(std::size_t index, Item const& item) = 0;

    void BaseAdd(Item const& item, bool autoShift)
    {
        std::string const label = SPACE + "ProtocolOutputBase::Add_Helper";
        if (!IsComplete(item))
        {
            SayError(label, "Data source " + item.source + " is invalid");
            throw Refusal{-997, ""};
        }
        std::size_t const index = Search(item.id);
        if (index < items.size() && items[index] == item)
        {
            return;
        }
        if (HasSource(item.source))
        {
            SayWarning(label, "Data source " + item.source + " already exists");
            throw Refusal{-987, ""};
        }
        if (State(item) != 1)
        {
            BaseInsert(index, item);
            return;
        }
        if (!CanShift() || autoShift)
        {
            OverlapInsert(index, item);
            return;
        }
        SayError(label, "Unable to add data source " + item.source +
                            ". The specified address would cause the selected source to overlap addresses used by an "
                            "existing data source.");
        throw Refusal{-997, ""};
    }

    void BaseUpdate(std::vector<Item>& pair, bool autoShift, bool checkTarget)
    {
        Id const oldId = pair[0].id;
        Id const newId = pair[1].id;
        if (oldId == noId || newId == noId)
        {
            lines.push_back(UserError("Output id is invalid."));
            throw Refusal{-997, "Output id is invalid."};
        }
        if (oldId == newId)
        {
            return;
        }
        if (checkTarget && IsAt(Search(newId), newId))
        {
            throw Refusal{-980, ""};
        }
        std::size_t const index = Search(oldId);
        if (!IsAt(index, oldId))
        {
            throw Refusal{-999, ""};
        }
        pair[1] = items[index];
        pair[1].id = newId;
        if (State(pair[1]) == 1 && CanShift() && !(autoShift && HasRoomBehind(newId)))
        {
            std::string const rest =
                ". The specified address would cause the selected source to overlap addresses used "
                "by an existing data source.";
            std::string const start = "Unable to update output id for data source ";
            std::string const bracketed = start + "[" + pair[1].source + "]" + rest;
            lines.push_back(UserError(start + pair[1].source + rest));
            lines.push_back(Error(SPACE + "ProtocolOutputBase::UpdateId_Helper", bracketed));
            throw Refusal{-997, bracketed};
        }
        items.erase(items.begin() + static_cast<std::ptrdiff_t>(index));
        BaseAdd(pair[1], autoShift);
    }

    void BaseInsert(std::size_t index, Item const& item)
    {
        if (items.size() == MOST_ITEMS)
        {
            throw Refusal{-977, ""};
        }
        items.insert(items.begin() + static_cast<std::ptrdiff_t>(index), item);
    }

    bool IsAt(std::size_t index, Id const& id) const
    {
        return index < items.size() && items[index].id == id;
    }

    void SayError(std::string const& label, std::string const& text)
    {
        lines.push_back(UserError(text));
        lines.push_back(Error(label, text));
    }

    void SayWarning(std::string const& label, std::string const& text)
    {
        lines.push_back(UserWarning(text));
        lines.push_back(Warning(label, text));
    }

    Id const noId;
};

class WalkedNumbers : public WalkedMap<uint16>
{
public:
    WalkedNumbers() : WalkedMap(NO_ID)
    {
    }

    void AddAll(std::vector<Item>& list) override
    {
        std::string const label = SPACE + "NumericIdProtocolOutputBase::AddAll";
        uint32 nextId = items.empty() ? 0 : std::min(items.back().id + 1u, uint32{NO_ID});
        int32 status = 1;
        for (Item& entry : list)
        {
            if (items.size() >= MOST_ITEMS)
            {
                throw Refusal{-977,
                              "Connection map is full. All data source(s) from " + entry.source + " are not added."};
            }
            entry.id = static_cast<uint16>(nextId);
            if (entry.source.empty())
            {
                SayError(label,
                         "Data source  in the list of sources to add is invalid. Please correct the data source and "
                         "try again.");
                status = -997;
            }
            else if (entry.id == NO_ID)
            {
                SayError(label,
                         "Data source " + entry.source +
                             " in the list of sources to add has invalid output identifier (65535). Please correct "
                             "the output id and try again.");
                status = -997;
            }
            else if (HasSource(entry.source))
            {
                lines.push_back(UserWarning("Data source " + entry.source + " already exists."));
                lines.push_back(Warning(label, "Data source " + entry.source + " already exists"));
                status = -987;
            }
            else
            {
                items.push_back(entry);
                ++nextId;
            }
        }
        if (status != 1)
        {
            throw Refusal{status, NOT_ALL};
        }
    }

    void Compact() override
    {
        uint16 nextId = 0;
        for (Item& item : items)
        {
            item.id = nextId++;
        }
    }

    void Update(std::vector<Item>& pair, bool autoShift) override
    {
        BaseUpdate(pair, autoShift, false);
    }

protected:
    bool CanShift() const override
    {
        return true;
    }

    bool HasRoomBehind(uint16 const& id) const override
    {
        return id + 1 < NO_ID;
    }

    void OverlapInsert(std::size_t index, Item const& item) override
    {
        BaseInsert(index, item);
        std::size_t i = index + 1;
        do
        {
            ++items.at(i).id;
            ++i;
        } while (i < items.size() && items[i - 1].id == items[i].id);
    }
};

class WalkedRegisters final : public WalkedNumbers
{
public:
    static constexpr uint32 START = 100;
    static constexpr uint32 REGISTERS = 60;

    void Add(Item const& item, bool autoShift) override
    {
        if (!IsComplete(item))
        {
            throw Refusal{-997, ""};
        }
        CheckAddress(item.id);
        std::size_t index = Search(item.id);
        if (index < items.size() && items[index] == item)
        {
            return;
        }
        std::string const label = SPACE + "RegisterProtocolOutputMap::Add_Helper";
        if (HasSource(item.source))
        {
            SayWarning(label, "Data source " + item.source + " already exists");
            throw Refusal{-987, ""};
        }
        unsigned const state = State(item);
        if (state != 0 && !autoShift)
        {
            std::string const text =
                "Unable to add connection source " + item.source +
                ". The specified address would cause the selected source to overlap addresses used "
                "by an existing connection.";
            SayWarning(label, text);
            throw Refusal{-997, text};
        }
        index -= (state & 2) != 0 ? 1 : 0;
        if ((state & 1) != 0)
        {
            OverlapInsert(index, item);
        }
        else
        {
            Insert(index, item);
        }
    }

    void AddAll(std::vector<Item>& list) override
    {
        std::string const label = SPACE + "RegisterProtocolOutputMap::AddAll";
        uint32 next = items.empty() ? START : items.back().id + Registers(items.back());
        int32 status = 1;
        for (Item& entry : list)
        {
            if (items.size() >= MOST_ITEMS)
            {
                throw Refusal{-977,
                              "Connection map is full. All data source(s) from " + entry.source + " are not added."};
            }
            if (entry.source.empty())
            {
                SayError(label,
                         "Data source  in the list of sources to add is invalid. Please correct the data source and "
                         "try again.");
                status = -997;
            }
            else if (HasSource(entry.source))
            {
                SayWarning(label, "Data source " + entry.source + " already exists");
                status = -987;
            }
            else
            {
                entry.id = static_cast<uint16>(next);
                items.push_back(entry);
                next += Registers(entry);
            }
        }
        if (status != 1)
        {
            throw Refusal{status, NOT_ALL};
        }
    }

    void Compact() override
    {
        uint32 next = START;
        for (Item& item : items)
        {
            item.id = static_cast<uint16>(next);
            next = (item.id + Registers(item)) & 0xFFFF;
        }
    }

    void Update(std::vector<Item>& pair, bool autoShift) override
    {
        CheckAddress(pair[1].id);
        BaseUpdate(pair, autoShift, false);
    }

private:
    static uint32 Registers(Item const& item)
    {
        return (item.size + 1u) / 2; // of two bytes each
    }

    static void CheckAddress(uint32 address)
    {
        if (address < START || address >= START + REGISTERS)
        {
            throw Refusal{-997, "The new entry's address " + std::to_string(address) +
                                    " is not within the range [100 : 160]"};
        }
    }

    bool IsComplete(Item const& item) const override
    {
        return WalkedNumbers::IsComplete(item) && item.size != 0;
    }

    unsigned State(Item const& item) const override
    {
        std::size_t const index = Search(item.id);
        if (index == items.size())
        {
            return 0;
        }
        unsigned state = 0;
        if (index > 0 && item.id >= items[index - 1].id + items[index - 1].size)
        {
            state |= 2;
        }
        if (items[index].id < item.id + Registers(item))
        {
            state |= 1;
        }
        return state;
    }

    void Insert(std::size_t index, Item const& item)
    {
        uint32 const free = (REGISTERS - item.id + START) & 0xFFFF;
        uint32 needed = 0;
        for (std::size_t i = index; i < items.size(); ++i)
        {
            needed = (needed + Registers(item)) & 0xFFFF;
        }
        if (Registers(item) + needed > free)
        {
            throw Refusal{-977, ""};
        }
        BaseInsert(index, item);
    }

    void OverlapInsert(std::size_t index, Item const& item) override
    {
        Insert(index, item);
        std::size_t i = index;
        do
        {
            items.at(i + 1).id = static_cast<uint16>(items[i].id + Registers(items[i]));
            ++i;
        } while (i + 1 < items.size() && items[i + 1].id <= items[i].id + Registers(items[i]));
    }
};

class WalkedTexts final : public WalkedMap<std::string>
{
public:
    WalkedTexts() : WalkedMap("")
    {
    }

    void AddAll(std::vector<Item>& list) override
    {
        int32 status = 1;
        for (Item& entry : list)
        {
            entry.id = entry.id.empty() ? entry.source : entry.id;
            try
            {
                BaseAdd(entry, false);
            }
            catch (Refusal const& refusal)
            {
                lines.push_back(Error(SPACE + "TextIdStandardProtocolOutputMap::AddAll",
                                      "Error adding data source <" + entry.source + ">"));
                status = status == 1 ? refusal.status : status;
            }
        }
        if (status != 1)
        {
            throw Refusal{status, NOT_ALL};
        }
    }

    void Compact() override
    {
    }

    void Update(std::vector<Item>& pair, bool) override
    {
        BaseUpdate(pair, false, true);
    }

private:
    bool CanShift() const override
    {
        return false;
    }

    bool HasRoomBehind(std::string const&) const override
    {
        return false;
    }

    void OverlapInsert(std::size_t, Item const&) override
    {
        throw Refusal{-996, "Overlap of output id not supported"};
    }
};

template <typename Action>
Refusal WalkedRefusal(Action&& action)
{
    try
    {
        action();
    }
    catch (Refusal const& refusal)
    {
        return refusal;
    }
    return {1, ""};
}

/// What differs between the kinds for one who uses them.
struct NumberKind
{
    using Map = StandardProtocolOutputMap;
    using Walked = WalkedNumbers;
    using Record = StandardOutputs;
    using Item = StandardOutputItem;
    using ItemArgs = StandardOutputItemArgs;
    using List = StandardOutputsArgs;
    using Id = uint16;

    static std::unique_ptr<Map> Make()
    {
        return std::make_unique<Map>(uint16{MOST_ITEMS}, uint16{0}, uint16{65534});
    }

    static Id MakeId(uint32 number)
    {
        // Two clusters, one of them at the end of all ids.
        return static_cast<uint16>(number < 40 ? number : number < 46 ? 65529 + number - 40 : NO_ID);
    }
};

struct RegisterKind
{
    using Map = RegisterProtocolOutputMap;
    using Walked = WalkedRegisters;
    using Record = RegisterOutputs;
    using Item = RegisterOutputItem;
    using ItemArgs = RegisterOutputItemArgs;
    using List = RegisterOutputsArgs;
    using Id = uint16;

    static std::unique_ptr<Map> Make()
    {
        return std::make_unique<Map>(uint16{100}, uint16{60}, uint16{2}, uint16{MOST_ITEMS});
    }

    static Id MakeId(uint32 number)
    {
        return static_cast<uint16>(number < 47 ? 98 + number * 64 / 47 : NO_ID);
    }
};

struct TextKind
{
    using Map = TextIdStandardProtocolOutputMap;
    using Walked = WalkedTexts;
    using Record = TextIdStandardOutputs;
    using Item = TextIdStandardOutputItem;
    using ItemArgs = TextIdStandardOutputItemArgs;
    using List = TextIdStandardOutputsArgs;
    using Id = std::string;

    static std::unique_ptr<Map> Make()
    {
        return std::make_unique<Map>(uint16{MOST_ITEMS});
    }

    static Id MakeId(uint32 number)
    {
        std::string const letters = "aAbB\xC3";
        std::string id;
        for (; number > 0; number /= 5)
        {
            id += letters[number % 5];
        }
        return id;
    }
};

template <typename Args>
void SetShift(Args& args, bool autoShift)
{
    if constexpr (requires { args.autoShift; })
    {
        args.autoShift.Set(autoShift);
    }
}

} // namespace

template <typename Kind>
class ProtocolOutputBaseRandomTest : public testing::Test
{
protected:
    using Walked = WalkedItem<typename Kind::Id>;

    uint32 Below(uint32 limit)
    {
        return static_cast<uint32>(random() % limit);
    }

    typename Kind::Id SomeId()
    {
        if (Below(2) == 0 && !walked.items.empty())
        {
            return walked.items[Below(static_cast<uint32>(walked.items.size()))].id;
        }
        return Kind::MakeId(Below(48));
    }

    Walked SomeItem()
    {
        if (Below(16) == 0 && !walked.items.empty())
        {
            return walked.items[Below(static_cast<uint32>(walked.items.size()))];
        }
        uint32 const source = Below(41);
        uint16 size = 0;
        if constexpr (requires(typename Kind::Item item) { item.outputSize; })
        {
            size = static_cast<uint16>(Below(7));
        }
        return {SomeId(), source == 0 ? "" : "source " + std::to_string(source), size};
    }

    static void Fill(typename Kind::Item& item, Walked const& from)
    {
        item.outputId.Set(from.id);
        item.source.Set(from.source);
        if constexpr (requires { item.outputSize; })
        {
            item.outputSize.Set(from.size);
        }
    }

    static Walked ReadBack(typename Kind::Item const& item)
    {
        Walked read{item.outputId.Get(), item.source.Get(), 0};
        if constexpr (requires { item.outputSize; })
        {
            read.size = item.outputSize.Get();
        }
        return read;
    }

    void AddOne()
    {
        Walked const item = SomeItem();
        bool const autoShift = Below(2) == 0;
        typename Kind::ItemArgs args;
        Fill(args, item);
        SetShift(args, autoShift);
        Compare(WalkedRefusal([&] { walked.Add(item, autoShift); }), RefusalOf([&] { map->Add(args); }));
    }

    void AddSome()
    {
        typename Kind::List args;
        std::vector<Walked> list;
        for (uint32 i = Below(4); i > 0; --i)
        {
            list.push_back(SomeItem());
            Fill(args.map.Add(), list.back());
        }
        Compare(WalkedRefusal([&] { walked.AddAll(list); }), RefusalOf([&] { map->AddAll(args); }));
        CompareArguments(list, args);
    }

    void RemoveOne()
    {
        typename Kind::ItemArgs args;
        Walked item{SomeId(), "", 0};
        Fill(args, item);
        Compare(WalkedRefusal([&] { walked.Remove(item.id); }), RefusalOf([&] { map->Remove(args); }));
    }

    void UpdateOne()
    {
        typename Kind::List args;
        std::vector<Walked> pair{{SomeId(), "", 0}, {SomeId(), "", 0}};
        bool const autoShift = Below(2) == 0;
        Fill(args.map.Add(), pair[0]);
        Fill(args.map.Add(), pair[1]);
        SetShift(args, autoShift);
        Compare(WalkedRefusal([&] { walked.Update(pair, autoShift); }), RefusalOf([&] { map->UpdateId(args); }));
        CompareArguments(pair, args);
    }

    void CompactAll()
    {
        walked.Compact();
        map->CompactId();
    }

    void ClearAll()
    {
        walked.items.clear();
        map->Clear();
    }

    void Compare(Refusal const& expected, Refusal const& refusal)
    {
        ASSERT_EQ(refusal, expected);
        ASSERT_EQ(log.LinesWithoutTraces(), walked.lines);
        if (!walked.lines.empty())
        {
            log.Clear();
            walked.lines.clear();
        }
    }

    void CompareArguments(std::vector<Walked> const& expected, typename Kind::List const& args)
    {
        for (std::size_t i = 0; i < expected.size(); ++i)
        {
            ASSERT_EQ(ReadBack(args.map.At(i)), expected[i]);
        }
    }

    void CompareItems()
    {
        ASSERT_EQ(map->Count(), walked.items.size());
        map->BeginLock();
        auto const& record = dynamic_cast<typename Kind::Record const&>(map->OutputMap());
        for (std::size_t i = 0; i < walked.items.size(); ++i)
        {
            ASSERT_EQ(ReadBack(record.map.At(i)), walked.items[i]) << "at " << i;
        }
        map->EndLock();
    }

    void CompareSearches()
    {
        typename Kind::Item item;
        Walked const asked = SomeItem();
        Fill(item, asked);
        ASSERT_EQ(map->BSearchForInsert(item), walked.Search(asked.id));
        ASSERT_EQ(map->IsDuplicateDataSource(item), walked.HasSource(asked.source));
    }

    std::mt19937 random{20261121};
    ZuTest::LogRecorder log;
    typename Kind::Walked walked;
    std::unique_ptr<typename Kind::Map> map = Kind::Make();
};

using EveryKind = testing::Types<NumberKind, RegisterKind, TextKind>;
TYPED_TEST_SUITE(ProtocolOutputBaseRandomTest, EveryKind);

TYPED_TEST(ProtocolOutputBaseRandomTest, AnswersAsAWalkAlongTheListDoes)
{
    for (int i = 0; i < OPERATIONS && !this->HasFatalFailure(); ++i)
    {
        SCOPED_TRACE(i);
        uint32 const choice = this->Below(1000);
        if (choice < 450)
        {
            this->AddOne();
        }
        else if (choice < 550)
        {
            this->AddSome();
        }
        else if (choice < 770)
        {
            this->RemoveOne();
        }
        else if (choice < 985)
        {
            this->UpdateOne();
        }
        else if (choice < 995)
        {
            this->CompactAll();
        }
        else
        {
            this->ClearAll();
        }
        this->CompareItems();
        this->CompareSearches();
    }
}

} // namespace ZuControl::ControlProtocol
