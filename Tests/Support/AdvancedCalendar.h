#pragma once

#include "wApi/wTypes.h"

namespace ZuTest
{

/// While it lives, CLOCK_REALTIME is read in this program as so many seconds later than the kernel has it.
///
/// A wait until a moment that was computed from that reading lasts as much longer, as it does when the machine's clock
/// is set back behind the computation. Waits by CLOCK_MONOTONIC are as they always are.
class AdvancedCalendar final
{
public:
    explicit AdvancedCalendar(int64 seconds);
    ~AdvancedCalendar();

    AdvancedCalendar(AdvancedCalendar const&) = delete;
    AdvancedCalendar& operator=(AdvancedCalendar const&) = delete;
};

} // namespace ZuTest
