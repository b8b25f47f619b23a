#include "Host/Module/ParameterSetter.h"

#include "ZuApi/Guard.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Properties/Value.h"
#include "ZuControl/Control/IControlInstance.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace ZuHost
{

namespace
{

using Zu::Properties::JsonSerializer;

std::string NameOf(ParameterSetting const& setting)
{
    return setting.typeName + "." + setting.key;
}

std::vector<std::string> StepsOf(std::string const& key)
{
    std::vector<std::string> steps;
    for (std::size_t start = 0; start <= key.size();)
    {
        std::size_t const end = std::min(key.find('.', start), key.size());
        steps.push_back(key.substr(start, end - start));
        start = end + 1;
    }
    return steps;
}

Zu::Properties::Node const& FindNode(Zu::Params::Group const& parameters, std::vector<std::string> const& steps,
                                     ParameterSetting const& setting)
{
    Zu::Properties::Node const* node = &parameters;
    for (std::string const& step : steps)
    {
        auto const* const structure = dynamic_cast<Zu::Properties::Structure const*>(node);
        node = structure == nullptr ? nullptr : structure->Find(step);
        if (node == nullptr)
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "option '--param': there is no parameter %s", NameOf(setting).c_str());
        }
    }
    return *node;
}

/// A document with only this value, nested in groups as the key says.
nlohmann::json DocumentOf(Zu::Properties::Node const& node, std::vector<std::string> const& steps,
                          ParameterSetting const& setting)
{
    nlohmann::json document = setting.value;
    if (dynamic_cast<Zu::Properties::Value<std::string> const*>(&node) == nullptr)
    {
        document = nlohmann::json::parse(setting.value, nullptr, false);
    }
    if (document.is_discarded())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "option '--param': '%s' is no value for %s", setting.value.c_str(),
                 NameOf(setting).c_str());
    }
    for (auto step = steps.rbegin(); step != steps.rend(); ++step)
    {
        nlohmann::json outer = nlohmann::json::object();
        outer[*step] = std::move(document);
        document = std::move(outer);
    }
    return document;
}

void Validate(Zu::Params::Group& parameters, nlohmann::json const& document, ParameterSetting const& setting)
{
    try
    {
        JsonSerializer::Validate(parameters, document);
    }
    catch (...)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "option '--param': '%s' is no value for %s (%s)", setting.value.c_str(),
                 NameOf(setting).c_str(), Zu::CaughtText().c_str());
    }
}

/// Brackets an update of the instance; the destructor closes the bracket even when a step throws.
class Update final
{
public:
    explicit Update(ZuControl::IControlInstance& changedInstance)
        : instance(changedInstance), parameters(instance.BeginUpdateParameters())
    {
    }

    ~Update()
    {
        ZU_GUARD_DESTRUCTOR([this] { instance.EndUpdateParameters(); });
    }

    Update(Update const&) = delete;
    Update& operator=(Update const&) = delete;

    Zu::Params::Group& Parameters() const
    {
        return parameters;
    }

private:
    ZuControl::IControlInstance& instance;
    Zu::Params::Group& parameters;
};

} // namespace

void SetParameter(ZuControl::IControlInstance& instance, ParameterSetting const& setting)
{
    std::vector<std::string> const steps = StepsOf(setting.key);
    Update const update(instance);
    nlohmann::json const document = DocumentOf(FindNode(update.Parameters(), steps, setting), steps, setting);
    Validate(update.Parameters(), document, setting);
    JsonSerializer::Deserialize(update.Parameters(), document);
    try
    {
        instance.ParamsUpdate();
    }
    catch (...)
    {
        ZU_THROW_NESTED("option '--param': %s cannot be '%s' (%s)", NameOf(setting).c_str(), setting.value.c_str(),
                        Zu::CaughtText().c_str());
    }
}

} // namespace ZuHost
