#pragma once

#include "ZuCore/ResultItem.h"
#include "wBeacon/wMsgInfo.h"

namespace ZuCore
{

/// What a result item is made of. It owns a reference to each part; whoever ends it calls `ReleaseParts`.
struct ResultItemObject final : wObject
{
    /// An item of its own.
    ResultItemObject(wMsgInfo* takenMsgInfo, ResultInfo takenInfo) noexcept
        : wObject(ResultItem_Class), msgInfo(takenMsgInfo), info(takenInfo)
    {
    }

    /// An item inside `set`.
    ResultItemObject(wObject& set, wMsgInfo* takenMsgInfo, ResultInfo takenInfo) noexcept
        : wObject(ResultItem_Class, set), msgInfo(takenMsgInfo), info(takenInfo)
    {
    }

    void ReleaseParts() noexcept
    {
        wObject_Release(msgInfo);
        wObject_Release(info);
    }

    wMsgInfo* const msgInfo;
    ResultInfo const info;
};

} // namespace ZuCore
