#pragma once

#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <span>
#include <vector>

namespace ZuControl
{

class ScanOutputMap;

/// Tells which of several receivers want a data source: a flat table of the numeric ids in all their maps, so that one
/// look-up serves all receivers. It does not change after construction.
class ZUCONTROL_INTERNAL_API ScanOutputPlan final
{
public:
    using Receivers = uint64; ///< one bit for each receiver

    static constexpr uint64 MAX_RECEIVERS = 64;

    /// `wanted` are the maps of the receivers, at most MAX_RECEIVERS; bit i stands for the i-th. The plan keeps no
    /// reference to them.
    explicit ScanOutputPlan(std::span<ScanOutputMap const* const> wanted);
    ~ScanOutputPlan();

    ScanOutputPlan(ScanOutputPlan const&) = delete;
    ScanOutputPlan& operator=(ScanOutputPlan const&) = delete;
    ScanOutputPlan(ScanOutputPlan&&) noexcept = default;
    ScanOutputPlan& operator=(ScanOutputPlan&&) noexcept = default;

    Receivers Wanting(uint64 numericId) const
    {
        for (uint64 slot = SlotOf(numericId);; slot = (slot + 1) & mask)
        {
            Entry const& entry = table[slot];
            if (entry.numericId == numericId || entry.receivers == 0)
            {
                return entry.receivers;
            }
        }
    }

private:
    /// A free entry has no receivers; its id has no meaning.
    struct Entry
    {
        uint64 numericId = 0;
        Receivers receivers = 0;
    };

    uint64 SlotOf(uint64 numericId) const
    {
        return (numericId ^ (numericId >> 32)) & mask;
    }

    void Enter(uint64 numericId, Receivers receiver);

    std::vector<Entry> table; // open addressing, at most half full, so that every search ends
    uint64 mask = 0;
};

} // namespace ZuControl
