#include "wBeacon/wMsgInfo.h"

#include "wApi/wTypes.h"

#include <new>

wMsgInfo::wMsgInfo(uint64 firstNumber, uint64 secondNumber, void* carried) noexcept
    : wObject(wMsgInfo_Class), first(firstNumber), second(secondNumber), msg(wHandle_Share(carried))
{
}

wClass const wMsgInfo_Class{"wMsgInfo", nullptr, [](wObject* object) { delete static_cast<wMsgInfo*>(object); }};

wStatus wMsgInfo_Construct(wMsgInfo** info, uint64 first, uint64 second, void* msg, void* /*allocator*/)
{
    if (info == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    auto* const made = new (std::nothrow) wMsgInfo(first, second, msg);
    if (made == nullptr)
    {
        return Zu::Status::FAILURE;
    }
    *info = made;
    return Zu::Status::SUCCESS;
}
