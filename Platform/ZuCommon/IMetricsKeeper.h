#pragma once

#include "wApi/wExport.h"

namespace Zu::Properties
{
class Structure;
}

namespace ZuCommon
{

/// An object that owns a metrics record and keeps it up to date.
class ZUPLATFORM_API IMetricsKeeper
{
public:
    virtual ~IMetricsKeeper(); // slot order is part of the plug-in interface: append only

    /// Updates the record and returns it. The keeper owns the record.
    virtual Zu::Properties::Structure& UpdateMetrics() = 0;

    /// Resets the counters.
    virtual void ResetMetrics() = 0;
};

} // namespace ZuCommon
