#pragma once

#include "ZuApi/Threads/MsgQueueCore.h"
#include "ZuApi/Threads/MsgQueueLabel.h"

#include <memory>

namespace Zu
{

/// A queue of heap records between threads, first in, first out. It owns the records that it holds and frees those that
/// nobody removes. Any thread may call the operations; failures are thrown with no text.
template <typename T>
class MsgQueue
{
public:
    /// Unbounded until a maximum is set.
    MsgQueue() : core(LABELS, [](void* record) { delete static_cast<T*>(record); })
    {
    }

    MsgQueue(MsgQueue const&) = delete;
    MsgQueue& operator=(MsgQueue const&) = delete;

    /// Puts the record at the end, without waiting. What is refused is freed: -977 at the maximum, -997 for null.
    void Add(std::unique_ptr<T> record)
    {
        core.Add(record.get());
        static_cast<void>(record.release()); // the queue's by now
    }

    /// Takes the first record, waiting for it for `timeoutUsec` microseconds. Any status but 1 leaves `record` alone; -993
    /// is the time-out.
    [[nodiscard]] wStatus Remove(std::unique_ptr<T>& record, uint64 timeoutUsec)
    {
        void* removed = nullptr;
        wStatus const status = core.Remove(removed, timeoutUsec);
        if (removed != nullptr)
        {
            record.reset(static_cast<T*>(removed));
        }
        return status;
    }

    /// Frees every record.
    void Clear()
    {
        core.Clear();
    }

    /// How many records it takes from now on, at least 1. What it holds beyond that stays until it is removed.
    void SetMaxCount(uint64 maxCount)
    {
        core.SetMaxCount(maxCount);
    }

private:
    using Label = Internal::MsgQueueLabel;

    static constexpr Label CONSTRUCT = Label::Of<T>("MsgQueue");
    static constexpr Label ADD = Label::Of<T>("Add");
    static constexpr Label CLEAR = Label::Of<T>("Clear");
    static constexpr Label SET_MAX_COUNT = Label::Of<T>("SetMaxCount");
    static constexpr Internal::MsgQueueCore::Labels LABELS{CONSTRUCT.text, ADD.text, CLEAR.text, SET_MAX_COUNT.text};

    Internal::MsgQueueCore core;
};

} // namespace Zu
