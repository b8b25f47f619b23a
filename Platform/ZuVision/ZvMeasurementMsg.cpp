#include "ZuVision/ZvMeasurementMsg.h"

#include "ZuVision/ConstructMsg.h"

namespace ZuVision
{

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

} // namespace ZuVision
