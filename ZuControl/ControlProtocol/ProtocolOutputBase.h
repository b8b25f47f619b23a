#pragma once

#include "ZuControl/ControlProtocol/IProtocolOutput.h"
#include "ZuControl/ControlProtocol/OutputMapIndex.h"
#include "ZuControl/Export.h"
#include "wApi/wLock.h"
#include "wApi/wThreadSafety.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace ZuControl::ControlProtocol
{

/// What the output maps of all kinds have in common: items sorted by output id, no source twice, at most `maxCount` of them.
///
/// The map is kept in the record that clients read and that is saved. It is changed through the operations only, which
/// check, log and refuse.
/// Ownership: the protocol owns its map. Threads: any; the operations take the map's recursive lock.
///
/// The kinds of this library are instantiated in it. A kind with records of its own includes
/// "ZuControl/ControlProtocol/ProtocolOutputBaseDefinition.h" where it instantiates the template; its records offer what
/// StandardOutputItem, StandardOutputs and those with arguments offer, and its ids are uint16 or std::string.
template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
class ZUCONTROL_API ProtocolOutputBase : public IProtocolOutput
{
public:
    using OutputId = typename OutputItem::OutputId;

    /// Throws the failing status of the lock, no text.
    explicit ProtocolOutputBase(uint16 mostItems);
    ~ProtocolOutputBase() override;

    ProtocolOutputBase(ProtocolOutputBase const&) = delete;
    ProtocolOutputBase& operator=(ProtocolOutputBase const&) = delete;

    void BeginLock() override ZU_NO_THREAD_SAFETY_ANALYSIS; // held until EndLock, by design
    void EndLock() override ZU_NO_THREAD_SAFETY_ANALYSIS;
    Zu::Params::Group const& OutputMap() const override ZU_NO_THREAD_SAFETY_ANALYSIS; // the caller holds the lock

    std::shared_ptr<Zu::Params::Group> CreateOutputMapItemArgs() const override;
    std::shared_ptr<Zu::Params::Group> CreateOutputsArgs() const override;

    /// Takes an `OutputItemArgs`, else std::bad_cast. What is there already, all members equal, is no error. Throws, and
    /// leaves the map as it was, in this order: -997 for an incomplete item, -987 for a source that the map has, -997
    /// for a taken id without leave to shift, -977 when the map is full.
    void Add(Zu::Params::Group const& itemArgs) override;
    /// Only the id of the item counts. Throws -997 for one that is not given, -999 for one that the map does not have.
    void Remove(Zu::Params::Group const& args) override;
    uint64 Count() const override; ///< takes no lock
    /// The reference is good until the next change: the caller holds the lock.
    OutputItem const& At(uint64 index) const override;
    void Clear() override;
    std::vector<std::string> DataSourceList() const override;
    /// Does nothing: not all ids can be counted.
    void CompactId() override;
    /// Takes an `OutputsArgs` with two items, else std::bad_cast. The second item gets all members of the moved one but its
    /// id. The move takes the old item out first: when it cannot be added at the new id, it is gone.
    void UpdateId(Zu::Params::Group& outputsArgs) override;

    /// Adds an item at `index`, whose id is taken. Throws -996: not all ids can make room.
    virtual void OverlapInsert(uint64 index, OutputItem const& item);

    /// How the id of the item meets those in the map: 0 is free, 1 is taken.
    virtual ZuProtocolOutputDataOverlapState GetOverlappingState(Zu::Params::Group const& item) const;

    virtual bool IsDataShiftSupported() const;

    /// The index of an item with this id, else the index where it belongs.
    uint64 BSearchForInsert(OutputItem const& item) const;

    bool IsDuplicateDataSource(OutputItem const& item) const;

protected:
    /// Adds an item as `Add` says. It is not virtual: a kind that adds in another way still moves its items through this.
    void Add_Helper(Zu::Params::Group const& group, bool autoShift);

    /// With `checkTarget` a new id that is taken is refused with -980.
    void UpdateId_Helper(Zu::Params::Group& group, bool checkTarget);

    /// Copies each item from `index` on one place up; the one at `index` is to be overwritten with `PutItem`. Throws -977
    /// when the map is full, -997 for an index above the count.
    void ShiftOutputMap(uint64 index) ZU_REQUIRES(lock);

    // The changes that all others consist of; they keep the lookup in step with the record. One that finds no memory leaves
    // the items as they were, `PutItem` as they were before `ShiftOutputMap` opened the place.
    void AppendItem(OutputItem const& item) ZU_REQUIRES(lock);
    /// As `ShiftOutputMap` and `PutItem`.
    void InsertItem(uint64 index, OutputItem const& item) ZU_REQUIRES(lock);
    void PutItem(uint64 index, OutputItem const& item) ZU_REQUIRES(lock);
    void SetOutputId(uint64 index, OutputId const& id) ZU_REQUIRES(lock);
    void EraseItem(uint64 index) ZU_REQUIRES(lock);

    bool HasSource(std::string const& source) const ZU_REQUIRES(lock);

    // The data that kinds need; a derived class fills in formats and attributes, and leaves the map to the operations.
    uint16 const maxCount;
    // A guard against a forgotten BeginLock, no proof of ownership: one word for all threads.
    std::atomic<uint32> lockHeld{0};
    Outputs outputs ZU_GUARDED_BY(lock);
    // Recursive: the operations take it again while BeginLock holds it. Observers of the record run under it; no other
    // lock is taken.
    mutable wLock lock;

private:
    /// Two items, and both ids given.
    static void CheckIdsToUpdate(OutputsArgs const& args);
    bool HasRoomToShift(OutputId const& id) const;

    /// What is looked up, in step with the record; made anew when it is not.
    OutputMapIndex<OutputId>& Lookup() const ZU_REQUIRES(lock);
    OutputItem& AddEmptyItem() ZU_REQUIRES(lock);
    void DropItem(uint64 index) ZU_REQUIRES(lock); ///< the way back from a change that broke off
    void BeginChange() ZU_REQUIRES(lock);
    void EndChange() ZU_REQUIRES(lock);

    std::atomic<uint64> count{0}; // of the items, for those who ask without the lock
    mutable OutputMapIndex<OutputId> lookup ZU_GUARDED_BY(lock);
    mutable bool isLookupStale ZU_GUARDED_BY(lock) = false; // a change broke off half way
};

} // namespace ZuControl::ControlProtocol
