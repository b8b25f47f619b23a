#pragma once

#include "ZuApi/Event.h"
#include "ZuScan/AlignCompletionStatus.h"
#include "ZuScan/AlignState.h"
#include "wApi/wExport.h"

namespace ZuScan
{

class IActionTarget;

/// One scanner. Any thread may call, several at once.
class ZUPLATFORM_API IScanner
{
public:
    virtual ~IScanner();

    /// Null when the scanner offers no actions; the scanner's.
    virtual IActionTarget* ActionTarget() = 0;

    /// Fires once at the end of each alignment, on a thread of the scanner. The scanner's.
    virtual Zu::Event<AlignCompletionStatus>& AlignmentCompletedEvent() = 0;

    virtual AlignState GetAlignState() = 0;
};

} // namespace ZuScan
