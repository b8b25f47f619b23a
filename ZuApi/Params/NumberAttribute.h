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

/// A flag or number that describes a parameter. It has the access of a `Zu::Properties::Value<T>`. The first call of
/// `Node` creates the value node; until then the attribute is one word. T is bool or uint32.
///
/// Threads: as for its parameter. In addition, readers may run concurrently with `Node` and with a `Set` that does not
/// change the number.
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

    operator T() const noexcept // usable like a value of type T
    {
        return Get();
    }

    /// Returns the value as a node, for a schema or an observer. The node lives as long as the attribute.
    Properties::Value<T>& Node() const;

private:
    static constexpr uint64 INLINE_MARK = 1;
    static constexpr unsigned INLINE_SHIFT = 32;

    // Either a number in the upper half with the lowest bit set, or the address of the created node, which is owned.
    // The store of the address publishes the node.
    mutable std::atomic<uint64> word{INLINE_MARK};
};

extern template class NumberAttribute<bool>;
extern template class NumberAttribute<uint32>;

} // namespace Zu::Params
