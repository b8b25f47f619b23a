#pragma once

#include "ZuCore/ResultSet.h"
#include "wApi/wArrayList.h"
#include "wApi/wObject.h"
#include "wBeacon/wMsgInfo.h"

#include <string>
#include <utility>
#include <vector>

namespace ZuTest
{

/// Owns one reference to a result set.
using OwnedSet = wHandle<ZuCore::ResultSetObject>;

/// A set with an item for each data source, in order. The first number of an item's message info is its index.
inline OwnedSet MakeSet(std::vector<std::string> const& dataSources, bool fromLiveSimulation = false)
{
    ZuCore::ResultSet set = nullptr;
    ZuCore::ResultSet_Construct(&set, nullptr);
    ZuCore::ResultSet_SetFromLiveSimulation(set, fromLiveSimulation);
    uint64 index = 0;
    for (std::string const& dataSource : dataSources)
    {
        ZuCore::ResultInfo info = nullptr;
        ZuCore::ResultInfo_Construct(&info, dataSource, ZuCore::RESULT_TYPE_MEASUREMENT, nullptr);
        wMsgInfo* msgInfo = nullptr;
        wMsgInfo_Construct(&msgInfo, index++, 0, nullptr, nullptr);
        ZuCore::ResultSet_Add(set, msgInfo, info, 0);
    }
    return OwnedSet(set);
}

using Item = std::pair<std::string, uint64>; // data source, index in the set that was published
using Items = std::vector<Item>;

/// The items of a set, in order.
inline Items ItemsOf(void const* set)
{
    auto const* const results = static_cast<ZuCore::ResultSetObject const*>(set);
    Items items;
    for (uint64 i = 0; i < ZuCore::ResultSet_Count(results); ++i)
    {
        ZuCore::ResultItem const item = ZuCore::ResultSet_At(results, i);
        items.emplace_back(ZuCore::ResultInfo_DataSourceId(ZuCore::ResultItem_ResultInfo(item)),
                           wMsgInfo_First(ZuCore::ResultItem_MsgInfo(item)));
    }
    return items;
}

/// The sets that a handler received in one call, in order.
inline std::vector<Items> BatchOf(void const* list)
{
    auto const& sets = *static_cast<wArrayList const*>(list);
    std::vector<Items> batch;
    for (uint64 i = 0; i < wArrayList_Count(sets); ++i)
    {
        batch.push_back(ItemsOf(wArrayList_At(sets, i)));
    }
    return batch;
}

} // namespace ZuTest
