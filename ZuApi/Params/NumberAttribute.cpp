#include "ZuApi/Params/NumberAttribute.h"

#include "ZuApi/LazyBuildLock.h"
#include "ZuApi/Properties/Value.h"
#include "wApi/wMutex.h"

#include <cstdint>

namespace Zu::Params
{

namespace
{

template <typename T>
Properties::Value<T>* NodeIn(uint64 word)
{
    static_assert(sizeof(std::uintptr_t) <= sizeof(uint64));
    return reinterpret_cast<Properties::Value<T>*>(static_cast<std::uintptr_t>(word));
}

} // namespace

template <typename T>
NumberAttribute<T>::~NumberAttribute()
{
    uint64 const held = word.load(std::memory_order_relaxed);
    if ((held & INLINE_MARK) == 0)
    {
        delete NodeIn<T>(held);
    }
}

template <typename T>
T NumberAttribute<T>::Get() const noexcept
{
    uint64 const held = word.load(std::memory_order_acquire);
    return (held & INLINE_MARK) != 0 ? static_cast<T>(held >> INLINE_SHIFT) : NodeIn<T>(held)->Get();
}

template <typename T>
NumberAttribute<T>& NumberAttribute<T>::Set(T newNumber)
{
    uint64 const held = word.load(std::memory_order_acquire);
    if ((held & INLINE_MARK) == 0)
    {
        NodeIn<T>(held)->Set(newNumber);
        return *this;
    }
    uint64 const wanted = static_cast<uint64>(newNumber) << INLINE_SHIFT | INLINE_MARK;
    if (held != wanted)
    {
        // Only for a different number: the store would drop a node that a reader creates at the same time.
        word.store(wanted, std::memory_order_release);
    }
    return *this;
}

template <typename T>
Properties::Value<T>& NumberAttribute<T>::Node() const
{
    uint64 held = word.load(std::memory_order_acquire);
    if ((held & INLINE_MARK) != 0)
    {
        Zu::MutexLock const guard(Properties::Internal::LazyBuildLock());
        held = word.load(std::memory_order_acquire);
        if ((held & INLINE_MARK) != 0)
        {
            held = reinterpret_cast<std::uintptr_t>(new Properties::Value<T>(Get()));
            word.store(held, std::memory_order_release);
        }
    }
    return *NodeIn<T>(held);
}

template class NumberAttribute<bool>;
template class NumberAttribute<uint32>;

} // namespace Zu::Params
