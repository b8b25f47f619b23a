#include "Support/CountedObject.h"

namespace ZuTest
{

wClass const CountedObject::CLASS{"CountedObject", nullptr, &CountedObject::Destroy};

CountedObject::CountedObject(std::atomic<int>& destroyedObjects, wClass const& objectClass)
    : wObject(objectClass), destroyed(destroyedObjects)
{
}

void CountedObject::Destroy(wObject* object)
{
    auto* const counted = static_cast<CountedObject*>(object);
    ++counted->destroyed;
    delete counted;
}

} // namespace ZuTest
