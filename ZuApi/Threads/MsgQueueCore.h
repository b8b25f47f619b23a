#pragma once

#include "wApi/wExport.h"
#include "wApi/wMsgQueue.h"
#include "wApi/wTypes.h"

namespace Zu::Internal
{

/// What Zu::MsgQueue does without knowing the type of its records.
class ZUAPI_API MsgQueueCore
{
public:
    /// Labels of what is thrown; they live for as long as the queue.
    struct Labels
    {
        char const* construct;
        char const* add;
        char const* clear;
        char const* setMaxCount;
    };

    /// `freeRecord` ends a record that is dropped.
    MsgQueueCore(Labels const& operationLabels, void (*freeRecord)(void* record));
    ~MsgQueueCore();

    MsgQueueCore(MsgQueueCore const&) = delete;
    MsgQueueCore& operator=(MsgQueueCore const&) = delete;

    /// Takes the record over; when it throws, the record is still the caller's.
    void Add(void* record);

    /// On success `record` is the caller's.
    wStatus Remove(void*& record, uint64 timeoutUsec);

    void Clear();
    void SetMaxCount(uint64 maxCount);

private:
    static void Drop(void* item, void* context);

    Labels const labels;
    void (*const freeRecord)(void* record);
    wMsgQueue queue;
};

} // namespace Zu::Internal
