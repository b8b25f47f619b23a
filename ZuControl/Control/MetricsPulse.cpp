#include "ZuControl/Control/MetricsPulse.h"

#include "wApi/wMutex.h"
#include "wApi/wTime.h"

namespace ZuControl
{

MetricsPulse::Round::Round(MetricsPulse& usedPulse) : pulse(usedPulse)
{
    Zu::MutexLock const guard(pulse.lock);
    pulse.metrics.roundSinceUsec = wTime_NowUsec();
}

MetricsPulse::Round::~Round()
{
    Zu::MutexLock const guard(pulse.lock);
    pulse.metrics.roundSinceUsec = 0;
    if (isDone)
    {
        pulse.metrics.lastDoneUsec = wTime_NowUsec();
        return;
    }
    pulse.metrics.lastFailureUsec = wTime_NowUsec();
    pulse.metrics.failedTypeName.swap(pulse.metrics.typeName); // a copy might throw
}

void MetricsPulse::Round::ComeTo(std::string const& typeName)
{
    Zu::MutexLock const guard(pulse.lock);
    pulse.metrics.typeName = typeName;
}

void MetricsPulse::Round::Done()
{
    isDone = true;
}

MetricsPulse::MetricsPulse()
{
    metrics.lastDoneUsec = wTime_NowUsec();
}

ControlVitals::Metrics MetricsPulse::Read() const
{
    Zu::MutexLock const guard(lock);
    return metrics;
}

} // namespace ZuControl
