#include "ZuCore/ResultInfo.h"

#include "ZuCore/DataSourceHash.h"
#include "wApi/wTypes.h"

#include <new>

namespace ZuCore
{

ResultInfoObject::ResultInfoObject(std::string const& sourceId, uint16 resultType)
    : wObject(ResultInfo_Class), numericId(DataSourceHash(sourceId)), type(resultType), dataSourceId(sourceId)
{
}

wClass const ResultInfo_Class{"ResultInfo", nullptr,
                              [](wObject* object) { delete static_cast<ResultInfoObject*>(object); }};

wStatus ResultInfo_Construct(ResultInfo* info, std::string const& dataSourceId, uint16 type, void* /*allocator*/)
{
    if (info == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    try
    {
        *info = new ResultInfoObject(dataSourceId, type);
        return Zu::Status::SUCCESS;
    }
    catch (std::bad_alloc const&)
    {
        return Zu::Status::FAILURE;
    }
}

std::string const& ResultInfo_DataSourceId(ResultInfoObject const* info) noexcept
{
    static std::string const none;
    return info != nullptr ? info->dataSourceId : none;
}

} // namespace ZuCore
