#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

/// Microseconds on a clock that never jumps; only differences have a meaning.
ZUAPI_API uint64 wTime_NowUsec() noexcept;

/// The moment `timeoutUsec` from now on the same clock; wTIMEOUT_INFINITE, which is never reached, for one too far away.
ZUAPI_API uint64 wTime_AfterUsec(uint64 timeoutUsec) noexcept;
