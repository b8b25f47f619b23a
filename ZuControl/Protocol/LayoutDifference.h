#pragma once

#include "ZuControl/ControlProtocol/Layout.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <optional>
#include <utility>
#include <vector>

namespace ZuControl::Protocol
{

/// The difference between two layouts of one assembly or map: its entries, and what stands at each address.
///
/// Both layouts outlive it. An index is that of an entry in the list of its layout.
class ZUCONTROL_INTERNAL_API LayoutDifference final
{
public:
    using Layout = ControlProtocol::Layout;

    static constexpr uint32 NOWHERE = 0xFFFFFFFF;

    /// An entry that stands in both layouts, by its indexes.
    struct Pair
    {
        uint32 before = NOWHERE;
        uint32 after = NOWHERE;
    };

    /// A run of addresses at which something else stands than before. `NOWHERE` means that the addresses are free.
    struct Run
    {
        uint32 address = 0;
        uint32 count = 0;
        uint32 before = NOWHERE;
        uint32 after = NOWHERE;
    };

    struct Range
    {
        uint32 address = 0;
        uint32 count = 0;
    };

    /// What is taken of the addresses of the second layout.
    struct Use
    {
        std::vector<Range> gaps; ///< free runs with an entry behind them
        uint32 used = 0;         ///< addresses, or ids
        uint32 all = 0;
        std::optional<uint32> firstFree;
    };

    LayoutDifference(Layout const& beforeLayout, Layout const& afterLayout);
    ~LayoutDifference();

    LayoutDifference(LayoutDifference const&) = delete;
    LayoutDifference& operator=(LayoutDifference const&) = delete;

    std::vector<uint32> added;   ///< in the second layout
    std::vector<uint32> removed; ///< in the first layout
    std::vector<Pair> moved;     ///< to another id
    std::vector<Pair> changed;   ///< another name, source, scanner or order; they may have moved as well
    std::vector<Run> runs;       ///< empty where ids are texts
    Use use;                     ///< empty where ids are texts

private:
    using Image = std::vector<uint32>;

    void Match();
    void AdoptBySource(std::vector<bool>& isKept);
    void Sort();
    static Image ImageOf(Layout const& layout);
    void FindRuns(Image const& imageBefore, Image const& imageAfter);
    bool IsSameAt(uint32 entryBefore, uint32 entryAfter) const;
    void FindUse(Image const& imageAfter);

    Layout const& before;
    Layout const& after;
    std::vector<uint32> partner; // of each entry after the change, the index before it
};

} // namespace ZuControl::Protocol
