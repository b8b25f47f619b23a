#include "ResultFrame.h"

#include "ZuApi/Exception.h"
#include "ZuVision/ZvMessages.h"
#include "wBeacon/wMsgInfo.h"

#include <chrono>
#include <thread>

namespace ZuBench
{

namespace
{

std::string SourceAt(uint64 index)
{
    return "profile/measurement" + std::to_string(index);
}

wHandle<wMsgInfo> MakeMeasurement(double value)
{
    ZuVision::ZvMeasurementMsg* msg = nullptr;
    ZU_CHECK(ZuVision::ZvMeasurementMsg_Construct(&msg, value, 1, nullptr));
    wHandle<void> const owned(msg);
    wMsgInfo* info = nullptr;
    ZU_CHECK(wMsgInfo_Construct(&info, 0, 0, msg, nullptr));
    return wHandle<wMsgInfo>(info);
}

} // namespace

ResultFrame::ResultFrame(uint64 items)
{
    ZuCore::ResultSet made = nullptr;
    ZU_CHECK(ZuCore::ResultSet_Construct(&made, nullptr));
    set.reset(made);
    for (uint64 i = 0; i < items; ++i)
    {
        ZuCore::ResultInfo info = nullptr;
        ZU_CHECK(ZuCore::ResultInfo_Construct(&info, SourceAt(i), ZuCore::RESULT_TYPE_MEASUREMENT, nullptr));
        ZU_CHECK(ZuCore::ResultSet_Add(made, MakeMeasurement(static_cast<double>(i)).release(), info, 0));
    }
}

ResultFrame::~ResultFrame() = default;

std::vector<std::string> ResultFrame::Sources(uint64 stride) const
{
    std::vector<std::string> sources;
    for (uint64 i = 0; i < Count(); i += stride)
    {
        sources.push_back(SourceAt(i));
    }
    return sources;
}

void ResultFrame::WaitUntilReleased(uint64 stride) const
{
    ZuCore::ResultItem const last = ZuCore::ResultSet_At(Set(), (Count() - 1) / stride * stride);
    while (wObject_RefCount(ZuCore::ResultItem_ResultInfo(last)) > 1)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

} // namespace ZuBench
