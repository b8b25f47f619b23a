#pragma once

#include "wApi/wExport.h"

#include <nlohmann/json_fwd.hpp>

namespace ZuCommon
{

class IMetricsSource;

/// A metrics record to JSON. It holds nothing; the operations may be called on an object or by the name of the class.
class ZUPLATFORM_API MetricsJsonSerializer
{
public:
    /// The values of the record as it stands.
    static nlohmann::json Serialize(IMetricsSource const& source);

    /// What describes the record.
    static nlohmann::json SerializeSchema(IMetricsSource const& source);
};

} // namespace ZuCommon
