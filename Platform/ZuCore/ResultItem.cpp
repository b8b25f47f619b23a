#include "ZuCore/ResultItem.h"

#include "ZuCore/ResultItemObject.h"
#include "wApi/wStatus.h"

#include <new>

namespace ZuCore
{

wClass const ResultItem_Class{"ResultItem", nullptr, [](wObject* object) {
                                  auto* const item = static_cast<ResultItemObject*>(object);
                                  item->ReleaseParts();
                                  delete item;
                              }};

wStatus ResultItem_Construct(ResultItem* item, wMsgInfo* msgInfo, ResultInfo resultInfo, void* /*allocator*/)
{
    if (item == nullptr || msgInfo == nullptr || resultInfo == nullptr)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    auto* const made = new (std::nothrow) ResultItemObject(msgInfo, resultInfo);
    if (made == nullptr)
    {
        return Zu::Status::FAILURE;
    }
    wObject_Share(msgInfo);
    wObject_Share(resultInfo);
    *item = made;
    return Zu::Status::SUCCESS;
}

wMsgInfo* ResultItem_MsgInfo(ResultItemObject const* item) noexcept
{
    return item != nullptr ? item->msgInfo : nullptr;
}

ResultInfo ResultItem_ResultInfo(ResultItemObject const* item) noexcept
{
    return item != nullptr ? item->info : nullptr;
}

} // namespace ZuCore
