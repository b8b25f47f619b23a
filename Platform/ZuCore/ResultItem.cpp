#include "ZuCore/ResultItem.h"

#include "ZuCore/DataSourceHash.h"
#include "wApi/wTypes.h"
#include "wBeacon/wMsgInfo.h"

#include <new>

namespace ZuCore
{

namespace
{

struct OwnResultItem final : ResultItemObject
{
    OwnResultItem(wMsgInfo* takenMsgInfo, ResultInfo takenInfo) noexcept
        : ResultItemObject(own), own{takenMsgInfo, takenInfo}
    {
    }

    ~OwnResultItem()
    {
        wObject_Release(own.msgInfo);
        wObject_Release(own.info);
    }

    OwnResultItem(OwnResultItem const&) = delete;
    OwnResultItem& operator=(OwnResultItem const&) = delete;

    ResultItemParts const own;
};

} // namespace

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

wClass const ResultItem_Class{"ResultItem", nullptr,
                              [](wObject* object) { delete static_cast<OwnResultItem*>(object); }};

wStatus ResultItem_Construct(ResultItem* item, wMsgInfo* msgInfo, ResultInfo resultInfo, void* /*allocator*/)
{
    if (item == nullptr || msgInfo == nullptr || resultInfo == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    auto* const made = new (std::nothrow) OwnResultItem(msgInfo, resultInfo);
    if (made == nullptr)
    {
        return Zu::Status::FAILURE;
    }
    wObject_Share(msgInfo);
    wObject_Share(resultInfo);
    *item = made;
    return Zu::Status::SUCCESS;
}

} // namespace ZuCore
