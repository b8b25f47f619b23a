#pragma once

#include "Plugins/Common/TcpSettings.h"
#include "wApi/wTypes.h"

#include <functional>
#include <memory>
#include <string>

namespace PluginCommon
{
class TcpServer;
}

namespace ModbusTcp
{

class IRegisterModel;
struct ServerCounters;

/// The Modbus TCP server: one I/O thread that serves every client, none of which can hold up another.
///
/// Ownership: model, counters and callback outlive the server. Threads: `Start`, `Apply` and `Stop` belong to one thread
/// at a time, the rest to any; the model and the callback are called on the I/O thread "ModbusTcp.Io".
class ModbusServer final
{
public:
    using Settings = PluginCommon::TcpSettings;

    /// `whenClientsChanged` hears of every client that comes or goes, with the number that is connected from then on.
    ModbusServer(IRegisterModel& registerModel, ServerCounters& serverCounters,
                 std::function<void(uint64)> whenClientsChanged);
    ~ModbusServer(); ///< stops
    ModbusServer(ModbusServer const&) = delete;
    ModbusServer& operator=(ModbusServer const&) = delete;

    /// Listens from now on. Throws, and nothing runs, when it cannot: -997 for an address that is none of this machine's,
    /// -976 for a port that is taken, 0 for another failure, each with address and port in the text. -1000 while it runs.
    void Start(Settings const& settings);

    /// Closes every connection and ends the I/O thread. Nothing happens when it does not run. Not to be called on the I/O
    /// thread.
    void Stop() noexcept;

    bool IsRunning() const;

    /// Does nothing while it does not run. The limits apply in place, to clients that come from now on and to the silence of
    /// all; another port or address is bound anew, at the price of every connection. When that fails it goes on where it
    /// was, and throws as `Start` does; when it cannot even do that, it does not run any more.
    void Apply(Settings const& wanted);

    /// Where it listens, with the true port: "127.0.0.1:1502", "[::1]:1502". Empty while it does not run.
    std::string Endpoint() const;

    uint16 Port() const; ///< the true one; 0 while it does not run

private:
    std::unique_ptr<PluginCommon::TcpServer> const server;
};

} // namespace ModbusTcp
