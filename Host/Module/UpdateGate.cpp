#include "Host/Module/UpdateGate.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"
#include "wApi/wMutex.h"
#include "wApi/wTime.h"

namespace ZuHost
{

UpdateGate::Request::Request(UpdateGate& usedGate) : gate(usedGate)
{
}

UpdateGate::Request::~Request()
{
    gate.CloseOfThisThread();
}

UpdateGate::UpdateGate(uint64 newPatienceUsec) : patienceUsec(newPatienceUsec)
{
}

UpdateGate::~UpdateGate() = default;

void UpdateGate::BeginUpdate(bool /*exclusive*/)
{
    Zu::MutexLock const guard(lock);
    auto const isFree = [this]() ZU_REQUIRES(lock) { return depth == 0 || owner == std::this_thread::get_id(); };
    if (!closed.WaitUntil(lock, wTime_AfterUsec(patienceUsec), isFree))
    {
        ZU_THROW(Zu::Status::BUSY, "Another change of the configuration does not come to an end");
    }
    owner = std::this_thread::get_id();
    ++depth;
}

void UpdateGate::EndUpdate()
{
    {
        Zu::MutexLock const guard(lock);
        if (depth == 0 || owner != std::this_thread::get_id() || --depth > 0)
        {
            return;
        }
        owner = {};
    }
    closed.NotifyAll();
}

bool UpdateGate::IsOpen() const
{
    Zu::MutexLock const guard(lock);
    return depth > 0;
}

bool UpdateGate::IsOpenHere() const
{
    Zu::MutexLock const guard(lock);
    return depth > 0 && owner == std::this_thread::get_id();
}

void UpdateGate::CloseOfThisThread()
{
    {
        Zu::MutexLock const guard(lock);
        if (depth == 0 || owner != std::this_thread::get_id())
        {
            return;
        }
        depth = 0;
        owner = {};
    }
    closed.NotifyAll();
    ZU_LOG_INFO("A request has ended during its change of the configuration. What it has changed stays");
}

} // namespace ZuHost
