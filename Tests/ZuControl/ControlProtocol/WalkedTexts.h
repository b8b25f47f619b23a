#pragma once

#include "WalkedOutputMap.h"

namespace ZuTest
{

/// The reference model of a map with texts as output ids, in the order of their bytes.
class WalkedTexts final : public WalkedOutputMap<std::string>
{
public:
    explicit WalkedTexts(std::size_t mostItems) : WalkedOutputMap("", mostItems)
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
                AddAsEveryKind(entry, false);
            }
            catch (Refusal const& refusal)
            {
                lines.push_back(Error(Label("TextIdStandardProtocolOutputMap::AddAll"),
                                      "Error adding data source <" + entry.source + ">"));
                lines.push_back(CaughtEntry(refusal.status, refusal.text));
                lines.push_back(BackTrace());
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

    void Update(std::vector<Item>& pair, bool /*autoShift*/) override
    {
        UpdateAsEveryKind(pair, false, true);
    }

private:
    bool CanShift() const override
    {
        return false;
    }

    bool HasRoomBehind(std::string const& /*id*/) const override
    {
        return false;
    }

    void OverlapInsert(std::size_t /*index*/, Item const& /*item*/) override
    {
        throw Refusal{-996, "Overlap of output id not supported"};
    }
};

} // namespace ZuTest
