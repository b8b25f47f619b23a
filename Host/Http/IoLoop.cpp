#include "Host/Http/IoLoop.h"

#include "Host/Http/IIoUser.h"
#include "ZuApi/Exception.h"
#include "wApi/wTime.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace ZuHost
{

namespace
{

/// What epoll is to wait, in its milliseconds: rounded up, lest it looks again and again just ahead of the moment.
int PatienceMs(uint64 deadlineUsec)
{
    constexpr uint64 LONGEST_MS = std::numeric_limits<int>::max();
    uint64 const nowUsec = wTime_NowUsec();
    uint64 const leftUsec = deadlineUsec > nowUsec ? deadlineUsec - nowUsec : 0;
    return static_cast<int>(std::min(leftUsec / 1000 + (leftUsec % 1000 != 0 ? 1 : 0), LONGEST_MS));
}

} // namespace

IoLoop::IoLoop()
    : poll(epoll_create1(EPOLL_CLOEXEC)), wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), nowUsec(wTime_NowUsec())
{
    if (poll.Number() == Descriptor::NONE || wake.Number() == Descriptor::NONE)
    {
        ZU_THROW(Zu::Status::FAILURE, "Unable to watch sockets: %s", std::strerror(errno));
    }
    Control(EPOLL_CTL_ADD, wake.Number(), EPOLLIN | EPOLLET, nullptr); // each write is news: nobody has to read
}

IoLoop::~IoLoop() = default;

void IoLoop::Watch(int descriptor, uint32 events, IIoUser& user)
{
    Control(EPOLL_CTL_ADD, descriptor, events, &user);
}

void IoLoop::Change(int descriptor, uint32 events, IIoUser& user)
{
    Control(EPOLL_CTL_MOD, descriptor, events, &user);
}

void IoLoop::Control(int operation, int descriptor, uint32 events, IIoUser* user)
{
    epoll_event event{};
    event.events = events;
    event.data.ptr = user;
    if (epoll_ctl(poll.Number(), operation, descriptor, &event) != 0)
    {
        ZU_THROW(Zu::Status::FAILURE, "Unable to watch a socket: %s", std::strerror(errno));
    }
}

void IoLoop::Post(std::function<void()> step)
{
    bool mustWake = false;
    {
        std::scoped_lock const guard(lock);
        posted.push_back(std::move(step));
        mustWake = std::exchange(isResting, false);
    }
    if (mustWake)
    {
        eventfd_write(wake.Number(), 1); // cannot fail before it has counted to the end of 64 bits
    }
}

void IoLoop::RunOne(uint64 deadlineUsec)
{
    if (HasReady())
    {
        epoll_event const event = ready[nextReady++];
        if (event.data.ptr != nullptr)
        {
            static_cast<IIoUser*>(event.data.ptr)->OnReady(event.events);
        }
    }
    else if (duePosted != 0)
    {
        --duePosted;
        TakePosted()();
    }
    else
    {
        Look(deadlineUsec);
    }
}

std::function<void()> IoLoop::TakePosted()
{
    std::scoped_lock const guard(lock);
    std::function<void()> step = std::move(posted.front());
    posted.pop_front();
    return step;
}

void IoLoop::Look(uint64 deadlineUsec)
{
    {
        std::scoped_lock const guard(lock);
        isResting = posted.empty();
        deadlineUsec = isResting ? deadlineUsec : 0;
    }
    int const count = epoll_wait(poll.Number(), ready.data(), static_cast<int>(ready.size()), PatienceMs(deadlineUsec));
    nextReady = 0;
    readyCount = static_cast<std::size_t>(std::max(count, 0)); // a signal makes it look again
    nowUsec = wTime_NowUsec();
    std::scoped_lock const guard(lock);
    isResting = false;
    duePosted = posted.size();
}

bool IoLoop::HasReady() const noexcept
{
    return nextReady != readyCount;
}

uint64 IoLoop::NowUsec() const noexcept
{
    return nowUsec;
}

} // namespace ZuHost
