#include "ZuVision/ZvMessages.h"

#include "wBeacon/wMsgInfo.h"

#include <limits>
#include <vector>

namespace ZuVision
{

wClass const ZvMsg_Class{"ZvMsg", nullptr, nullptr};

ZvMsg::ZvMsg(wClass const& msgClass, wStamp const* ownStamp) noexcept : wObject(msgClass), stamp(ownStamp)
{
}

struct ZvNullMsg final : ZvMsg
{
    ZvNullMsg() noexcept : ZvMsg(ZvNullMsg_Class, nullptr)
    {
    }
};

wClass const ZvNullMsg_Class{"ZvNullMsg", &ZvMsg_Class, &DestroyMsg<ZvNullMsg>};

wStatus ZvNullMsg_Construct(ZvNullMsg** msg, void* /*allocator*/)
{
    return ConstructMsg(msg);
}

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

struct ZvArrayMsg final : ZvMsg
{
    ZvArrayMsg(void* const* first, uint64 count) : ZvMsg(ZvArrayMsg_Class, nullptr), elements(first, first + count)
    {
        for (void* const element : elements)
        {
            wObject_Share(element);
        }
    }

    ~ZvArrayMsg()
    {
        for (void* const element : elements)
        {
            wObject_Release(element);
        }
    }

    std::vector<void*> const elements; // owns one reference to each
};

wClass const ZvArrayMsg_Class{"ZvArrayMsg", &ZvMsg_Class, &DestroyMsg<ZvArrayMsg>};

wStatus ZvArrayMsg_Construct(ZvArrayMsg** msg, void* const* elements, uint64 count, void* /*allocator*/)
{
    if (elements == nullptr && count > 0)
    {
        return Zu::Status::BAD_ARGUMENT;
    }
    return ConstructMsg(msg, elements, count);
}

uint64 ZvArrayMsg_Count(void const* msg) noexcept
{
    return wObject_Is(msg, ZvArrayMsg_Class) ? static_cast<ZvArrayMsg const*>(msg)->elements.size() : 0;
}

void* ZvArrayMsg_At(void const* msg, uint64 index) noexcept
{
    return index < ZvArrayMsg_Count(msg) ? static_cast<ZvArrayMsg const*>(msg)->elements[index] : nullptr;
}

struct ZvMeasurementMsg final : ZvMsg
{
    ZvMeasurementMsg(double measuredValue, uint8 decided) noexcept
        : ZvMsg(ZvMeasurementMsg_Class, nullptr), value(measuredValue), decision(decided)
    {
    }

    double const value;
    uint8 const decision;
};

wClass const ZvMeasurementMsg_Class{"ZvMeasurementMsg", &ZvMsg_Class, &DestroyMsg<ZvMeasurementMsg>};

wStatus ZvMeasurementMsg_Construct(ZvMeasurementMsg** msg, double value, uint8 decision, void* /*allocator*/)
{
    return ConstructMsg(msg, value, decision);
}

double ZvMeasurementMsg_Value(void const* msg) noexcept
{
    return wObject_Is(msg, ZvMeasurementMsg_Class) ? static_cast<ZvMeasurementMsg const*>(msg)->value
                                                   : MISSING_MEASUREMENT;
}

uint8 ZvMeasurementMsg_Decision(void const* msg) noexcept
{
    return wObject_Is(msg, ZvMeasurementMsg_Class) ? static_cast<ZvMeasurementMsg const*>(msg)->decision : uint8{0};
}

struct ZvStampMsg final : ZvMsg
{
    explicit ZvStampMsg(wStamp const& givenStamp) noexcept : ZvMsg(ZvStampMsg_Class, &ownStamp), ownStamp(givenStamp)
    {
    }

    wStamp const ownStamp;
};

wClass const ZvStampMsg_Class{"ZvStampMsg", &ZvMsg_Class, &DestroyMsg<ZvStampMsg>};

wStatus ZvStampMsg_Construct(ZvStampMsg** msg, wStamp const& stamp, void* /*allocator*/)
{
    return ConstructMsg(msg, stamp);
}

} // namespace ZuVision
