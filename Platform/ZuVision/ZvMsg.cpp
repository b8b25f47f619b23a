#include "ZuVision/ZvMsg.h"

namespace ZuVision
{

wClass const ZvMsg_Class{"ZvMsg", nullptr, nullptr};

ZvMsg::ZvMsg(wClass const& msgClass, wStamp const* ownStamp) noexcept : wObject(msgClass), stamp(ownStamp)
{
}

wStamp const* ZvMsg_StampAt(void const* msg, uint64 index) noexcept
{
    return index == 0 && wObject_Is(msg, ZvMsg_Class) ? static_cast<ZvMsg const*>(msg)->stamp : nullptr;
}

} // namespace ZuVision
