#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

/// Microseconds of a monotonic clock. Only differences have a meaning.
ZUAPI_API uint64 wTime_NowUsec() noexcept;

/// The moment `timeoutUsec` microseconds from now on the same clock; `wTIMEOUT_INFINITE`, which is never reached, if
/// that moment is beyond the range.
ZUAPI_API uint64 wTime_AfterUsec(uint64 timeoutUsec) noexcept;
