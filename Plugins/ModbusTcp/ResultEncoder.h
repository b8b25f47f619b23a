#pragma once

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
    /// value, even if its registers move.
    void Install(std::shared_ptr<RegisterLayout const> layout);

    /// Makes all blocks blank, as before the first result.
    void Blank();

    /// Sets all result registers to 0. Results are ignored until `Resume`, which makes the blocks blank. The byte order
    /// of the blocks may change in between.
    void Pause();
    void Resume();

    /// Encodes all sets of the batch in order, then publishes the image.
    void Process(wArrayList const& resultSets);

private:
    using ResultPlace = RegisterLayout::ResultPlace;

    // The caller holds the lock.
    void BlankAll() ZU_REQUIRES(lock);
    void Carry(RegisterLayout const& from, RegisterLayout const& to);
    bool EncodeSet(ZuCore::ResultSetObject const* resultSet) ZU_REQUIRES(lock);
    bool EncodeItem(ResultPlace const& place, ZuCore::ResultItemObject* item) ZU_REQUIRES(lock);
    void NoteFault(ResultPlace const& place) ZU_REQUIRES(lock);

    // Guards the writer's side of the image, which readers use without it, and the members below. Only the log is
    // called under it.
    Zu::Mutex lock;
    RegisterImage& image;
    ModbusCounters& counters;
    std::shared_ptr<RegisterLayout const> layout ZU_GUARDED_BY(lock);
    std::vector<RegisterLayout::Block const*> faulty ZU_GUARDED_BY(lock); // logged since the last layout
    bool isPaused ZU_GUARDED_BY(lock) = false;
};

} // namespace ModbusTcp
