#pragma once

#include "ZuVision/ZvMsg.h"

namespace ZuVision
{

/// The value of a measurement and the decision on it.
struct ZvMeasurementMsg;

extern ZUPLATFORM_API wClass const ZvMeasurementMsg_Class;

/// The value of a measurement that failed.
inline constexpr double MISSING_MEASUREMENT = -1.7976931348623157e308;

/// Makes a message with one reference. `decision` is 1 for a value within its limits and 0 for a value outside. The
/// allocator is ignored. Returns `Zu::Status::BAD_ARGUMENT` if `msg` is null.
ZUPLATFORM_API wStatus ZvMeasurementMsg_Construct(ZvMeasurementMsg** msg, double value, uint8 decision,
                                                  void* allocator);

/// Returns the value; `MISSING_MEASUREMENT` if `msg` is no measurement message.
ZUPLATFORM_API double ZvMeasurementMsg_Value(void const* msg) noexcept;

/// Returns the decision; 0 if `msg` is no measurement message.
ZUPLATFORM_API uint8 ZvMeasurementMsg_Decision(void const* msg) noexcept;

} // namespace ZuVision
