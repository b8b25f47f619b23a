#include "ZuControl/Plc/PlcFormats.h"

#include "ZuControl/Plc/PlcWriters.h"

#include <algorithm>

namespace ZuControl::Plc
{

namespace
{

constexpr PlcFormat FORMATS[] = {
    {"csv", "text/csv; charset=utf-8; header=present", "csv", false, &WriteCsv},
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
