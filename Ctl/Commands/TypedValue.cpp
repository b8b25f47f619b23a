#include "Ctl/Commands/TypedValue.h"

#include "Ctl/Outcome/Failure.h"

namespace ZuCtl
{

using nlohmann::json;

namespace
{

std::string KindOf(json const& value)
{
    return value.is_boolean()  ? "true or false"
           : value.is_number() ? "a number"
           : value.is_array()  ? "a list in JSON"
                               : "a document in JSON";
}

bool IsOfOneKind(json const& value, json const& present)
{
    return present.is_null() || (value.is_number() && present.is_number()) || value.type() == present.type();
}

} // namespace

json TypedValue(std::string const& key, std::string const& text, json const& present)
{
    if (present.is_string())
    {
        return text;
    }
    json const value = json::parse(text, nullptr, false);
    if (value.is_discarded() || !IsOfOneKind(value, present))
    {
        throw Failure(ExitStatus::USAGE, key + ": '" + text + "' is not " + KindOf(present));
    }
    return value;
}

} // namespace ZuCtl
