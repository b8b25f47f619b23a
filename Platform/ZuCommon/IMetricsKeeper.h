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
    ///
    /// For a protocol, a timer thread calls it four times a second; the calls for one keeper do not overlap. It must
    /// not block: the updates of other keepers wait for it. An exception is logged, and the keepers after this one miss
    /// the update.
    virtual Zu::Properties::Structure& UpdateMetrics() = 0;

    /// Resets the counters.
    virtual void ResetMetrics() = 0;
};

} // namespace ZuCommon
