#include "Host/Sensor/FramePublisher.h"

#include "ZuApi/Exception.h"
#include "ZuCore/ResultHub.h"
#include "ZuVision/ZvMessages.h"
#include "wBeacon/wMsgInfo.h"

#include <algorithm>

namespace ZuHost
{

namespace
{

wHandle<ZuCore::ResultInfoObject> MakeInfo(char const* dataSource, uint16 type)
{
    ZuCore::ResultInfo info = nullptr;
    ZU_CHECK(ZuCore::ResultInfo_Construct(&info, dataSource, type, nullptr));
    return wHandle<ZuCore::ResultInfoObject>(info);
}

wHandle<void> MakeStamp(wStamp const& stamp)
{
    ZuVision::ZvStampMsg* message = nullptr;
    ZU_CHECK(ZuVision::ZvStampMsg_Construct(&message, stamp, nullptr));
    return wHandle<void>(message);
}

wHandle<void> MakeMeasurement(Measurement const& measurement)
{
    ZuVision::ZvMeasurementMsg* message = nullptr;
    ZU_CHECK(ZuVision::ZvMeasurementMsg_Construct(&message, measurement.value, measurement.decision, nullptr));
    return wHandle<void>(message);
}

void Append(ZuCore::ResultSet set, wHandle<void> const& message, ZuCore::ResultInfoObject& resultInfo)
{
    wMsgInfo* made = nullptr;
    ZU_CHECK(wMsgInfo_Construct(&made, 0, 0, message.get(), nullptr));
    wHandle<wMsgInfo> msgInfo(made);
    wHandle<ZuCore::ResultInfoObject> sharedInfo = wHandle_Share(&resultInfo);
    ZU_CHECK(ZuCore::ResultSet_Add(set, msgInfo.get(), sharedInfo.get(), 0));
    static_cast<void>(msgInfo.release()); // the set owns both references now
    static_cast<void>(sharedInfo.release());
}

bool IsAlive(ZuCore::ResultSet set)
{
    if (wObject_RefCount(set) > 1)
    {
        return true;
    }
    // Consumers that take single results release the set and keep the messages.
    for (uint64 i = 0; i < ZuCore::ResultSet_Count(set); ++i)
    {
        if (wObject_RefCount(ZuCore::ResultItem_MsgInfo(ZuCore::ResultSet_At(set, i))) > 1)
        {
            return true;
        }
    }
    return false;
}

} // namespace

FramePublisher::FramePublisher(ZuCore::ResultHub& resultHub)
    : hub(resultHub), stampInfo(MakeInfo(STAMP_SOURCE, ZuCore::RESULT_TYPE_STAMP))
{
    for (std::size_t i = 0; i < MEASUREMENT_COUNT; ++i)
    {
        measurementInfos[i] = MakeInfo(MEASUREMENTS[i].source, ZuCore::RESULT_TYPE_MEASUREMENT);
    }
}

FramePublisher::~FramePublisher() = default;

void FramePublisher::Publish(wStamp const& stamp, ProfileTool::Results const& results, bool isWatched)
{
    wHandle<ZuCore::ResultSetObject> set = MakeSet(stamp, results);
    hub.Publish(set.get());
    if (isWatched)
    {
        watched.push_back(std::move(set));
    }
}

std::size_t FramePublisher::CountAlive()
{
    std::erase_if(watched, [](auto const& set) { return !IsAlive(set.get()); });
    return watched.size();
}

bool FramePublisher::HasRoom(std::size_t mostAlive)
{
    return watched.size() < mostAlive || CountAlive() < mostAlive;
}

wHandle<ZuCore::ResultSetObject> FramePublisher::MakeSet(wStamp const& stamp, ProfileTool::Results const& results) const
{
    ZuCore::ResultSet made = nullptr;
    ZU_CHECK(ZuCore::ResultSet_Construct(&made, nullptr));
    wHandle<ZuCore::ResultSetObject> set(made);
    ZU_CHECK(ZuCore::ResultSet_Reserve(made, 1 + MEASUREMENT_COUNT));
    Append(made, MakeStamp(stamp), *stampInfo);
    for (std::size_t i = 0; i < MEASUREMENT_COUNT; ++i)
    {
        Append(made, MakeMeasurement(results[i]), *measurementInfos[i]);
    }
    return set;
}

} // namespace ZuHost
