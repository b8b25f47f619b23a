#include "Ctl/Commands/PrometheusText.h"

#include <algorithm>
#include <string_view>

namespace ZuCtl
{

std::vector<Series> ReadPrometheusText(std::string const& text, std::string const& beginning)
{
    std::vector<Series> metrics;
    for (std::string_view rest = text; !rest.empty();)
    {
        std::size_t const end = std::min(rest.find('\n'), rest.size());
        std::string_view const line = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        std::size_t const space = line.rfind(' '); // labels may have spaces, numbers have none
        if (line.starts_with('#') || !line.starts_with(beginning) || space == std::string_view::npos)
        {
            continue;
        }
        std::string_view const key = line.substr(0, space);
        std::size_t const brace = std::min(key.find('{'), key.size());
        std::string_view labels = key.substr(brace);
        if (labels.size() > 1 && labels.ends_with('}'))
        {
            labels = labels.substr(1, labels.size() - 2);
        }
        metrics.push_back(
            {std::string(key.substr(0, brace)), std::string(labels), std::string(line.substr(space + 1))});
    }
    return metrics;
}

} // namespace ZuCtl
