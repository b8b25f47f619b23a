#include "wApi/wObject.h"

bool wObject_Is(void const* object, wClass const& objectClass) noexcept
{
    wClass const* present = object != nullptr ? static_cast<wObject const*>(object)->type : nullptr;
    while (present != nullptr && present != &objectClass)
    {
        present = present->base;
    }
    return present != nullptr;
}
