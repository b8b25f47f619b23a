#pragma once

#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

namespace SparkplugMqtt
{

/// The changed metrics of one moment, encoded and not yet in a message.
struct Sample
{
    uint64 layout = 0; ///< of the outputs; the births must have the same one
    std::vector<uint8> metrics;
};

/// Passes samples from the thread that encodes them to the network thread. When it is full, the oldest sample makes
/// room. It allocates until its buffers have their size, and then nothing more.
///
/// Threads: any.
class SampleQueue final
{
public:
    static constexpr std::size_t CAPACITY = 1024;

    /// `whenFilled` wakes the network thread; it is called after each `Push` and must not block.
    explicit SampleQueue(std::function<void()> whenFilled);
    SampleQueue(SampleQueue const&) = delete;
    SampleQueue& operator=(SampleQueue const&) = delete;

    void Push(uint64 layout, std::span<uint8 const> metrics);

    /// Takes the oldest sample. Returns false if there is none. The buffer of `sample` goes back into the queue.
    bool Take(Sample& sample);

    uint64 DroppedCount() const; ///< samples that made room

private:
    std::function<void()> const filled;

    mutable Zu::Mutex lock; // a leaf
    std::vector<Sample> ring ZU_GUARDED_BY(lock);
    std::size_t first ZU_GUARDED_BY(lock) = 0;
    std::size_t count ZU_GUARDED_BY(lock) = 0;
    uint64 dropped ZU_GUARDED_BY(lock) = 0;
};

} // namespace SparkplugMqtt
