#include "ZuControl/Plc/PlcFormats.h"

#include "ZuControl/Plc/PlcWriters.h"

#include <algorithm>

namespace ZuControl::Plc
{

namespace
{

constexpr PlcFormat FORMATS[] = {
    {"csv", "text/csv; charset=utf-8; header=present", "csv", false, &WriteCsv},
    {"json", "application/json", "json", false, &WriteJson},
    {"json-schema", "application/schema+json", "schema.json", false, &WriteJsonSchema},
    {"node-red", "application/json", "flow.json", true, &WriteNodeRed},
    {"python", "text/x-python; charset=utf-8", "py", true, &WritePython},
    {"shell", "text/x-shellscript; charset=utf-8", "sh", true, &WriteShell},
    {"structured-text", "text/plain; charset=us-ascii", "st", true, &WriteStructuredText},
};

} // namespace

std::span<PlcFormat const> PlcFormats()
{
    return FORMATS;
}

PlcFormat const* FindPlcFormat(std::string_view name)
{
    auto const* const found =
        std::ranges::find_if(FORMATS, [name](PlcFormat const& format) { return format.name == name; });
    return found != std::end(FORMATS) ? found : nullptr;
}

} // namespace ZuControl::Plc
