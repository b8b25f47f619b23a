#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/ControlProtocol/IProtocolOutput.h"
#include "ZuControl/ControlProtocol/OutputMapCore.h"
#include "ZuControl/Export.h"
#include "ZuPipe/PipeData.h"
#include "wApi/wLock.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

extern template class Zu::Properties::Array<ZuPipe::PipeDataFormatProps>;
extern template class Zu::Params::Array<ZuPipe::PipeDataFormatProps>;

namespace ZuControl::ControlProtocol
{

/// The first members of the records of all output maps.
struct ZUCONTROL_API CommonProtocolOutputProp : public Zu::Params::Group
{
    CommonProtocolOutputProp();
    ~CommonProtocolOutputProp() override;

    Zu::Params::Array<ZuPipe::PipeDataFormatProps> acceptedDataFormats; ///< shown to clients
};

/// The base of the output maps of all kinds: items sorted by output id, no source twice, at most `maxCount` items.
///
/// The map is kept in the record that clients read and that is saved. Only the operations change it; they check, log
/// and refuse.
/// Ownership: the protocol owns its map. Threads: any; the operations take the map's recursive lock.
///
/// The kinds of this library are instantiated in it. A kind with records of its own includes
/// "ZuControl/ControlProtocol/ProtocolOutputBaseDefinition.h" where it instantiates the template; its records offer
/// what StandardOutputItem, StandardOutputs and those with arguments offer, and its ids are uint16 or std::string.
template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
class ZUCONTROL_API ProtocolOutputBase : public IProtocolOutput
{
public:
    using OutputId = typename OutputItem::OutputId;

    /// Throws the platform's status, no text, when the lock cannot be made.
    explicit ProtocolOutputBase(uint16 mostItems);
    ~ProtocolOutputBase() override;

    ProtocolOutputBase(ProtocolOutputBase const&) = delete;
    ProtocolOutputBase& operator=(ProtocolOutputBase const&) = delete;

    void BeginLock() override ZU_NO_THREAD_SAFETY_ANALYSIS; // held until EndLock, by design
    void EndLock() override ZU_NO_THREAD_SAFETY_ANALYSIS;
    Zu::Params::Group const& OutputMap() const override ZU_NO_THREAD_SAFETY_ANALYSIS; // the caller holds the lock

    std::shared_ptr<Zu::Params::Group> CreateOutputMapItemArgs() const override;
    std::shared_ptr<Zu::Params::Group> CreateOutputsArgs() const override;

    /// Takes an `OutputItemArgs`, else throws std::bad_cast. An item that the map has with all members equal is no
    /// error. Throws and leaves the map unchanged, in this order: `Zu::Status::BAD_ARGUMENT` for an incomplete item,
    /// `Zu::Status::ALREADY_EXISTS` for a source that the map has, `Zu::Status::BAD_ARGUMENT` for a taken id without
    /// `autoShift`, `Zu::Status::FULL` when the map is full.
    void Add(Zu::Params::Group const& itemArgs) override;
    /// Uses the id of the item alone. Throws `Zu::Status::BAD_ARGUMENT` without an id, `Zu::Status::NOT_FOUND` for an
    /// id that the map does not have.
    void Remove(Zu::Params::Group const& args) override;
    uint64 Count() const override ZU_NO_THREAD_SAFETY_ANALYSIS; ///< takes no lock
    /// The reference is valid until the next change: the caller holds the lock.
    OutputItem const& At(uint64 index) const override;
    void Clear() override;
    std::vector<std::string> DataSourceList() const override;
    /// Does nothing: not all kinds have numbers as ids.
    void CompactId() override;
    /// Takes an `OutputsArgs` with two items, else throws std::bad_cast. The second item gets all members of the moved
    /// item but its id. The move removes the old item first: when the item cannot be added at the new id, it is lost.
    void UpdateId(Zu::Params::Group& outputsArgs) override;

    /// Adds an item with a taken id at `index`. Throws `Zu::Status::NOT_SUPPORTED`: not all kinds can make room.
    virtual void OverlapInsert(uint64 index, OutputItem const& item);

    /// How the id of the item relates to those in the map: 0 is free, 1 is taken.
    virtual ZuProtocolOutputDataOverlapState GetOverlappingState(Zu::Params::Group const& item) const;

    virtual bool IsDataShiftSupported() const;

    /// The index of an item with this id, else the index where it belongs.
    uint64 BSearchForInsert(OutputItem const& item) const;

    bool IsDuplicateDataSource(OutputItem const& item) const;

    /// The items of a map that has become a copy through `BecomeCopyOf`.
    std::vector<PlainOutputItem<OutputId>> const& CopiedItems() const ZU_NO_THREAD_SAFETY_ANALYSIS; // one thread has it

protected:
    /// Makes this new map, which no other thread knows, a copy of `original` for a preview. Its operations then change
    /// plain copies of the items, and collect refusals in `newNotes` in place of the log. `newNotes` outlives the map.
    void BecomeCopyOf(ProtocolOutputBase const& original, RefusalNotes& newNotes);

    /// Adds an item as `Add` does. Not virtual: a kind with an `Add` of its own still moves its items through this.
    void Add_Helper(Zu::Params::Group const& group, bool autoShift);

    /// With `checkTarget`, a new id that is taken is refused with `Zu::Status::ID_CONFLICT`.
    void UpdateId_Helper(Zu::Params::Group& group, bool checkTarget);

    /// Copies each item from `index` on one place up; the caller overwrites the item at `index` with `core.Put`. Throws
    /// `Zu::Status::FULL` when the map is full, `Zu::Status::BAD_ARGUMENT` for an index above the count.
    void ShiftOutputMap(uint64 index) ZU_REQUIRES(lock);

    /// Adds the item at `index`; refuses as `ShiftOutputMap`. Without memory the map stays as it was.
    void InsertItem(uint64 index, OutputItem const& item) ZU_REQUIRES(lock);

    // A derived class fills in formats and attributes of `outputs`, and changes its map through `core` alone.
    uint16 const maxCount;
    // Detects a forgotten BeginLock. One word for all threads: it does not prove that the reader holds the lock.
    std::atomic<uint32> lockHeld{0};
    Outputs outputs ZU_GUARDED_BY(lock);
    // Recursive: the operations take it again while BeginLock holds it. Observers of the record run under it; no other
    // lock is taken.
    mutable wLock lock;
    mutable OutputMapCore<OutputId> core ZU_GUARDED_BY(lock); // reading brings its index in step with the items
    RefusalNotes* notes = nullptr;                            // of a copy for a preview; null: refusals go to the log

private:
    static bool HasRoomToShift(OutputId const& id);
};

} // namespace ZuControl::ControlProtocol
