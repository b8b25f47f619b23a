#pragma once

#include "Plugins/Common/TcpConnection.h"
#include "wApi/wTypes.h"

#include <memory>
#include <unordered_set>
#include <vector>

namespace PluginCommon
{

/// The connections of a TcpServer, and the rule that decides which connection makes room for a new client. Used on the
/// I/O thread only.
class TcpClients final
{
public:
    using Connection = std::shared_ptr<TcpConnection>;
    using Address = boost::asio::ip::address;

    TcpClients();
    ~TcpClients();
    TcpClients(TcpClients const&) = delete;
    TcpClients& operator=(TcpClients const&) = delete;

    void Add(Connection const& connection);
    void Remove(Connection const& connection);
    void Clear();

    uint64 Count() const
    {
        return connections.size();
    }

    /// A copy: the caller may add and remove connections while it visits them.
    std::vector<Connection> All() const;

    /// The connection to drop for a client of the address `newcomer`; null if there is none. `mostClients` is the number
    /// of places.
    ///
    /// The connection without progress for the longest time makes room, if that time is longer than `unusedAfter`. If
    /// every connection is in use, each address has an equal share of the places: while `newcomer` has less than its
    /// share, the address with most connections gives one up.
    Connection Displaced(Address const& newcomer, uint64 mostClients, TcpConnection::Clock::duration unusedAfter) const;

private:
    template <typename Predicate>
    Connection Oldest(Predicate const& isMeant) const;

    std::unordered_set<Connection> connections;
};

} // namespace PluginCommon
