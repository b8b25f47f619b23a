#include "ZuVision/ZvStampMsg.h"

#include "ZuVision/ConstructMsg.h"
#include "wBeacon/wStamp.h"

namespace ZuVision
{

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
