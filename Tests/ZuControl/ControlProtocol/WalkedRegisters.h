#pragma once

#include "WalkedNumbers.h"

namespace ZuTest
{

/// The reference model of a map with register addresses as output ids.
class WalkedRegisters final : public WalkedNumbers
{
public:
    WalkedRegisters(uint16 firstAddress, uint16 registers, uint16 sizeOfRegister, std::size_t mostItems)
        : WalkedNumbers(mostItems),
          initialStart(firstAddress),
          count(registers),
          itemSize(sizeOfRegister),
          start(firstAddress)
    {
    }

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
        std::string const label = Label("RegisterProtocolOutputMap::Add_Helper");
        RefuseKnownSource(label, item);
        unsigned const state = OverlappingState(item);
        if (state != 0 && !autoShift)
        {
            std::string const text = "Unable to add connection source " + item.source +
                                     ". The specified address would cause the selected source to overlap addresses "
                                     "used by an existing connection.";
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
            InsertWithRoom(index, item);
        }
    }

    void AddAll(std::vector<Item>& list) override
    {
        std::string const label = Label("RegisterProtocolOutputMap::AddAll");
        uint32 next = items.empty() ? initialStart : EndOf(items.back());
        int32 status = 1;
        for (Item& entry : list)
        {
            RefuseMore(entry);
            if (entry.source.empty())
            {
                SayError(label, "Data source  in the list of sources to add is invalid. Please correct the data source "
                                "and try again.");
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
                next += RegistersOf(entry);
            }
        }
        if (status != 1)
        {
            throw Refusal{status, NOT_ALL};
        }
    }

    void Compact() override
    {
        uint32 next = initialStart;
        for (Item& item : items)
        {
            item.id = static_cast<uint16>(next);
            next = EndOf(item);
        }
    }

    void Update(std::vector<Item>& pair, bool autoShift) override
    {
        if (pair.size() != 2)
        {
            throw Refusal{-997, ""};
        }
        CheckAddress(pair[1].id);
        UpdateAsEveryKind(pair, autoShift, false);
    }

    void SetStart(uint16 newStart)
    {
        auto const difference = static_cast<uint16>(newStart - start);
        start = newStart;
        for (Item& item : items)
        {
            item.id = static_cast<uint16>(item.id + difference);
        }
    }

    uint16 Start() const
    {
        return start;
    }

    unsigned OverlappingState(Item const& item) const override
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
        if (items[index].id < EndOf(item))
        {
            state |= 1;
        }
        return state;
    }

private:
    uint32 RegistersOf(Item const& item) const
    {
        if (itemSize == 0)
        {
            throw Refusal{-997, "Register size cannot be zero."};
        }
        return (uint32{item.size} + itemSize - 1) / itemSize;
    }

    uint32 EndOf(Item const& item) const
    {
        return item.id + RegistersOf(item);
    }

    void CheckAddress(uint32 address) const
    {
        uint32 const end = uint32{start} + count;
        if (address < start || address >= end)
        {
            throw Refusal{-997, "The new entry's address " + std::to_string(address) + " is not within the range [" +
                                    std::to_string(start) + " : " + std::to_string(end) + "]"};
        }
    }

    bool IsComplete(Item const& item) const override
    {
        return WalkedNumbers::IsComplete(item) && item.size != 0;
    }

    bool HasGap(std::size_t index, Item const& item) const
    {
        auto const free = static_cast<uint16>(count - item.id + start);
        uint16 needed = 0;
        for (std::size_t i = index; i < items.size(); ++i)
        {
            needed = static_cast<uint16>(needed + RegistersOf(item));
        }
        return RegistersOf(item) + needed <= free;
    }

    void InsertWithRoom(std::size_t index, Item const& item)
    {
        if (items.size() == maxCount || !HasGap(index, item))
        {
            throw Refusal{-977, ""};
        }
        Insert(index, item);
    }

    void OverlapInsert(std::size_t index, Item const& item) override
    {
        InsertWithRoom(index, item);
        std::size_t i = index;
        do
        {
            items.at(i + 1).id = static_cast<uint16>(EndOf(items[i]));
            ++i;
        } while (i + 1 < items.size() && items[i + 1].id <= EndOf(items[i]));
    }

    uint16 const initialStart;
    uint16 const count;
    uint16 const itemSize;
    uint16 start;
};

} // namespace ZuTest
