#include "ZuVision/ZvNullMsg.h"

#include "ZuVision/ConstructMsg.h"

namespace ZuVision
{

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

} // namespace ZuVision
