#pragma once

#include "Host/Http/Descriptor.h"
#include "wApi/wTypes.h"

#include <array>
#include <deque>
#include <functional>
#include <mutex>
#include <sys/epoll.h>

namespace ZuHost
{

class IIoUser;

/// Tells the users of sockets what happens to them and runs what is posted, one call at a time.
///
/// It has no thread. All but `Post` belongs to the one that runs it, which may be another one from call to call and even
/// while a call is still under way (WorkerPool): behind a call nothing is touched any more.
class IoLoop final
{
public:
    IoLoop();
    ~IoLoop(); ///< what was posted and has not run is dropped

    IoLoop(IoLoop const&) = delete;
    IoLoop& operator=(IoLoop const&) = delete;

    /// From now on, until the descriptor is closed, `user` is told of `events` of epoll. The user outlives the step that is
    /// posted behind the closing: what has been seen already is still told. Throws 0 when the system refuses.
    void Watch(int descriptor, uint32 events, IIoUser& user);

    /// Other events, 0 for none, for one that is watched.
    void Change(int descriptor, uint32 events, IIoUser& user);

    /// Runs `step` soon, behind what is ready already. Any thread may call.
    void Post(std::function<void()> step);

    /// One call of a user or of a step. Where nothing is ready it waits, not beyond the moment `deadlineUsec` of wTime, and
    /// calls nothing yet. What is called may throw.
    void RunOne(uint64 deadlineUsec);

    /// Whether it has seen more that it has not told yet.
    bool HasReady() const noexcept;

    /// The moment of wTime at which it last looked what is ready.
    uint64 NowUsec() const noexcept;

private:
    static constexpr std::size_t MAX_READY = 64; // more are seen at the next look

    void Control(int operation, int descriptor, uint32 events, IIoUser* user);
    void Look(uint64 deadlineUsec);
    std::function<void()> TakePosted();

    Descriptor poll;
    Descriptor wake;
    std::array<epoll_event, MAX_READY> ready{};
    std::size_t readyCount = 0;
    std::size_t nextReady = 0;
    std::size_t duePosted = 0; // of the steps that wait, those that come before the next look
    uint64 nowUsec;

    std::mutex lock; // a leaf: guards the two below
    std::deque<std::function<void()>> posted;
    bool isResting = false; // it has to be woken for a step
};

} // namespace ZuHost
