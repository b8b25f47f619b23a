#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <atomic>

namespace Zu::Properties
{
template <typename T>
class Value;
} // namespace Zu::Properties

namespace Zu::Params
{

/// A flag or number that describes a parameter. It reads and is written like a Zu::Properties::Value<T>, and becomes one
/// when its node is first asked for; until then it is one word.
/// Threads: as its parameter. Asking for the node and setting the same number may run beside readers. T: bool, uint32.
template <typename T>
class ZUAPI_API NumberAttribute
{
public:
    NumberAttribute() noexcept = default; ///< false, 0
    ~NumberAttribute();

    NumberAttribute(NumberAttribute const&) = delete;
    NumberAttribute& operator=(NumberAttribute const&) = delete;

    T Get() const noexcept;

    NumberAttribute& Set(T newNumber);

    NumberAttribute& operator=(T newNumber)
    {
        return Set(newNumber);
    }

    operator T() const noexcept // reads like the value that it stands for
    {
        return Get();
    }

    /// The value itself, for a schema or an observer. It stays for the attribute's life.
    Properties::Value<T>& Node() const;

private:
    static constexpr uint64 INLINE_MARK = 1;
    static constexpr unsigned INLINE_SHIFT = 32;

    // A number in the upper half with the lowest bit set, or the node that was made, which this publishes; owned.
    mutable std::atomic<uint64> word{INLINE_MARK};
};

extern template class NumberAttribute<bool>;
extern template class NumberAttribute<uint32>;

} // namespace Zu::Params
