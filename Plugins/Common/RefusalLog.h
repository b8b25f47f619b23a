#pragma once

#include "Plugins/Common/ITcpConversation.h"
#include "wApi/wTypes.h"

#include <utility> // the networking headers need it and do not include it

#include <boost/asio/ip/address.hpp>

#include <chrono>
#include <functional>
#include <string>

namespace PluginCommon
{

/// Tells the owner of a server about each refused client and each refused request. Writes the refused clients to the log
/// too: the first one at once, and then one line in PERIOD. Used on the I/O thread only.
class RefusalLog final
{
public:
    static constexpr std::chrono::seconds PERIOD{10};

    /// As `TcpServer::Service::refused`.
    using Tell = std::function<void(ClientInfo const& client, std::string const& what, std::string const& reason)>;

    RefusalLog(std::string newDisplayName, Tell newTell);
    ~RefusalLog();

    /// A client that is not admitted. `reason` follows "closes a connection of 10.0.0.7: ".
    void Note(boost::asio::ip::address const& address, std::string const& reason);

    /// A request that the client's role does not allow.
    void NoteRequest(ClientInfo const& client, std::string const& request) const;

private:
    std::string const displayName;
    Tell const tell;
    std::chrono::steady_clock::time_point nextLine;
    uint64 untold = 0;
};

} // namespace PluginCommon
