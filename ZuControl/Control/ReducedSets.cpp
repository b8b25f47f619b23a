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

ReducedSets::ReducedSets(ZuCore::ResultSet from, ScanOutputPlan const& plan, Receivers listeners,
                         std::vector<Picked>& picked, void* allocator)
{
    if (std::has_single_bit(listeners))
    {
        MakeOne(from, plan, listeners, allocator);
        return;
    }
    Pick(from, plan, listeners, picked);
    MakeAll(listeners, picked, allocator);
}

ReducedSets::~ReducedSets()
{
    for (Receivers left = made; left != 0; left = WithoutFirst(left))
    {
        wObject_Release(sets[FirstOf(left)]);
    }
}

void ReducedSets::Pick(ZuCore::ResultSet from, ScanOutputPlan const& plan, Receivers listeners,
                       std::vector<Picked>& picked)
{
    picked.clear();
    uint64 const count = ZuCore::ResultSet_Count(from);
    for (uint64 i = 0; i < count; ++i)
    {
        ZuCore::ResultItem const item = ZuCore::ResultSet_At(from, i);
        ZuCore::ResultInfo const info = ZuCore::ResultItem_ResultInfo(item);
        Receivers const wanting = plan.Wanting(ZuCore::ResultInfo_NumericId(info)) & listeners;
        if (wanting != 0)
        {
            picked.push_back({ZuCore::ResultItem_MsgInfo(item), info, wanting, 0});
        }
    }
}

void ReducedSets::MakeAll(Receivers listeners, std::vector<Picked>& picked, void* allocator)
{
    for (Receivers left = listeners; left != 0 && status == Zu::Status::SUCCESS; left = WithoutFirst(left))
    {
        uint64 const receiver = FirstOf(left);
        status = Construct(receiver, allocator);
        status = status == Zu::Status::SUCCESS ? Fill(receiver, picked) : status;
        served |= status == Zu::Status::SUCCESS ? Receivers{1} << receiver : 0;
    }
    // Adds the references of all sets in one step: no other thread sees the sets yet, and the incoming set holds the
    // items.
    for (Picked const& item : picked)
    {
        wObject_ShareMany(item.msgInfo, item.references);
        wObject_ShareMany(item.info, item.references);
    }
}

/// One listener is the usual case: no items are gathered.
void ReducedSets::MakeOne(ZuCore::ResultSet from, ScanOutputPlan const& plan, Receivers listener, void* allocator)
{
    uint64 const receiver = FirstOf(listener);
    status = Construct(receiver, allocator);
    uint64 const count = ZuCore::ResultSet_Count(from);
    for (uint64 i = 0; i < count && status == Zu::Status::SUCCESS; ++i)
    {
        ZuCore::ResultItem const item = ZuCore::ResultSet_At(from, i);
        ZuCore::ResultInfo const info = ZuCore::ResultItem_ResultInfo(item);
        if ((plan.Wanting(ZuCore::ResultInfo_NumericId(info)) & listener) == 0)
        {
            continue;
        }
        wMsgInfo* const msgInfo = ZuCore::ResultItem_MsgInfo(item);
        status = ZuCore::ResultSet_Add(sets[receiver], msgInfo, info, 0);
        if (status == Zu::Status::SUCCESS)
        {
            wObject_Share(msgInfo);
            wObject_Share(info);
        }
    }
    served = status == Zu::Status::SUCCESS ? listener : 0;
}

wStatus ReducedSets::Construct(uint64 receiver, void* allocator)
{
    wStatus const result = ZuCore::ResultSet_Construct(&sets[receiver], allocator);
    made |= result == Zu::Status::SUCCESS ? Receivers{1} << receiver : 0;
    return result;
}

wStatus ReducedSets::Fill(uint64 receiver, std::vector<Picked>& picked)
{
    Receivers const bit = Receivers{1} << receiver;
    for (Picked& item : picked)
    {
        if ((item.wanting & bit) == 0)
        {
            continue;
        }
        wStatus const result = ZuCore::ResultSet_Add(sets[receiver], item.msgInfo, item.info, 0);
        if (result != Zu::Status::SUCCESS)
        {
            return result;
        }
        ++item.references;
    }
    return Zu::Status::SUCCESS;
}

} // namespace ZuControl
