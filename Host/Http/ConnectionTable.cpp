#include "Host/Http/ConnectionTable.h"

#include "Host/Http/HttpConnection.h"
#include "wApi/wTime.h"

#include <algorithm>
#include <map>

namespace ZuHost
{

namespace
{

/// The idle connections of one address.
struct IdleGroup
{
    uint64 count = 0;
    HttpConnection* oldest = nullptr;
    uint64 oldestSinceUsec = 0;

    void Add(HttpConnection& connection, uint64 sinceUsec)
    {
        ++count;
        if (oldest == nullptr || sinceUsec < oldestSinceUsec)
        {
            oldest = &connection;
            oldestSinceUsec = sinceUsec;
        }
    }

    bool IsLessThan(IdleGroup const& other) const
    {
        return count != other.count ? count < other.count : oldestSinceUsec > other.oldestSinceUsec;
    }
};

} // namespace

ConnectionTable::ConnectionTable() = default;
ConnectionTable::~ConnectionTable() = default;

uint64 ConnectionTable::Add(Client const& client)
{
    Zu::MutexLock const guard(mutex);
    connections.emplace(client.get(), client);
    return connections.size() - 1;
}

void ConnectionTable::Remove(HttpConnection& connection) noexcept
{
    Zu::MutexLock const guard(mutex);
    connections.erase(&connection);
    if (isComplete && connections.empty())
    {
        changed.NotifyAll();
    }
}

ConnectionTable::Client ConnectionTable::TakeLongestIdle()
{
    std::map<boost::asio::ip::address, IdleGroup> groups;
    Zu::MutexLock const guard(mutex);
    for (auto const& [connection, weak] : connections) // none is destroyed before `Remove` gets the lock
    {
        if (uint64 const sinceUsec = connection->Idle().SinceUsec(); sinceUsec != 0)
        {
            groups[connection->Source()].Add(*connection, sinceUsec);
        }
    }
    auto const most = std::ranges::max_element(
        groups, [](auto const& one, auto const& other) { return one.second.IsLessThan(other.second); });
    if (most == groups.end())
    {
        return nullptr;
    }
    most->second.oldest->Idle().Note(false);
    return connections.at(most->second.oldest).lock();
}

std::vector<ConnectionTable::Client> ConnectionTable::All()
{
    std::vector<Client> all;
    Zu::MutexLock const guard(mutex);
    all.reserve(connections.size()); // so that nothing below fails and destroys a connection under the lock
    for (auto const& [connection, weak] : connections)
    {
        if (Client client = weak.lock(); client != nullptr)
        {
            all.push_back(std::move(client));
        }
    }
    return all;
}

void ConnectionTable::EndAdding()
{
    Zu::MutexLock const guard(mutex);
    isComplete = true;
    changed.NotifyAll();
}

void ConnectionTable::WaitUntilEmpty(uint64 patienceUsec)
{
    Zu::MutexLock const guard(mutex);
    changed.WaitUntil(mutex, wTime_AfterUsec(patienceUsec),
                      [this]() ZU_REQUIRES(mutex) { return isComplete && connections.empty(); });
}

} // namespace ZuHost
