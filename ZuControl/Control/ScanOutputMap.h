#pragma once

#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <map>
#include <string>
#include <vector>

namespace ZuControl
{

/// The data sources that one protocol wants, by their numeric ids. Never changed once it is shared: any thread may read it.
///
/// Beside the map stands a flat table of the numeric ids alone, which is what the look-up per result item goes through.
class ZUCONTROL_INTERNAL_API ScanOutputMap final
{
public:
    /// Text ids by their numeric ids.
    using Texts = std::map<uint64, std::string>;

    ScanOutputMap();
    explicit ScanOutputMap(Texts wantedTexts);
    ~ScanOutputMap();

    ScanOutputMap(ScanOutputMap const&) = delete;
    ScanOutputMap& operator=(ScanOutputMap const&) = delete;

    /// The 64-bit FNV-1a hash of a data source's text id, as result items carry it.
    static uint64 NumericId(std::string const& dataSourceId);

    bool Empty() const
    {
        return texts.empty();
    }

    uint64 Count() const
    {
        return texts.size();
    }

    bool Contains(uint64 numericId) const
    {
        for (uint64 slot = SlotOf(numericId);; slot = (slot + 1) & mask)
        {
            if (table[slot] == numericId)
            {
                return numericId != FREE_SLOT || hasFreeSlotId;
            }
            if (table[slot] == FREE_SLOT)
            {
                return false;
            }
        }
    }

    /// The text id behind a numeric one; null for one that is not wanted.
    std::string const* Text(uint64 numericId) const;

private:
    static constexpr uint64 FREE_SLOT = 0; // as good an id as any, so that a mark tells whether it is wanted

    uint64 SlotOf(uint64 numericId) const
    {
        return (numericId ^ (numericId >> 32)) & mask;
    }

    void BuildTable();

    Texts const texts;
    std::vector<uint64> table; // open addressing, at most half full, so that every walk ends
    uint64 mask = 0;
    bool hasFreeSlotId = false;
};

} // namespace ZuControl
