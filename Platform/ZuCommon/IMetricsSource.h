#pragma once

#include "wApi/wExport.h"

namespace Zu::Properties
{
class Structure;
}

namespace ZuCommon
{

/// Who shows a metrics record.
class ZUPLATFORM_API IMetricsSource
{
public:
    virtual ~IMetricsSource(); // first of the slots that plug-ins call through: never move one

    /// The record as it was last brought up to date; it stays the source's.
    virtual Zu::Properties::Structure const& GetMetrics() const = 0;
};

} // namespace ZuCommon
