#pragma once

#include "wApi/wExport.h"
#include "wApi/wHandle.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"

/// A message on its way, with two numbers that travel along. A counted object of the class wMsgInfo_Class; it never changes.
/// It is known here so that a question costs no call; `wMsgInfo_Construct` alone makes it.
struct wMsgInfo final : wObject
{
    wMsgInfo(uint64 firstNumber, uint64 secondNumber, void* carried) noexcept;
    ~wMsgInfo() = default;

    wMsgInfo(wMsgInfo const&) = delete;
    wMsgInfo& operator=(wMsgInfo const&) = delete;

    uint64 const first;
    uint64 const second;
    wHandle<void> const msg;
};

extern ZUAPI_API wClass const wMsgInfo_Class;

/// Makes a message info with one reference around `msg`, which gains a reference and may be null. The allocator is passed
/// through. -997 when `info` is null.
ZUAPI_API wStatus wMsgInfo_Construct(wMsgInfo** info, uint64 first, uint64 second, void* msg, void* allocator);

// Of a null info the message is null and the numbers are 0.

/// The message, borrowed; null when there is none.
inline void* wMsgInfo_Msg(wMsgInfo const* info)
{
    return info != nullptr ? info->msg.get() : nullptr;
}

inline uint64 wMsgInfo_First(wMsgInfo const* info)
{
    return info != nullptr ? info->first : 0;
}

inline uint64 wMsgInfo_Second(wMsgInfo const* info)
{
    return info != nullptr ? info->second : 0;
}
