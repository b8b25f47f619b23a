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

/// The server of the line protocol: one I/O thread, "AsciiTcp.Io", that serves every client, none of which can hold up
/// another.
///
/// Ownership: service, feed, counters and callback outlive the server. Threads: `Start`, `Apply` and `Stop` belong to one
/// thread at a time, the rest to any.
class AsciiServer final
{
public:
    using Settings = PluginCommon::TcpSettings;

    /// `whenClientsChanged` hears of every client that comes or goes, with the number that is connected from then on.
    AsciiServer(IAsciiService& service, DataFeed& feed, AsciiCounters& counters,
                std::function<void(uint64)> whenClientsChanged);
    ~AsciiServer(); ///< stops
    AsciiServer(AsciiServer const&) = delete;
    AsciiServer& operator=(AsciiServer const&) = delete;

    // As those of PluginCommon::TcpServer.
    void Start(Settings const& settings);
    void Apply(Settings const& wanted);
    void Stop() noexcept;
    bool IsRunning() const;
    std::string Endpoint() const;

    // Each reaches the clients soon, and nobody while the server does not run.
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
