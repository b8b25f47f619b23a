#pragma once

#include "wApi/wExport.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"

/// A message on its way, with two numbers that travel along. A counted object of the class wMsgInfo_Class; it never changes.
struct wMsgInfo;

extern ZUAPI_API wClass const wMsgInfo_Class;

/// Makes a message info with one reference around `msg`, which gains a reference and may be null. The allocator is passed
/// through. -997 when `info` is null.
ZUAPI_API wStatus wMsgInfo_Construct(wMsgInfo** info, uint64 first, uint64 second, void* msg, void* allocator);

// Of a null info the message is null and the numbers are 0.

/// The message, borrowed; null when there is none.
ZUAPI_API void* wMsgInfo_Msg(wMsgInfo const* info);

ZUAPI_API uint64 wMsgInfo_First(wMsgInfo const* info);
ZUAPI_API uint64 wMsgInfo_Second(wMsgInfo const* info);
