#pragma once

#include "ZuApi/Properties/Metric.h"
#include "ZuApi/Structure.h"

#include <string>

namespace PluginCommon
{

/// The number under `key` in a metrics record.
inline uint64 Number(Zu::Properties::Structure& record, std::string const& key)
{
    return dynamic_cast<Zu::Properties::Metric&>(*record.Find(key)).Get();
}

} // namespace PluginCommon
