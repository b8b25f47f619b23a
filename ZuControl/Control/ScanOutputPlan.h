#pragma once

#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <map>
#include <span>
#include <string>
#include <vector>

namespace ZuControl
{

/// The data sources that one protocol wants, by their numeric ids. It does not change once it is shared, and any thread
/// may read it.
///
/// The fan-out does not search this map for each item, but a plan of all maps together; see ScanOutputPlan.
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
        return texts.contains(numericId);
    }

    Texts const& AllTexts() const
    {
        return texts;
    }

    /// The text id of a numeric id; null for an id that is not wanted.
    std::string const* Text(uint64 numericId) const;

private:
    Texts const texts{};
};

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
