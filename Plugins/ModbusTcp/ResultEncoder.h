#pragma once

#include "Plugins/ModbusTcp/RegisterLayout.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <atomic>
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

/// Writes results into the register image by way of the blocks that follow them.
///
/// A data source that a set does not have keeps its registers. A block that cannot take what its source gives reads 0, is
/// told in the log once, and counts as a drop.
/// Threads: any; results come on the dispatcher's thread, layouts on whichever thread changed the assembly.
class ResultEncoder final
{
public:
    explicit ResultEncoder(RegisterImage& usedImage);
    ~ResultEncoder();
    ResultEncoder(ResultEncoder const&) = delete;
    ResultEncoder& operator=(ResultEncoder const&) = delete;

    /// From now on results go where `layout` says; an older one than the present is passed over. A block that stays keeps
    /// its last value, wherever it lies now.
    void Install(std::shared_ptr<RegisterLayout const> layout);

    /// All result registers read 0 until results come again, and none come in before `Resume`.
    void Pause();
    void Resume();

    /// Encodes every set of the batch, in order, and publishes what stands then.
    void Process(wArrayList const& resultSets);

    uint64 ResultSetCount() const;
    uint64 DropCount() const; ///< sets with a block that could not be encoded

private:
    using ResultPlace = RegisterLayout::ResultPlace;

    // Each of these is called under the lock.
    void Carry(RegisterLayout const& from, RegisterLayout const& to);
    bool EncodeSet(ZuCore::ResultSetObject const* resultSet) ZU_REQUIRES(lock);
    bool EncodeItem(ResultPlace const& place, ZuCore::ResultItemObject* item) ZU_REQUIRES(lock);
    void NoteFault(ResultPlace const& place) ZU_REQUIRES(lock);

    // A leaf but for the log. Guards the writer's side of the image, whose readers never take it, and what follows.
    Zu::Mutex lock;
    RegisterImage& image;
    std::shared_ptr<RegisterLayout const> layout ZU_GUARDED_BY(lock);
    std::vector<RegisterLayout::Block const*> faulty ZU_GUARDED_BY(lock); // told in the log since the last layout
    bool isPaused ZU_GUARDED_BY(lock) = false;

    std::atomic<uint64> resultSetCount{0};
    std::atomic<uint64> dropCount{0};
};

} // namespace ModbusTcp
