#pragma once

#include "ZuVision/ZvMsg.h"

namespace ZuVision
{

/// The value of a measurement and what was decided about it.
struct ZvMeasurementMsg;

extern ZUPLATFORM_API wClass const ZvMeasurementMsg_Class;

/// Stands for a value that could not be measured.
inline constexpr double MISSING_MEASUREMENT = -1.7976931348623157e308;

/// A new message with one reference. `decision` is 1 for a value within its limits, 0 for one outside. 1 on success; the
/// allocator is passed through, null is the default one.
ZUPLATFORM_API wStatus ZvMeasurementMsg_Construct(ZvMeasurementMsg** msg, double value, uint8 decision,
                                                  void* allocator);

/// MISSING_MEASUREMENT for what is no measurement message.
ZUPLATFORM_API double ZvMeasurementMsg_Value(void const* msg) noexcept;

/// 0 for what is no measurement message.
ZUPLATFORM_API uint8 ZvMeasurementMsg_Decision(void const* msg) noexcept;

} // namespace ZuVision
