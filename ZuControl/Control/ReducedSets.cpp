#include "ZuControl/Control/ReducedSets.h"

#include "wApi/wTypes.h"

#include <algorithm>
#include <bit>

namespace ZuControl
{

namespace
{

uint64 FirstOf(ReducedSets::Receivers receivers)
{
    return static_cast<uint64>(std::countr_zero(receivers));
}

ReducedSets::Receivers WithoutFirst(ReducedSets::Receivers receivers)
{
    return receivers & (receivers - 1);
}

} // namespace

ReducedSets::ReducedSets(ZuCore::ResultSet from, ScanOutputPlan const& plan, Receivers listeners,
                         std::vector<Picked>& picked, void* allocator)
{
    picked.resize(std::max(picked.size(), from->count));
    Picked* end = picked.data();
    from->ForEachParts([&](ZuCore::ResultItemParts const& parts) {
        Receivers const wanting = plan.Wanting(parts.info->numericId) & listeners;
        if (wanting != 0)
        {
            *end++ = {parts, wanting, 0};
        }
    });
    std::span<Picked> const items(picked.data(), end);
    for (Receivers left = listeners; left != 0 && status == Zu::Status::SUCCESS; left = WithoutFirst(left))
    {
        uint64 const receiver = FirstOf(left);
        status = Make(receiver, items, allocator);
        served |= status == Zu::Status::SUCCESS ? Receivers{1} << receiver : 0;
    }
    // Adds the references of all sets in one step: no other thread sees the sets yet, and the incoming set holds the
    // items.
    for (auto const [parts, wanting, references] : items)
    {
        wObject_ShareMany(parts.msgInfo, references);
        wObject_ShareMany(parts.info, references);
    }
}

ReducedSets::~ReducedSets()
{
    for (Receivers left = made; left != 0; left = WithoutFirst(left))
    {
        wObject_Release(sets[FirstOf(left)]);
    }
}

/// Makes and fills the set of a receiver. After a failure the set has the items that `references` counts.
wStatus ReducedSets::Make(uint64 receiver, std::span<Picked> items, void* allocator)
{
    wStatus result = ZuCore::ResultSet_Construct(&sets[receiver], allocator);
    if (result != Zu::Status::SUCCESS)
    {
        return result;
    }
    Receivers const bit = Receivers{1} << receiver;
    made |= bit;
    ZuCore::ResultSetWriter writer(*sets[receiver]);
    for (Picked& item : items)
    {
        if ((item.wanting & bit) == 0)
        {
            continue;
        }
        result = writer.Append(item.parts);
        if (result != Zu::Status::SUCCESS)
        {
            break;
        }
        ++item.references;
    }
    return result;
}

} // namespace ZuControl
