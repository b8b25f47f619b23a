#pragma once

#include "ZuApi/Event.h"
#include "ZuScan/AlignCompletionStatus.h"
#include "ZuScan/AlignState.h"
#include "wApi/wExport.h"

namespace ZuScan
{

class IActionTarget;

/// One scanner. Any thread may call; several threads may call at the same time.
class ZUPLATFORM_API IScanner
{
public:
    virtual ~IScanner();

    /// Returns null if the scanner offers no actions. The scanner owns the target.
    virtual IActionTarget* ActionTarget() = 0;

    /// Fires once at the end of each alignment, on a thread of the scanner. The scanner owns the event.
    virtual Zu::Event<AlignCompletionStatus>& AlignmentCompletedEvent() = 0;

    virtual AlignState GetAlignState() = 0;
};

} // namespace ZuScan
