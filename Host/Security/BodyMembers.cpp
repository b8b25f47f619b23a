#include "Host/Security/BodyMembers.h"

#include "ZuApi/Exception.h"
#include "ZuRest/JsonText.h"

namespace ZuHost
{

BodyMembers::BodyMembers(std::string const& body)
{
    try
    {
        document = ZuRest::JsonText::Read(body);
    }
    catch (...) // its text would show a part of the body
    {
        ZU_THROW(Zu::Status::BAD_FORMAT, "The body is no JSON.");
    }
    if (!document.is_object())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The body is no JSON object.");
    }
}

BodyMembers::~BodyMembers() = default;

std::string BodyMembers::Text(std::string const& key)
{
    std::optional<std::string> text = OptionalText(key);
    if (!text.has_value())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The body lacks the member '%s'.", key.c_str());
    }
    return std::move(*text);
}

std::optional<std::string> BodyMembers::OptionalText(std::string const& key)
{
    nlohmann::json const* const value = Find(key);
    if (value == nullptr)
    {
        return std::nullopt;
    }
    if (!value->is_string())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The member '%s' of the body is no string.", key.c_str());
    }
    return value->get<std::string>();
}

std::optional<bool> BodyMembers::OptionalFlag(std::string const& key)
{
    nlohmann::json const* const value = Find(key);
    if (value == nullptr)
    {
        return std::nullopt;
    }
    if (!value->is_boolean())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The member '%s' of the body is neither true nor false.", key.c_str());
    }
    return value->get<bool>();
}

void BodyMembers::CheckAllKnown() const
{
    for (auto const& [key, value] : document.items())
    {
        if (!known.contains(key))
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "The body has a member that is not known here.");
        }
    }
}

nlohmann::json const* BodyMembers::Find(std::string const& key)
{
    known.insert(key);
    auto const found = document.find(key);
    return found != document.end() ? &*found : nullptr;
}

} // namespace ZuHost
