#pragma once

#include "wApi/wTypes.h"

namespace ZuTest
{

/// While the object exists, this program reads CLOCK_REALTIME as `seconds` later than the kernel's clock.
///
/// A wait until a moment computed from such a reading lasts `seconds` longer, as if the machine's clock were set back
/// after the computation. Waits by CLOCK_MONOTONIC do not change.
class AdvancedCalendar final
{
public:
    explicit AdvancedCalendar(int64 seconds);
    ~AdvancedCalendar();

    AdvancedCalendar(AdvancedCalendar const&) = delete;
    AdvancedCalendar& operator=(AdvancedCalendar const&) = delete;
};

} // namespace ZuTest
