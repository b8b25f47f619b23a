#pragma once

#include "ZuControl/Control/ScanOutputPlan.h"
#include "ZuControl/Export.h"
#include "ZuCore/ResultSet.h"
#include "wApi/wStatus.h"
#include "wApi/wTypes.h"

#include <array>
#include <vector>

namespace ZuControl
{

/// What becomes of one published set on its way to several receivers: a set for each, with the items that it wants.
///
/// A receiver whose set cannot be made or filled gets nothing, and those behind it get nothing either; those ahead of it are
/// not touched by that. The sets go with this object, but for the references that others have taken by then.
class ZUCONTROL_INTERNAL_API ReducedSets final
{
public:
    using Receivers = ScanOutputPlan::Receivers;

    /// An item that somebody wants.
    struct Picked
    {
        wMsgInfo* msgInfo;
        ZuCore::ResultInfo info;
        Receivers wanting;
        uint64 references; ///< that the sets have by now and the item has not been given yet
    };

    /// Makes and fills the sets of `listeners`, which `plan` knows by the same bits. `picked` is memory to work in, kept by
    /// the caller so that a set costs no allocation; what is in it does not matter.
    ReducedSets(ZuCore::ResultSet from, ScanOutputPlan const& plan, Receivers listeners, std::vector<Picked>& picked,
                void* allocator);
    ~ReducedSets();

    ReducedSets(ReducedSets const&) = delete;
    ReducedSets& operator=(ReducedSets const&) = delete;

    /// Those that get their set.
    Receivers Served() const
    {
        return served;
    }

    /// 1, or the status that kept the first of those who get nothing from having a set.
    wStatus Status() const
    {
        return status;
    }

    /// The set of one that is served; borrowed.
    ZuCore::ResultSet At(uint64 receiver) const
    {
        return sets[receiver];
    }

private:
    static void Pick(ZuCore::ResultSet from, ScanOutputPlan const& plan, Receivers listeners,
                     std::vector<Picked>& picked);
    void MakeAll(Receivers listeners, std::vector<Picked>& picked, void* allocator);
    void MakeOne(ZuCore::ResultSet from, ScanOutputPlan const& plan, Receivers listener, void* allocator);
    wStatus Construct(uint64 receiver, void* allocator);
    wStatus Fill(uint64 receiver, std::vector<Picked>& picked);

    Receivers made = 0;   // those that have a set here
    Receivers served = 0; // of these, those that nothing has failed for
    wStatus status = Zu::Status::SUCCESS;
    std::array<ZuCore::ResultSet, ScanOutputPlan::MAX_RECEIVERS> sets; // of those that have one; the others are unset
};

} // namespace ZuControl
