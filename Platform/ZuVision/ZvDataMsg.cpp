#include "ZuVision/ZvDataMsg.h"

#include "ZuVision/ConstructMsg.h"
#include "wBeacon/wStamp.h"

#include <limits>

namespace ZuVision
{

struct ZvDataMsg final : ZvMsg
{
    ZvDataMsg(wStamp const* givenStamp, uint64 dataTime, int64 dataEncoder) noexcept
        : ZvMsg(ZvDataMsg_Class, givenStamp != nullptr ? &ownStamp : nullptr),
          ownStamp(givenStamp != nullptr ? *givenStamp : wStamp{}),
          time(dataTime),
          encoder(dataEncoder)
    {
    }

    wStamp const ownStamp;
    uint64 const time;
    int64 const encoder;
};

wClass const ZvDataMsg_Class{"ZvDataMsg", &ZvMsg_Class, &DestroyMsg<ZvDataMsg>};

wStatus ZvDataMsg_Construct(ZvDataMsg** msg, wStamp const* stamp, uint64 time, int64 encoder, void* /*allocator*/)
{
    return ConstructMsg(msg, stamp, time, encoder);
}

uint64 ZvDataMsg_Time(void const* msg) noexcept
{
    return wObject_Is(msg, ZvDataMsg_Class) ? static_cast<ZvDataMsg const*>(msg)->time
                                            : std::numeric_limits<uint64>::max();
}

int64 ZvDataMsg_Encoder(void const* msg) noexcept
{
    return wObject_Is(msg, ZvDataMsg_Class) ? static_cast<ZvDataMsg const*>(msg)->encoder
                                            : std::numeric_limits<int64>::min();
}

} // namespace ZuVision
