#pragma once

#include "wApi/wExport.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"

/// The time and the position at which the sensor took one frame.
struct wStamp
{
    uint16 stampStatus = 0;  ///< bits of the digital inputs
    uint64 stampCounter = 0; ///< number of the frame
    uint64 stampTime = 0;    ///< microseconds
    int64 stampEncoder = 0;  ///< ticks
    int64 stampValue = 0;

    bool operator==(wStamp const&) const = default;
};

/// A message in transport, with two numbers that accompany it. An immutable counted object of the class
/// `wMsgInfo_Class`. The struct is defined here so that the accessors are inline; only `wMsgInfo_Construct` makes one.
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

/// Makes a message info with one reference. It adds a reference to `msg`, which may be null. The allocator is ignored.
/// Returns `Zu::Status::BAD_ARGUMENT` if `info` is null.
ZUAPI_API wStatus wMsgInfo_Construct(wMsgInfo** info, uint64 first, uint64 second, void* msg, void* allocator);

// For a null info, the message is null and the numbers are 0.

/// Returns the message, borrowed, or null.
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
