#include "ZuApi/Threads/MsgQueueCore.h"

#include "ZuApi/Exception.h"
#include "ZuApi/PointerWrapper.h"
#include "wApi/wObject.h"

namespace Zu::Internal
{

namespace
{

/// As `ZU_CHECK`, with a label that names the type of the record.
void Check(wStatus status, int line, char const* label)
{
    if (status != Status::SUCCESS)
    {
        throw Exception(line, __FILE__, status, label);
    }
}

} // namespace

MsgQueueCore::MsgQueueCore(Labels const& operationLabels, void (*freeDroppedRecord)(void* record))
    : labels(operationLabels), freeRecord(freeDroppedRecord)
{
    Check(wMsgQueue_Construct(&queue, &PointerWrapper_Class, 0, nullptr), __LINE__, labels.construct);
    Check(wMsgQueue_SetDropHandler(queue, &MsgQueueCore::Drop, this), __LINE__, labels.construct);
}

// The destructor of `queue` drops the remaining records; it runs first, while `freeRecord` is still valid.
MsgQueueCore::~MsgQueueCore() = default;

void MsgQueueCore::Add(void* record)
{
    Check(record != nullptr ? Status::SUCCESS : Status::BAD_ARGUMENT, __LINE__, labels.add);
    PointerWrapper* made = nullptr;
    Check(PointerWrapper_Construct(&made, record, nullptr), __LINE__, labels.add);
    wHandle<PointerWrapper> wrapper(made);
    Check(wMsgQueue_AddEx(queue, wrapper.get(), 0), __LINE__, labels.add);
    static_cast<void>(wrapper.release()); // the queue owns it now
}

wStatus MsgQueueCore::Remove(void*& record, uint64 timeoutUsec)
{
    void* item = nullptr;
    wStatus const status = wMsgQueue_Remove(queue, &item, timeoutUsec);
    if (status == Status::SUCCESS)
    {
        wHandle<PointerWrapper> const wrapper(static_cast<PointerWrapper*>(item));
        record = PointerWrapper_Pointer(wrapper.get());
    }
    return status;
}

void MsgQueueCore::Clear()
{
    Check(wMsgQueue_PurgeEx(queue, wMsgQueue::PURGE_DROP), __LINE__, labels.clear);
}

void MsgQueueCore::SetMaxCount(uint64 maxCount)
{
    Check(wMsgQueue_SetMaxCount(queue, maxCount), __LINE__, labels.setMaxCount);
}

void MsgQueueCore::Drop(void* item, void* context)
{
    auto const* const core = static_cast<MsgQueueCore const*>(context);
    core->freeRecord(PointerWrapper_Pointer(static_cast<PointerWrapper const*>(item)));
}

} // namespace Zu::Internal
