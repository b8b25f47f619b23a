#include "Host/Sensor/FrameCollector.h"

#include "ZuVision/ZvMessages.h"
#include "wBeacon/wMsgInfo.h"

#include <chrono>

namespace ZuTest
{

FrameCollector::FrameCollector(ZuCore::ResultHub& resultHub) : hub(resultHub)
{
    id = hub.AddResultHandler([this](void* set) { OnSet(static_cast<ZuCore::ResultSet>(set)); });
}

FrameCollector::~FrameCollector()
{
    hub.RemoveResultHandler(id);
}

std::vector<FrameCollector::Frame> FrameCollector::WaitForFrames(std::size_t count)
{
    std::unique_lock guard(lock);
    changed.wait_for(guard, std::chrono::seconds(10), [&] { return frames.size() >= count; });
    return frames;
}

std::size_t FrameCollector::Count() const
{
    std::scoped_lock const guard(lock);
    return frames.size();
}

void FrameCollector::Keep(bool keepsSets)
{
    std::vector<wHandle<ZuCore::ResultSetObject>> gone;
    std::scoped_lock const guard(lock);
    keeps = keepsSets;
    gone.swap(kept);
}

void FrameCollector::OnSet(ZuCore::ResultSet set)
{
    Frame frame;
    for (uint64 i = 0; i < ZuCore::ResultSet_Count(set); ++i)
    {
        ZuCore::ResultItem const item = ZuCore::ResultSet_At(set, i);
        void const* const message = wMsgInfo_Msg(ZuCore::ResultItem_MsgInfo(item));
        ZuCore::ResultInfo const info = ZuCore::ResultItem_ResultInfo(item);
        Result result{ZuCore::ResultInfo_DataSourceId(info), ZuCore::ResultInfo_Type(info), 0, 0};
        if (wStamp const* const stamp = ZuVision::ZvMsg_StampAt(message, 0); stamp != nullptr)
        {
            frame.stamp = *stamp;
        }
        else
        {
            result.value = ZuVision::ZvMeasurementMsg_Value(message);
            result.decision = ZuVision::ZvMeasurementMsg_Decision(message);
        }
        frame.results.push_back(result);
    }
    {
        std::scoped_lock const guard(lock);
        frames.push_back(frame);
        if (keeps)
        {
            kept.push_back(wHandle_Share(set));
        }
    }
    changed.notify_all();
}

} // namespace ZuTest
