#pragma once

#include "Plugins/Common/StateFetcher.h"
#include "Plugins/ModbusTcp/CommandChannel.h"
#include "Plugins/ModbusTcp/ModbusRequest.h"
#include "Plugins/ModbusTcp/RegisterLayout.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>

namespace ModbusTcp
{

class RegisterImage;
class ResultEncoder;
struct ModbusCounters;

/// The registers that clients see: the published results, overlaid with the command registers as written, the result of
/// the last command, and the state of system and scanner. State is encoded when a read covers it.
///
/// Coil n, from 1 to 6, is the command with the id n: writing 1 runs it, and it reads 1 while it runs. Coil 0 reads 1
/// while any command of this service runs.
///
/// Threads: one thread at a time calls the operations of `IRegisterModel`, the I/O thread; any thread may call the rest.
class RegisterMap final : public IRegisterModel
{
public:
    /// The sources of the registers. All outlive the map.
    struct Sources
    {
        RegisterImage& image;
        ResultEncoder& results; ///< has the result queues, whose acknowledge registers are writable
        PluginCommon::ICommandRunner& commands;
        std::function<PluginCommon::StateFetcher::State(std::string const& scannerId)> latestState;
        std::function<MapIdentity()> mapIdentity; ///< without the job
        ModbusCounters& counters;                 ///< the map counts commands and written registers
    };

    explicit RegisterMap(Sources usedSources);
    ~RegisterMap() override;
    RegisterMap(RegisterMap const&) = delete;
    RegisterMap& operator=(RegisterMap const&) = delete;

    uint32 RegisterCount() const override;
    void Read(uint16 first, std::span<uint16> registers) override;
    ModbusException Write(uint16 first, std::span<uint16 const> values) override;
    ModbusException MaskWrite(uint16 address, uint16 andMask, uint16 orMask) override;
    uint16 ReadCoils() override;
    ModbusException WriteCoils(uint16 ones) override;
    MapIdentity Identity() override;

    /// Replaces the layout, unless `layout` is older than the present one. A read that runs meanwhile begins anew. The
    /// caller hides the fingerprint in the image before, and shows the new one after it: so no read has the fingerprint
    /// of one layout and the states of another.
    void Install(std::shared_ptr<RegisterLayout const> newLayout);

    /// Runs `change`, which sets the byte order of the blocks, while no write is evaluated. The same holds for reads and
    /// the fingerprint as with `Install`.
    void ChangeOrder(bool newIsBigEndian, std::function<void()> const& change);

private:
    std::shared_ptr<RegisterLayout const> Layout();
    void ReadCommand(RegisterLayout const& present, uint16 first, std::span<uint16> registers);
    void ReadStates(RegisterLayout const& present, uint16 first, std::span<uint16> registers);
    ModbusException WriteInput(RegisterLayout::Place const& input, uint16 first, std::span<uint16 const> values)
        ZU_REQUIRES(writeLock);
    ModbusException Acknowledge(uint16 address, uint16 number) ZU_REQUIRES(writeLock);

    Sources const sources;

    // Held during each write and each change of the byte order; guards the channel and the order. Operations are begun
    // under it. Lock order: this, then the assembly's lock or that of the encoder.
    Zu::Mutex writeLock;
    CommandChannel channel ZU_GUARDED_BY(writeLock);
    bool isBigEndian ZU_GUARDED_BY(writeLock) = true;

    std::atomic<uint64> changes{0}; // grows before each change of the layout and of the order; orders it with reads

    Zu::Mutex layoutLock; // a leaf; held to copy the pointer
    std::shared_ptr<RegisterLayout const> layout ZU_GUARDED_BY(layoutLock);
};

} // namespace ModbusTcp
