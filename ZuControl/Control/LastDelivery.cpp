#include "ZuControl/Control/LastDelivery.h"

#include "ZuCore/ResultSet.h"
#include "ZuVision/ZvMessages.h"

#include <new>

namespace ZuControl
{

LastDelivery::LastDelivery() = default;
LastDelivery::~LastDelivery() = default;

void LastDelivery::Take(ZuCore::ResultSetObject const& set, uint64 nowUsec) noexcept
{
    Zu::MutexLock const guard(lock);
    content.usec = nowUsec;
    content.stamp.reset();
    content.measurements.clear();
    try
    {
        set.ForEachParts([this](ZuCore::ResultItemParts const& parts) ZU_REQUIRES(lock) {
            void const* const message = wMsgInfo_Msg(parts.msgInfo);
            if (wObject_Is(message, ZuVision::ZvMeasurementMsg_Class))
            {
                content.measurements.push_back({ZuCore::ResultInfo_NumericId(parts.info),
                                                ZuVision::ZvMeasurementMsg_Value(message),
                                                ZuVision::ZvMeasurementMsg_Decision(message)});
            }
            else if (wObject_Is(message, ZuVision::ZvStampMsg_Class))
            {
                content.stamp = *ZuVision::ZvMsg_StampAt(message, 0);
            }
        });
    }
    catch (std::bad_alloc const&)
    {
        return; // what there was room for is kept
    }
}

LastDelivery::Content LastDelivery::Read() const
{
    Zu::MutexLock const guard(lock);
    return content;
}

} // namespace ZuControl
