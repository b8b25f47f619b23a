#include "ZuControl/Protocol/OutputResources.h"

#include "ZuApi/Exception.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Threads/Locker.h"
#include "ZuControl/Protocol/ControlResourceBase.h"
#include "ZuRest/Path.h"
#include "ZuRest/RequestInfo.h"

#include <nlohmann/json.hpp>

namespace ZuControl::Protocol
{

using Zu::Properties::JsonSerializer;

OutputResourceBase::OutputResourceBase(IControlManager& usedManager, char const* newRoute)
    : ControlResourceBase(usedManager), route(newRoute)
{
    ZU_CHECK(wLock_Construct(&recordLock, nullptr));
    changeCallbacks.push_back(Bind(
        ChangeCallback([this](std::string const& device, std::string const& port) { OutputChanged(device, port); })));
}

OutputResourceBase::~OutputResourceBase()
{
    EndCallbacks();
}

nlohmann::json OutputResourceBase::Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& /*response*/)
{
    Zu::Locker const guard(recordLock);
    CommonControlProps& record = Record();
    nlohmann::json document = JsonSerializer::Serialize(record);
    if (request.wantsSchema)
    {
        AppendSchema(JsonSerializer(), record, document);
    }
    return document;
}

void OutputResourceBase::UpdateDocument(ZuRest::RequestInfo const& request, nlohmann::json const& document)
{
    std::string device;
    std::string port;
    {
        Zu::Locker const guard(recordLock);
        NodeFromJsonAndValidate(Record(), document);
        port = RouteKey(request, "port"); // after the change, so that a request without a port changes the record too
        device = RouteKey(request, "device");
        if (!TakeChange())
        {
            return;
        }
    }
    for (ChangeCallback const& callback : changeCallbacks)
    {
        callback(device, port);
    }
}

void OutputResourceBase::OutputChanged(std::string const& device, std::string const& port)
{
    NotificationEvent().Fire(*this, ZuRest::EventType::CHANGED, ZuRest::Path::Format(route, {device, port}));
}

template <typename Properties>
OutputResource<Properties>::OutputResource(IControlManager& usedManager)
    : OutputResourceBase(usedManager, OutputKind<Properties>::ROUTE)
{
}

template <typename Properties>
OutputResource<Properties>::~OutputResource()
{
    EndCallbacks();
}

template <typename Properties>
CommonControlProps& OutputResource<Properties>::Record()
{
    return record;
}

template <typename Properties>
bool OutputResource<Properties>::TakeChange()
{
    Notified const present = NotifiedOf(record);
    if (present == told)
    {
        return false;
    }
    told = present;
    return true;
}

template class OutputResource<AnalogOutputProperties>;
template class OutputResource<DigitalOutputProperties>;
template class OutputResource<MarletOutputProperties>;
template class OutputResource<SerialOutputProperties>;

} // namespace ZuControl::Protocol
