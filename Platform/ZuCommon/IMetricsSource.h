#pragma once

#include "wApi/wExport.h"

namespace Zu::Properties
{
class Structure;
}

namespace ZuCommon
{

/// An object with a metrics record that others may read.
class ZUPLATFORM_API IMetricsSource
{
public:
    virtual ~IMetricsSource(); // slot order is part of the plug-in interface: append only

    /// Returns the record as of its last update. The source owns the record.
    virtual Zu::Properties::Structure const& GetMetrics() const = 0;
};

} // namespace ZuCommon
