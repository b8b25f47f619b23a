#include "ZuVision/ZvMsg.h"

namespace ZuVision
{

wClass const ZvMsg_Class{"ZvMsg", nullptr, nullptr};

ZvMsg::ZvMsg(wClass const& msgClass, wStamp const* ownStamp) noexcept : wObject(msgClass), stamp(ownStamp)
{
}

} // namespace ZuVision
