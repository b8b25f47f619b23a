#include "Host/Operation/OperationLog.h"

#include "Host/Security/UtcTime.h"
#include "wApi/wTime.h"

#include <algorithm>
#include <utility>

namespace ZuHost
{

OperationLog::OperationLog() = default;

OperationLog::~OperationLog() = default;

uint64 OperationLog::Add(Operation operation)
{
    uint64 const nowUsec = wTime_NowUsec();
    uint64 const agoUsec = nowUsec > operation.beginUsec ? nowUsec - operation.beginUsec : 0;
    operation.since = UtcTime::TextWithMilliseconds(UtcTime::NowUsec() - agoUsec);
    Zu::MutexLock const guard(lock);
    operation.number = lastNumber + 1;
    operations.push_back(std::move(operation));
    if (operations.size() > MAX_KEPT)
    {
        operations.pop_front();
    }
    return ++lastNumber;
}

void OperationLog::Remove(uint64 number)
{
    Zu::MutexLock const guard(lock);
    std::erase_if(operations, [number](Operation const& operation) { return operation.number == number; });
}

std::optional<OperationLog::Operation> OperationLog::EndOldest(Result result, int32 status, std::string const& text,
                                                               uint64 nowUsec)
{
    Zu::MutexLock const guard(lock);
    auto const found = std::ranges::find_if(operations, [](Operation const& operation) {
        return operation.isOfClient && operation.result == Result::RUNNING;
    });
    if (found == operations.end())
    {
        return std::nullopt;
    }
    found->text = text;
    found->status = status;
    found->endUsec = nowUsec;
    found->result = result;
    return *found;
}

std::vector<OperationLog::Operation> OperationLog::All() const
{
    Zu::MutexLock const guard(lock);
    return {operations.rbegin(), operations.rend()};
}

std::optional<OperationLog::Operation> OperationLog::Find(uint64 number) const
{
    Zu::MutexLock const guard(lock);
    auto const found = std::ranges::find(operations, number, &Operation::number);
    return found == operations.end() ? std::nullopt : std::optional(*found);
}

} // namespace ZuHost
