#include "ZuRest/RequestPreferences.h"

#include <algorithm>
#include <cctype>

namespace ZuRest::RequestPreferences
{

namespace
{

bool IsSameText(std::string_view one, std::string_view other)
{
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); });
}

std::string_view Trimmed(std::string_view text)
{
    constexpr char const* BLANKS = " \t";
    text.remove_prefix(std::min(text.find_first_not_of(BLANKS), text.size()));
    text.remove_suffix(text.size() - (text.find_last_not_of(BLANKS) + 1));
    return text;
}

/// Removes the part of `text` up to the next `separator` and returns it without the blanks around it.
std::string_view TakePart(std::string_view& text, char separator)
{
    std::string_view const part = text.substr(0, text.find(separator));
    text.remove_prefix(std::min(part.size() + 1, text.size()));
    return Trimmed(part);
}

/// Whether the parameters of a media range contain "q=0".
bool IsExcluded(std::string_view parameters)
{
    while (!parameters.empty())
    {
        std::string_view value = TakePart(parameters, ';');
        std::string_view const name = TakePart(value, '=');
        if (IsSameText(name, "q") && value.starts_with('0') && value.find_first_not_of("0.") == std::string_view::npos)
        {
            return true;
        }
    }
    return false;
}

} // namespace

bool Admits(std::string_view accept, std::string_view type)
{
    bool isAdmitted = Trimmed(accept).empty();
    while (!accept.empty() && !isAdmitted)
    {
        std::string_view parameters = TakePart(accept, ',');
        std::string_view const range = TakePart(parameters, ';');
        bool const isWildcard =
            range.ends_with("/*") && IsSameText(range.substr(0, range.size() - 1), type.substr(0, type.find('/') + 1));
        isAdmitted = (range == "*/*" || isWildcard || IsSameText(range, type)) && !IsExcluded(parameters);
    }
    return isAdmitted;
}

bool IsStrict(std::string_view prefer)
{
    while (!prefer.empty())
    {
        std::string_view parameters = TakePart(prefer, ',');
        std::string_view value = TakePart(parameters, ';');
        std::string_view const name = TakePart(value, '=');
        if (IsSameText(name, "handling"))
        {
            value = Trimmed(value);
            return value == "strict" || value == "\"strict\"";
        }
    }
    return false;
}

} // namespace ZuRest::RequestPreferences
