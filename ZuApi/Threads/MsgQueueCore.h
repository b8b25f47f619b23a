#pragma once

#include "wApi/wExport.h"
#include "wApi/wMsgQueue.h"
#include "wApi/wTypes.h"

namespace Zu::Internal
{

/// The part of `Zu::MsgQueue` that does not depend on the type of its records.
class ZUAPI_API MsgQueueCore
{
public:
    /// The labels of the exceptions; they must live as long as the queue.
    struct Labels
    {
        char const* construct;
        char const* add;
        char const* clear;
        char const* setMaxCount;
    };

    /// `freeRecord` frees a record that is dropped.
    MsgQueueCore(Labels const& operationLabels, void (*freeRecord)(void* record));
    ~MsgQueueCore();

    MsgQueueCore(MsgQueueCore const&) = delete;
    MsgQueueCore& operator=(MsgQueueCore const&) = delete;

    /// Takes over the record. After a throw the record is still the caller's.
    void Add(void* record);

    /// After success the caller owns `record`.
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
