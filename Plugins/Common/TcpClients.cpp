#include "Plugins/Common/TcpClients.h"

#include <algorithm>
#include <map>

namespace PluginCommon
{

TcpClients::TcpClients() = default;

TcpClients::~TcpClients() = default;

void TcpClients::Add(Connection const& connection)
{
    connections.insert(connection);
}

void TcpClients::Remove(Connection const& connection)
{
    connections.erase(connection);
}

void TcpClients::Clear()
{
    connections.clear();
}

std::vector<TcpClients::Connection> TcpClients::All() const
{
    return {connections.begin(), connections.end()};
}

TcpClients::Connection TcpClients::Displaced(Address const& newcomer, uint64 mostClients,
                                             TcpConnection::Clock::duration unusedAfter) const
{
    auto const now = TcpConnection::Clock::now();
    Connection const unused = Oldest([&](TcpConnection const& client) { return client.IsUnused(now, unusedAfter); });
    if (unused != nullptr)
    {
        return unused;
    }
    std::map<Address, uint64> counts{{newcomer, 0}};
    for (Connection const& connection : connections)
    {
        ++counts[connection->RemoteAddress()];
    }
    if (counts[newcomer] >= mostClients / counts.size())
    {
        return nullptr;
    }
    auto const most = std::ranges::max_element(counts, {}, [](auto const& entry) { return entry.second; });
    return Oldest([&](TcpConnection const& client) { return client.RemoteAddress() == most->first; });
}

/// The connection without progress for the longest time, among those for which `isMeant` returns true.
template <typename Predicate>
TcpClients::Connection TcpClients::Oldest(Predicate const& isMeant) const
{
    Connection oldest;
    for (Connection const& connection : connections)
    {
        if (isMeant(*connection) && (oldest == nullptr || connection->LastProgress() < oldest->LastProgress()))
        {
            oldest = connection;
        }
    }
    return oldest;
}

} // namespace PluginCommon
