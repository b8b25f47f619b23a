#pragma once

#include <string>
#include <vector>

namespace ZuCtl
{

/// One line of a text for Prometheus.
struct Series
{
    std::string name;
    std::string labels; ///< as in the text, without braces
    std::string value;

    bool operator==(Series const&) const = default;
};

/// The lines of a text for Prometheus whose names begin with `beginning`. Lines of another form are left out.
std::vector<Series> ReadPrometheusText(std::string const& text, std::string const& beginning);

} // namespace ZuCtl
