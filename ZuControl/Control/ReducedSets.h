#pragma once

#include "ZuControl/Control/ScanOutputPlan.h"
#include "ZuControl/Export.h"
#include "ZuCore/ResultSet.h"
#include "wApi/wTypes.h"

#include <array>

namespace ZuControl
{

/// The reduced sets of one published set: one set for each receiver, with the items that the receiver wants.
///
/// When the set of a receiver cannot be made or filled, this receiver and those behind it get nothing; those before it
/// keep their sets. This object releases its references to the sets when it is destroyed.
class ZUCONTROL_INTERNAL_API ReducedSets final
{
public:
    using Receivers = ScanOutputPlan::Receivers;

    /// Makes and fills the sets of `listeners`; the bits are those of `plan`.
    ReducedSets(ZuCore::ResultSet from, ScanOutputPlan const& plan, Receivers listeners, void* allocator);
    ~ReducedSets();

    ReducedSets(ReducedSets const&) = delete;
    ReducedSets& operator=(ReducedSets const&) = delete;

    /// The receivers that get their set.
    Receivers Served() const
    {
        return served;
    }

    /// `Zu::Status::SUCCESS`, or the failing status of the first receiver that gets nothing.
    wStatus Status() const
    {
        return status;
    }

    /// The set of a served receiver, which stays this object's.
    ZuCore::ResultSet At(uint64 receiver) const
    {
        return sets[receiver];
    }

private:
    void Make(Receivers listeners, void* allocator);

    Receivers made = 0;   // the receivers with a set
    Receivers served = 0; // of these, the receivers without a failure
    wStatus status = Zu::Status::SUCCESS;
    std::array<ZuCore::ResultSet, ScanOutputPlan::MAX_RECEIVERS> sets; // valid for the bits in `made`
};

} // namespace ZuControl
