#include "Host/Module/ListenerAddress.h"

#include "ZuApi/Exception.h"
#include "ZuRest/Path.h"
#include "ZuRest/RequestProcessor.h"
#include "wApi/wThread.h"
#include "wApi/wTime.h"

#include <nlohmann/json.hpp>

namespace ZuHost
{

namespace
{

constexpr uint64 PATIENCE_USEC = 5'000'000;
constexpr uint64 POLL_USEC = 10'000;

/// Null if there are no metrics.
nlohmann::json MetricsOf(ZuRest::RequestProcessor& resources, std::string const& typeName)
{
    try
    {
        return resources.Read(ZuRest::Path::Format("/controls/:protocol/metrics", {typeName}), nullptr, "");
    }
    catch (Zu::Exception const&) // metrics are optional
    {
        return nullptr;
    }
    catch (...)
    {
        ZU_LOG_CAUGHT("Service %s cannot tell where it listens", typeName.c_str());
        return nullptr;
    }
}

} // namespace

std::string WaitForListenerAddress(ZuRest::RequestProcessor& resources, std::string const& typeName)
{
    uint64 const deadlineUsec = wTime_AfterUsec(PATIENCE_USEC);
    while (true)
    {
        nlohmann::json const metrics = MetricsOf(resources, typeName);
        auto const position = metrics.find("listening");
        if (position == metrics.end() || !position->is_string())
        {
            return {};
        }
        if (std::string text = position->get<std::string>(); !text.empty() || wTime_NowUsec() >= deadlineUsec)
        {
            return text;
        }
        wThread_Sleep(POLL_USEC);
    }
}

} // namespace ZuHost
