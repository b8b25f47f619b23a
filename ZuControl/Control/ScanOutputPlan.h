#pragma once

#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <span>
#include <vector>

namespace ZuControl
{

class ScanOutputMap;

/// Which of several receivers want a data source: a flat table of the numeric ids in all their maps, so that one look-up
/// answers for all of them. Never changed once it is made.
class ZUCONTROL_INTERNAL_API ScanOutputPlan final
{
public:
    using Receivers = uint64; ///< a bit for each

    static constexpr uint64 MAX_RECEIVERS = 64;

    /// The receivers' maps, of which nothing is kept: bit i stands for the i-th. At most MAX_RECEIVERS.
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
    /// A free one has no receivers, whatever its id.
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

    std::vector<Entry> table; // open addressing, at most half full, so that every walk ends
    uint64 mask = 0;
};

} // namespace ZuControl
