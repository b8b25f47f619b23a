#pragma once

#include "wApi/wExport.h"

#include <nlohmann/json_fwd.hpp>

namespace ZuCommon
{

class IMetricsSource;

/// Converts a metrics record to JSON. All operations are static; the class has no state.
class ZUPLATFORM_API MetricsJsonSerializer
{
public:
    /// Returns the present values of the record.
    static nlohmann::json Serialize(IMetricsSource const& source);

    /// Returns the schema of the record.
    static nlohmann::json SerializeSchema(IMetricsSource const& source);
};

} // namespace ZuCommon
