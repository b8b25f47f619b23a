#pragma once

#include "WalkedOutputMap.h"

namespace ZuTest
{

/// The reference model of a map with plain numbers as output ids.
class WalkedNumbers : public WalkedOutputMap<uint16>
{
public:
    static constexpr uint16 NO_ID = 65535;

    explicit WalkedNumbers(std::size_t mostItems) : WalkedOutputMap(NO_ID, mostItems)
    {
    }

    void AddAll(std::vector<Item>& list) override
    {
        std::string const label = Label("NumericIdProtocolOutputBase::AddAll");
        // No id follows the invalid id, which a shift may have produced.
        uint16 nextId = items.empty() ? 0 : static_cast<uint16>(std::min(items.back().id + 1, int{NO_ID}));
        int32 status = 1;
        for (Item& entry : list)
        {
            RefuseMore(entry);
            entry.id = nextId;
            std::string const start = "Data source " + entry.source;
            if (entry.source.empty())
            {
                SayError(label, start + " in the list of sources to add is invalid. Please correct the data source and "
                                        "try again.");
                status = -997;
            }
            else if (entry.id == NO_ID)
            {
                SayError(label, start + " in the list of sources to add has invalid output identifier (65535). Please "
                                        "correct the output id and try again.");
                status = -997;
            }
            else if (HasSource(entry.source))
            {
                lines.push_back(UserWarning(start + " already exists."));
                lines.push_back(Warning(label, start + " already exists"));
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
        UpdateAsEveryKind(pair, autoShift, false);
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
        Insert(index, item);
        std::size_t i = index + 1;
        do
        {
            ++items.at(i).id;
            ++i;
        } while (i < items.size() && items[i - 1].id == items[i].id);
    }
};

} // namespace ZuTest
