#include "Plugins/SparkplugMqtt/SampleQueue.h"

#include <utility>

namespace SparkplugMqtt
{

SampleQueue::SampleQueue(std::function<void()> whenFilled) : filled(std::move(whenFilled)), ring(CAPACITY)
{
}

void SampleQueue::Push(uint64 layout, std::span<uint8 const> metrics)
{
    {
        Zu::MutexLock const guard(lock);
        if (count == CAPACITY)
        {
            first = (first + 1) % CAPACITY;
            --count;
            ++dropped;
        }
        Sample& sample = ring[(first + count) % CAPACITY];
        sample.layout = layout;
        sample.metrics.assign(metrics.begin(), metrics.end());
        ++count;
    }
    filled();
}

bool SampleQueue::Take(Sample& sample)
{
    Zu::MutexLock const guard(lock);
    if (count == 0)
    {
        return false;
    }
    std::swap(sample, ring[first]);
    first = (first + 1) % CAPACITY;
    --count;
    return true;
}

uint64 SampleQueue::DroppedCount() const
{
    Zu::MutexLock const guard(lock);
    return dropped;
}

} // namespace SparkplugMqtt
