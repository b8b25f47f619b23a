#pragma once

#include "Plugins/ModbusTcp/CommandChannel.h"
#include "Plugins/ModbusTcp/IRegisterModel.h"
#include "Plugins/ModbusTcp/RegisterLayout.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <functional>
#include <memory>

namespace PluginCommon
{
class StateFetcher;
}

namespace ModbusTcp
{

class RegisterImage;

/// The registers as a client sees them: the published results, and over them the command registers as they were written,
/// the answer to the last command and the state of system and scanner, encoded when a read covers them.
///
/// Threads: reads and writes belong to one thread at a time, the I/O thread; the rest to any.
class RegisterMap final : public IRegisterModel
{
public:
    RegisterMap(RegisterImage& usedImage, PluginCommon::StateFetcher& usedFetcher, ICommandRunner& runner);
    ~RegisterMap() override;
    RegisterMap(RegisterMap const&) = delete;
    RegisterMap& operator=(RegisterMap const&) = delete;

    uint32 RegisterCount() const override;
    void Read(uint16 first, std::span<uint16> registers) override;
    ModbusException Write(uint16 first, std::span<uint16 const> values) override;

    /// From now on the blocks lie where `layout` says; an older one than the present is passed over.
    void Install(std::shared_ptr<RegisterLayout const> newLayout);

    /// Runs `change`, which is to give the blocks this byte order, while no write is being judged.
    void ChangeOrder(bool newIsBigEndian, std::function<void()> const& change);

    uint64 CommandCount() const;
    uint64 WrittenCount() const; ///< registers, of requests that were taken

private:
    std::shared_ptr<RegisterLayout const> Layout();

    RegisterImage& image;
    PluginCommon::StateFetcher& fetcher;

    // Taken for each write, and by a change of the byte order; guards the channel and the order. Operations are begun
    // under it, and the assembly's lock may be taken under it.
    Zu::Mutex writeLock;
    CommandChannel channel ZU_GUARDED_BY(writeLock);
    bool isBigEndian = true;

    Zu::Mutex layoutLock; // a leaf: held for the copy of the pointer
    std::shared_ptr<RegisterLayout const> layout ZU_GUARDED_BY(layoutLock);

    std::atomic<uint64> commandCount{0};
    std::atomic<uint64> writtenCount{0};
};

} // namespace ModbusTcp
