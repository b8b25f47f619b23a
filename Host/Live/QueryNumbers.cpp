#include "Host/Live/QueryNumbers.h"

#include "ZuApi/Exception.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string_view>

namespace ZuHost
{

QueryNumbers::QueryNumbers(std::string const& query)
{
    std::string_view left = query;
    while (!left.empty())
    {
        std::string_view const parameter = left.substr(0, left.find('&'));
        left.remove_prefix(std::min(parameter.size() + 1, left.size()));
        std::size_t const equals = std::min(parameter.find('='), parameter.size());
        std::string_view const value = parameter.substr(std::min(equals + 1, parameter.size()));
        if (!parameter.empty() && parameter != "schema=true")
        {
            texts.insert_or_assign(std::string(parameter.substr(0, equals)), std::string(value));
        }
    }
}

QueryNumbers::~QueryNumbers() = default;

double QueryNumbers::Take(std::string const& key, double least, double most, double usual)
{
    auto const found = texts.find(key);
    if (found == texts.end())
    {
        return usual;
    }
    std::string const text = found->second;
    texts.erase(found);
    double number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc::result_out_of_range)
    {
        number = std::strtod(text.c_str(), nullptr); // 0 or infinite
    }
    if (end != text.data() + text.size() || error == std::errc::invalid_argument || std::isnan(number))
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The parameter '%s' is a number.", key.c_str());
    }
    if (number < least)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The parameter '%s' is at least %g.", key.c_str(), least);
    }
    return std::min(number, most);
}

uint64 QueryNumbers::TakeCount(std::string const& key, uint64 least, uint64 most, uint64 usual)
{
    double const number = Take(key, static_cast<double>(least), static_cast<double>(most), static_cast<double>(usual));
    return static_cast<uint64>(number);
}

void QueryNumbers::CheckAllTaken() const
{
    if (!texts.empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "There is no parameter '%s' here.", texts.begin()->first.c_str());
    }
}

} // namespace ZuHost
