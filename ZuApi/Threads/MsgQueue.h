#pragma once

#include "ZuApi/Threads/MsgQueueCore.h"
#include "ZuApi/Threads/MsgQueueLabel.h"

#include <memory>

namespace Zu
{

/// A queue of heap records between threads, first in, first out. It owns the records in it: `Clear` and the destructor
/// free them. Any thread may call the operations. Except for `Remove`, which returns its status, they throw the failing
/// status without a text.
template <typename T>
class MsgQueue
{
public:
    /// Makes a queue without a limit.
    MsgQueue() : core(LABELS, [](void* record) { delete static_cast<T*>(record); })
    {
    }

    MsgQueue(MsgQueue const&) = delete;
    MsgQueue& operator=(MsgQueue const&) = delete;

    /// Appends `record` without waiting. Throws `Zu::Status::FULL` at the maximum count and `Zu::Status::BAD_ARGUMENT`
    /// for null; the record is then freed.
    void Add(std::unique_ptr<T> record)
    {
        core.Add(record.get());
        static_cast<void>(record.release()); // the queue owns it now
    }

    /// Removes the first record; waits for one up to `timeoutUsec` microseconds and then returns
    /// `Zu::Status::TIME_OUT`. `record` only changes with `Zu::Status::SUCCESS`.
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

    /// Frees every record in the queue.
    void Clear()
    {
        core.Clear();
    }

    /// Sets how many records the queue accepts from now on, at least 1. Records beyond a lower limit stay until they
    /// are removed.
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
