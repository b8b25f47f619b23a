#include "ZuVision/ZvArrayMsg.h"

#include "ZuVision/ConstructMsg.h"

#include <vector>

namespace ZuVision
{

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

} // namespace ZuVision
