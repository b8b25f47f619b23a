#pragma once

#include "ZuScan/Sensor.h"

namespace ZuTest
{

/// A scanner that offers nothing.
class FakeScanner final : public ZuScan::IScanner
{
public:
    ZuScan::IActionTarget* ActionTarget() override
    {
        return nullptr;
    }

    Zu::Event<ZuScan::AlignCompletionStatus>& AlignmentCompletedEvent() override
    {
        return event;
    }

    ZuScan::AlignState GetAlignState() override
    {
        return ZuScan::AlignState::NOT_ALIGNED;
    }

private:
    Zu::Event<ZuScan::AlignCompletionStatus> event;
};

} // namespace ZuTest
