#pragma once

#include "ZuRest/IBodySink.h"
#include "wApi/wMutex.h"

#include <functional>
#include <memory>
#include <string>

namespace ZuHost
{

/// The body of an answer that comes in parts, from its maker to the connection.
///
/// Each part is one chunk of HTTP/1.1, or follows the part before it for a client of HTTP/1.0. All operations are
/// thread-safe.
class BodyBuffer final : public ZuRest::IBodySink
{
public:
    /// What the connection is to send.
    struct Piece
    {
        std::string bytes;
        bool isLast = false; ///< the body ends behind these bytes
    };

    /// `newWake` is called when there is something to take, and not again before `Take`. It is called on the thread of
    /// the maker and must not block.
    BodyBuffer(bool newIsChunked, std::function<void()> newWake);
    ~BodyBuffer() override;

    BodyBuffer(BodyBuffer const&) = delete;
    BodyBuffer& operator=(BodyBuffer const&) = delete;

    bool IsOpen() const override;
    bool IsReady() const override;
    void Send(std::string part) override;
    void End() override;

    /// Takes all that waits.
    Piece Take();

    /// The client is gone. Destroys the function that wakes: its connection may end before the maker does.
    void Close();

private:
    using Wake = std::shared_ptr<std::function<void()> const>;

    Wake WakeOnce() ZU_REQUIRES(lock);

    bool const isChunked;

    mutable Zu::Mutex lock;        // a leaf: no other lock is taken under it
    Wake wake ZU_GUARDED_BY(lock); // null after the last piece was taken, and after `Close`
    std::string waiting ZU_GUARDED_BY(lock);
    bool hasEnded ZU_GUARDED_BY(lock) = false; // by the maker
    bool isClosed ZU_GUARDED_BY(lock) = false; // by the connection
    bool isAwake ZU_GUARDED_BY(lock) = false;
};

} // namespace ZuHost
