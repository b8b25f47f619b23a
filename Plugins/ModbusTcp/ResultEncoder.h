#pragma once

#include "Plugins/ModbusTcp/ModbusRequest.h"
#include "Plugins/ModbusTcp/RegisterLayout.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <memory>
#include <vector>

class wArrayList;

namespace ZuCore
{
struct ResultItemObject;
struct ResultSetObject;
} // namespace ZuCore

namespace ModbusTcp
{

class RegisterImage;
struct ModbusCounters;

/// Encodes results into the register image, using the blocks of their data sources.
///
/// Before the first result of a scan, the blocks are blank: a measured value is marked as missing, and all else reads 0,
/// the decision included. If a set lacks a data source, its registers keep their values. If a block cannot encode a
/// result, its registers read 0, the fault is logged once, and the set counts as a drop.
///
/// A block with a list of sources collects the results of a set and shows them when the set is complete. Of these, result
/// queues keep their results over scans, changes of the byte order and moves of the block. Results that a full queue
/// cannot take, and those of a queue that goes or gets other sources, are lost: they are counted and logged.
///
/// Threads: any thread may call. Results arrive on the dispatcher's thread, layouts on the thread that changed the
/// assembly.
class ResultEncoder final
{
public:
    /// Counts result sets and drops, which are sets with a block that could not be encoded.
    ResultEncoder(RegisterImage& usedImage, ModbusCounters& usedCounters);
    ~ResultEncoder();
    ResultEncoder(ResultEncoder const&) = delete;
    ResultEncoder& operator=(ResultEncoder const&) = delete;

    /// Replaces the layout, unless `layout` is older than the present one. A block in both layouts keeps its last
    /// value, even if its registers move, unless it has another order now.
    void Install(std::shared_ptr<RegisterLayout const> layout);

    /// Shows 0 in place of the fingerprint until `Install`, unless `newLayout` has the same one.
    void HideFingerprint(RegisterLayout const& newLayout);

    /// Makes all blocks blank, as before the first result.
    void Blank();

    /// Sets all registers to 0. Until `Resume`, which makes the blocks blank, only result queues take results. The byte
    /// order of the blocks may change in between, and a layout that is installed meanwhile shows from `Resume` on.
    void Pause();
    void Resume();

    /// Encodes all sets of the batch in order, then publishes the image.
    void Process(wArrayList const& resultSets);

    /// The room of each result queue, in results. Throws `std::bad_alloc`.
    void SetQueueDepth(uint32 newDepth);

    /// Carries out a write of `value` to a register of a result queue, with the byte order of the service. Returns
    /// ILLEGAL_DATA_ADDRESS if `address` is not the acknowledge register of a queue, and ILLEGAL_DATA_VALUE for a number
    /// that the queue does not accept.
    ModbusException Acknowledge(uint16 address, uint16 value, bool isBigEndian);

    /// The register of a queue that has lost results since it was empty, or -1 if there is none.
    int32 OverflowingQueue();

private:
    using ResultPlace = RegisterLayout::ResultPlace;
    using ListPlace = RegisterLayout::ListPlace;

    // The caller holds the lock.
    void BlankAll() ZU_REQUIRES(lock);
    void Show(ListPlace const& place) ZU_REQUIRES(lock);
    void PublishLists() ZU_REQUIRES(lock);
    void WriteConstants(LayoutFacts const& facts) ZU_REQUIRES(lock);
    void Carry(RegisterLayout const& from, RegisterLayout const& to);
    bool EncodeSet(ZuCore::ResultSetObject const* resultSet) ZU_REQUIRES(lock);
    bool EncodeItem(ResultPlace const& place, ZuCore::ResultItemObject* item) ZU_REQUIRES(lock);
    void EndSet() ZU_REQUIRES(lock);
    void FollowLists(RegisterLayout const& from, RegisterLayout const& to) ZU_REQUIRES(lock);
    void CountLost(ListPlace const& place, uint64 lostCount) ZU_REQUIRES(lock);
    void CountWaiting() ZU_REQUIRES(lock);
    void NoteFault(ResultPlace const& place) ZU_REQUIRES(lock);

    // Guards the writer's side of the image, which readers use without it, and the members below. Only the log is
    // called under it.
    Zu::Mutex lock;
    RegisterImage& image;
    ModbusCounters& counters;
    std::shared_ptr<RegisterLayout const> layout ZU_GUARDED_BY(lock);
    std::vector<RegisterLayout::Block const*> faulty ZU_GUARDED_BY(lock); // logged since the last layout
    bool isPaused ZU_GUARDED_BY(lock) = false;
    uint32 queueDepth ZU_GUARDED_BY(lock);
};

} // namespace ModbusTcp
