#include "Plugins/SparkplugMqtt/SourceLimits.h"

#include "ZuApi/Exception.h"
#include "ZuControl/Control/IControlResourceAdaptor.h"

#include <nlohmann/json.hpp>

namespace SparkplugMqtt
{

SourceLimits::SourceLimits(ZuControl::IControlResourceAdaptor* usedResources) : resources(usedResources)
{
}

SourceLimits::~SourceLimits() = default;

std::optional<SourceLimits::BySource> SourceLimits::Look(uint64 nowUsec)
{
    if (resources == nullptr || nowUsec < dueUsec)
    {
        return std::nullopt;
    }
    dueUsec = nowUsec + PERIOD_USEC;
    try
    {
        std::string text;
        resources->Read(PATH, text, READ_TIMEOUT_USEC);
        return In(text);
    }
    catch (...)
    {
        if (Zu::CaughtStatus() == Zu::Status::NOT_FOUND)
        {
            resources = nullptr; // each further read would give a line in the log
        }
        return std::nullopt;
    }
}

SourceLimits::BySource SourceLimits::In(std::string const& text)
{
    BySource limits;
    nlohmann::json const document = nlohmann::json::parse(text, nullptr, false);
    if (!document.is_object())
    {
        return limits;
    }
    auto const number = [](nlohmann::json const& record, char const* key) {
        auto const found = record.find(key);
        return found != record.end() && found->is_number() ? std::optional(found->get<double>()) : std::nullopt;
    };
    for (auto const& [key, record] : document.items())
    {
        bool const isEnabled = record.is_object() && record.contains("enabled") && record["enabled"] == true;
        if (!isEnabled)
        {
            continue;
        }
        auto const low = number(record, "minimum");
        auto const high = number(record, "maximum");
        if (low.has_value() && high.has_value())
        {
            limits[SOURCE_PREFIX + key] = {*low, *high};
        }
    }
    return limits;
}

} // namespace SparkplugMqtt
