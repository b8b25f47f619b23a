#pragma once

#include "Support/RecordingSink.h"
#include "Support/Refusal.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace ZuTest
{

/// An item of an output map of any kind. Only items of register maps use size, offset and length.
template <typename Id>
struct WalkedItem
{
    Id id{};
    std::string source;
    uint16 size = 0;
    uint16 offset = 0;
    uint16 length = 0;

    bool operator==(WalkedItem const&) const = default;
};

/// The reference model of an output map: a plain list of items that is searched from the start for every operation.
///
/// A refused operation throws a `Refusal`; its log lines are appended to `lines`.
template <typename Id>
class WalkedOutputMap
{
public:
    using Item = WalkedItem<Id>;

    virtual ~WalkedOutputMap() = default;

    WalkedOutputMap(WalkedOutputMap const&) = delete;
    WalkedOutputMap& operator=(WalkedOutputMap const&) = delete;

    virtual void Add(Item const& item, bool autoShift)
    {
        AddAsEveryKind(item, autoShift);
    }

    virtual void AddAll(std::vector<Item>& list) = 0;
    virtual void Compact() = 0;

    /// `pair` is the list of the argument, which should have two items.
    virtual void Update(std::vector<Item>& pair, bool autoShift) = 0;

    void Remove(Item const& item)
    {
        if (item.id == noId)
        {
            throw Refusal{-997, ""};
        }
        std::size_t const index = Search(item.id);
        if (!HasIdAt(index, item.id))
        {
            throw Refusal{-999, ""};
        }
        Erase(index);
    }

    Item const& At(std::size_t index) const
    {
        if (index > items.size())
        {
            throw Refusal{-997, ""};
        }
        if (index == items.size())
        {
            throw Refusal{-999, ""};
        }
        return items[index];
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
        return std::any_of(items.begin(), items.end(), [&source](Item const& item) { return item.source == source; });
    }

    std::vector<std::string> Sources() const
    {
        std::vector<std::string> sources;
        for (Item const& item : items)
        {
            sources.push_back(item.source);
        }
        return sources;
    }

    virtual unsigned OverlappingState(Item const& item) const
    {
        return HasIdAt(Search(item.id), item.id) ? 1 : 0;
    }

    std::vector<Item> items;
    std::vector<LogLine> lines;

protected:
    static constexpr char const* NOT_ALL =
        "One or more sources could not be added to the connection map. Logs may have additional information.";

    WalkedOutputMap(Id noneGiven, std::size_t mostItems) : noId(std::move(noneGiven)), maxCount(mostItems)
    {
    }

    virtual bool IsComplete(Item const& item) const
    {
        return item.id != noId && !item.source.empty();
    }

    virtual bool CanShift() const = 0;
    virtual bool HasRoomBehind(Id const& id) const = 0;
    virtual void OverlapInsert(std::size_t index, Item const& item) = 0;

    void AddAsEveryKind(Item const& item, bool autoShift)
    {
        std::string const label = Label("ProtocolOutputBase::Add_Helper");
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
        RefuseKnownSource(label, item);
        if (OverlappingState(item) != 1)
        {
            Insert(index, item);
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

    void UpdateAsEveryKind(std::vector<Item>& pair, bool autoShift, bool checkTarget)
    {
        CheckPair(pair);
        Id const oldId = pair[0].id;
        Id const newId = pair[1].id;
        if (oldId == newId)
        {
            return;
        }
        if (checkTarget && HasIdAt(Search(newId), newId))
        {
            throw Refusal{-980, ""};
        }
        std::size_t const index = Search(oldId);
        if (!HasIdAt(index, oldId))
        {
            throw Refusal{-999, ""};
        }
        pair[1] = items[index];
        pair[1].id = newId;
        if (OverlappingState(pair[1]) == 1 && CanShift() && !(autoShift && HasRoomBehind(newId)))
        {
            RefuseNewId(pair[1].source);
        }
        Erase(index);
        AddAsEveryKind(pair[1], autoShift);
    }

    void RefuseKnownSource(std::string const& label, Item const& item)
    {
        if (HasSource(item.source))
        {
            SayWarning(label, "Data source " + item.source + " already exists");
            throw Refusal{-987, ""};
        }
    }

    void RefuseMore(Item const& entry) const
    {
        if (items.size() == maxCount)
        {
            throw Refusal{-977, "Connection map is full. All data source(s) from " + entry.source + " are not added."};
        }
    }

    void Insert(std::size_t index, Item const& item)
    {
        if (items.size() == maxCount)
        {
            throw Refusal{-977, ""};
        }
        items.insert(items.begin() + static_cast<std::ptrdiff_t>(index), item);
    }

    bool HasIdAt(std::size_t index, Id const& id) const
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

    static std::string Label(char const* operation)
    {
        return std::string("ZuControl::ControlProtocol::") + operation;
    }

    Id const noId;
    std::size_t const maxCount;

private:
    void CheckPair(std::vector<Item> const& pair)
    {
        if (pair.size() != 2)
        {
            throw Refusal{-997, "There should be exactly 2 output id entries but there are " +
                                    std::to_string(pair.size()) +
                                    ". The first output id should contain the original id to change from and the "
                                    "second output id should contain the new id to change to."};
        }
        if (pair[0].id == noId || pair[1].id == noId)
        {
            lines.push_back(UserError("Output id is invalid."));
            throw Refusal{-997, "Output id is invalid."};
        }
    }

    void RefuseNewId(std::string const& source)
    {
        std::string const start = "Unable to update output id for data source ";
        std::string const rest = ". The specified address would cause the selected source to overlap addresses used by "
                                 "an existing data source.";
        std::string const bracketed = start + "[" + source + "]" + rest;
        lines.push_back(UserError(start + source + rest));
        lines.push_back(Error(Label("ProtocolOutputBase::UpdateId_Helper"), bracketed));
        throw Refusal{-997, bracketed};
    }

    void Erase(std::size_t index)
    {
        items.erase(items.begin() + static_cast<std::ptrdiff_t>(index));
    }
};

} // namespace ZuTest
