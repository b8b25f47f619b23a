#include "Host/Jobs/RequestedJob.h"

#include "ZuApi/Exception.h"
#include "ZuRest/RequestInfo.h"

namespace ZuHost
{

JobName RequestedJob(ZuRest::RequestInfo const& info)
{
    std::string const* const name = info.FindKey("name");
    if (name == nullptr)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The request names no job.");
    }
    return JobName(*name);
}

} // namespace ZuHost
