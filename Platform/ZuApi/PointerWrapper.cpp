#include "ZuApi/PointerWrapper.h"

#include "wApi/wTypes.h"

#include <new>

namespace Zu
{

struct PointerWrapper : wObject
{
    explicit PointerWrapper(void* wrapped) noexcept : wObject(PointerWrapper_Class), pointer(wrapped)
    {
    }

    void* const pointer;
};

wClass const PointerWrapper_Class{"PointerWrapper", nullptr,
                                  [](wObject* object) { delete static_cast<PointerWrapper*>(object); }};

wStatus PointerWrapper_Construct(PointerWrapper** wrapper, void* pointer, void* /*allocator*/)
{
    if (wrapper == nullptr)
    {
        return Status::BAD_ARGUMENT;
    }
    auto* const made = new (std::nothrow) PointerWrapper(pointer);
    if (made == nullptr)
    {
        return Status::FAILURE;
    }
    *wrapper = made;
    return Status::SUCCESS;
}

void* PointerWrapper_Pointer(PointerWrapper const* wrapper)
{
    return wrapper != nullptr ? wrapper->pointer : nullptr;
}

} // namespace Zu
