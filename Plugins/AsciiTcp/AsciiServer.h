#pragma once

#include "Plugins/Common/TcpSettings.h"
#include "wApi/wTypes.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace PluginCommon
{
class TcpServer;
}

namespace AsciiTcp
{

class AsciiConnection;
class DataFeed;
class IAsciiService;
struct AsciiCounters;

/// The server of the line protocol. One I/O thread, "AsciiTcp.Io", serves all clients; no client can block another.
///
/// Ownership: service, feed, counters and callback outlive the server. Threads: one thread at a time calls `Start`,
/// `Apply` and `Stop`; any thread may call the rest.
class AsciiServer final
{
public:
    using Settings = PluginCommon::TcpSettings;

    /// `whenClientsChanged` is called after each connect and disconnect with the number of connected clients.
    AsciiServer(IAsciiService& service, DataFeed& feed, AsciiCounters& counters,
                std::function<void(uint64)> whenClientsChanged);
    ~AsciiServer(); ///< stops
    AsciiServer(AsciiServer const&) = delete;
    AsciiServer& operator=(AsciiServer const&) = delete;

    // As the operations of PluginCommon::TcpServer.
    void Start(Settings const& settings);
    void Apply(Settings const& wanted);
    void Stop() noexcept;
    bool IsRunning() const;
    std::string Endpoint() const;

    // Each posts to all clients. Does nothing if the server does not run.
    void DataCame();
    void OperationEnded(uint64 ticket, bool isDone);
    void Answered(uint64 ticket, std::string_view line);
    void Tell(std::string_view line);
    void DisconnectAll();

private:
    void ToEach(std::function<void(AsciiConnection&)> visit);

    std::unique_ptr<PluginCommon::TcpServer> const server;
};

} // namespace AsciiTcp
