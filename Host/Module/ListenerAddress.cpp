#include "Host/Module/ListenerAddress.h"

#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Structure.h"
#include "ZuControl/Control/IControlInstance.h"
#include "wApi/wThread.h"
#include "wApi/wTime.h"

#include <nlohmann/json.hpp>

namespace ZuHost
{

namespace
{

constexpr uint64 PATIENCE_USEC = 5'000'000;
constexpr uint64 POLL_USEC = 10'000;

} // namespace

std::string WaitForListenerAddress(ZuControl::IControlInstance& instance)
{
    uint64 const deadlineUsec = wTime_AfterUsec(PATIENCE_USEC);
    while (true)
    {
        Zu::Properties::Node const* const node = instance.MetricsKeeper().UpdateMetrics().Find("listening");
        if (node == nullptr)
        {
            return {};
        }
        nlohmann::json const address = Zu::Properties::JsonSerializer::Serialize(*node);
        if (!address.is_string())
        {
            return {};
        }
        if (std::string text = address.get<std::string>(); !text.empty() || wTime_NowUsec() >= deadlineUsec)
        {
            return text;
        }
        wThread_Sleep(POLL_USEC);
    }
}

} // namespace ZuHost
