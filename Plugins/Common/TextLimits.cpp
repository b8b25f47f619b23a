#include "Plugins/Common/TextLimits.h"

#include "ZuApi/Exception.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Params/Group.h"

#include <nlohmann/json.hpp>

namespace PluginCommon
{

namespace
{

void CheckTexts(std::string const& key, nlohmann::json const& value)
{
    if (value.is_string() && value.get_ref<std::string const&>().size() > MOST_TEXT_BYTES)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "\"%s\" has more than %u bytes", key.c_str(),
                 static_cast<unsigned>(MOST_TEXT_BYTES));
    }
    if (value.is_structured())
    {
        for (auto const& [name, child] : value.items())
        {
            CheckTexts(value.is_object() ? name : key, child);
        }
    }
}

} // namespace

LimitedText::LimitedText(uint32 newMostBytes) : maxLength(newMostBytes)
{
    RegisterSchema("maxLength", maxLength);
}

LimitedText::~LimitedText()
{
    DeregisterSchema("maxLength"); // before the member, to which the base class refers, is destroyed
}

void LimitedText::CheckValidation(std::string const& candidate)
{
    Value::CheckValidation(candidate);
    if (candidate.size() > maxLength.Get())
    {
        Refuse(__LINE__, __FILE__, ZU_FUNCTION_LABEL, "%1$s was set to be longer than its maximum length.",
               "%s was set to be longer than its maximum length.");
    }
}

void CheckTexts(Zu::Params::Group const& args)
{
    CheckTexts("", Zu::Properties::JsonSerializer::Serialize(args));
}

} // namespace PluginCommon
