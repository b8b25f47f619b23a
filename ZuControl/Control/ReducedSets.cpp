#include "ZuControl/Control/ReducedSets.h"

#include "wApi/wTypes.h"

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

ReducedSets::ReducedSets(ZuCore::ResultSet from, ScanOutputPlan const& plan, Receivers listeners, void* allocator)
{
    Make(listeners, allocator);
    from->ForEachParts([&](ZuCore::ResultItemParts const& parts) {
        uint64 references = 0;
        for (Receivers left = plan.Wanting(parts.info->numericId) & served; left != 0; left = WithoutFirst(left))
        {
            uint64 const receiver = FirstOf(left);
            if (wStatus const result = sets[receiver]->Append(parts); result != Zu::Status::SUCCESS)
            {
                status = result;
                served &= (Receivers{1} << receiver) - 1; // the receivers before this one
                break;
            }
            ++references;
        }
        if (references > 0)
        {
            // All in one step: no other thread sees the sets yet, and the incoming set holds the item.
            wObject_ShareMany(parts.msgInfo, references);
            wObject_ShareMany(parts.info, references);
        }
    });
}

ReducedSets::~ReducedSets()
{
    for (Receivers left = made; left != 0; left = WithoutFirst(left))
    {
        wObject_Release(sets[FirstOf(left)]);
    }
}

void ReducedSets::Make(Receivers listeners, void* allocator)
{
    for (Receivers left = listeners; left != 0 && status == Zu::Status::SUCCESS; left = WithoutFirst(left))
    {
        uint64 const receiver = FirstOf(left);
        status = ZuCore::ResultSet_Construct(&sets[receiver], allocator);
        made |= status == Zu::Status::SUCCESS ? Receivers{1} << receiver : 0;
    }
    served = made;
}

} // namespace ZuControl
