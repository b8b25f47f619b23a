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

/// The Modbus TCP server. One I/O thread, "ModbusTcp.Io", serves all clients; no client can block another.
///
/// Ownership: model, counters and callback outlive the server. Threads: one thread at a time calls `Start`, `Apply` and
/// `Stop`; any thread may call the rest. The model and the callback are called on the I/O thread.
class ModbusServer final
{
public:
    using Settings = PluginCommon::TcpSettings;

    /// `whenClientsChanged` is called after each connect and disconnect with the number of connected clients.
    ModbusServer(IRegisterModel& registerModel, ServerCounters& serverCounters,
                 std::function<void(uint64)> whenClientsChanged);
    ~ModbusServer(); ///< stops
    ModbusServer(ModbusServer const&) = delete;
    ModbusServer& operator=(ModbusServer const&) = delete;

    /// Starts listening. On failure nothing runs, and the text names address and port. Throws
    /// `Zu::Status::BAD_ARGUMENT` for an address that is invalid or not of this machine, `Zu::Status::BUSY` for a port
    /// in use, `Zu::Status::FAILURE` for any other failure, and `Zu::Status::WRONG_STATE` while the server runs.
    void Start(Settings const& settings);

    /// Closes all connections and ends the I/O thread. Does nothing if the server does not run. Must not be called on
    /// the I/O thread.
    void Stop() noexcept;

    bool IsRunning() const;

    /// Applies new settings; does nothing if the server does not run. New limits take effect at once: `maxClients` for
    /// new clients, the idle timeout for all. A new address or port is bound, which closes all connections. If binding
    /// fails, the server returns to the old address and throws as `Start` does; if that fails too, the server does not
    /// run any more.
    void Apply(Settings const& wanted);

    /// The address with the actual port: "127.0.0.1:1502", "[::1]:1502". Empty if the server does not run.
    std::string Endpoint() const;

    uint16 Port() const; ///< the actual port; 0 if the server does not run

private:
    std::unique_ptr<PluginCommon::TcpServer> const server;
};

} // namespace ModbusTcp
