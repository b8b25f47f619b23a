#pragma once

#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <memory>
#include <unordered_map>
#include <vector>

namespace ZuHost
{

class HttpConnection;

/// The existing connections of a server. All operations are thread-safe.
class ConnectionTable final
{
public:
    using Client = std::shared_ptr<HttpConnection>;

    ConnectionTable();
    ~ConnectionTable();

    ConnectionTable(ConnectionTable const&) = delete;
    ConnectionTable& operator=(ConnectionTable const&) = delete;

    /// Adds a connection; returns the number of the others.
    uint64 Add(Client const& client);

    /// The connection is being destroyed.
    void Remove(HttpConnection& connection) noexcept;

    /// Returns the connection that makes room for a further one: the longest idle connection of the address with the
    /// most idle connections. It is not chosen again before it is busy. Returns null if no connection is idle.
    Client TakeLongestIdle();

    std::vector<Client> All(); ///< without connections that are being destroyed

    void EndAdding(); ///< there is no `Add` any more

    /// Waits for `EndAdding` and until no connection exists, at most `patienceUsec`.
    void WaitUntilEmpty(uint64 patienceUsec);

private:
    Zu::Mutex mutex; // a leaf: no other lock is taken under it
    Zu::CondVar changed;
    std::unordered_map<HttpConnection*, std::weak_ptr<HttpConnection>> connections ZU_GUARDED_BY(mutex);
    bool isComplete ZU_GUARDED_BY(mutex) = false;
};

} // namespace ZuHost
