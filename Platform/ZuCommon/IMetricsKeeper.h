#pragma once

#include "wApi/wExport.h"

namespace Zu::Properties
{
class Structure;
}

namespace ZuCommon
{

/// Who keeps a metrics record and brings it up to date.
class ZUPLATFORM_API IMetricsKeeper
{
public:
    virtual ~IMetricsKeeper(); // first of the slots that plug-ins call through: never move one

    /// Brings the record up to date and gives it; it stays the keeper's.
    virtual Zu::Properties::Structure& UpdateMetrics() = 0;

    /// Starts counting anew.
    virtual void ResetMetrics() = 0;
};

} // namespace ZuCommon
