#pragma once

#include "wApi/wExport.h"

#include <concepts>
#include <type_traits>
#include <utility>

namespace Zu::Properties::Internal
{

/// The typed access to a value: reads and comparisons use its effective value; `Set` and assignment store a value.
template <typename T>
class ZUAPI_API ValueWrapper
{
public:
    virtual ValueWrapper& operator=(T const& newValue) = 0;

    /// Returns the effective value.
    virtual T const& Get() const = 0;

    /// Returns the stored value. A change through the mutable reference does not run observers.
    virtual T const& RawValue() const = 0;
    virtual T& RawValue() = 0;

    virtual operator T const&() const = 0;

    virtual ~ValueWrapper() = default;

    virtual bool operator==(ValueWrapper const& other) const
    {
        return Get() == other.Get();
    }

    virtual bool operator==(T const& other) const
    {
        return Get() == other;
    }

    virtual bool operator!=(ValueWrapper const& other) const
    {
        return !(Get() == other.Get());
    }

    virtual bool operator!=(T const& other) const
    {
        return !(Get() == other);
    }

    /// Stores the value and returns this object. If the value differs from the stored one, the observers of the node
    /// run first.
    virtual ValueWrapper& Set(T const& newValue) = 0;

    /// Compares with another type that is comparable with T: an integer of another type, a literal.
    template <typename Other>
    requires(!std::same_as<Other, T> && !std::derived_from<Other, ValueWrapper> &&
             std::equality_comparable_with<T, Other>) bool
    operator==(Other const& other) const
    {
        if constexpr (std::integral<T> && std::integral<Other> && !std::same_as<T, bool> && !std::same_as<Other, bool>)
        {
            return std::cmp_equal(Get(), other);
        }
        else
        {
            return Get() == other;
        }
    }

protected:
    ValueWrapper() = default;
    ValueWrapper(ValueWrapper const&) = delete;
    ValueWrapper& operator=(ValueWrapper const&) = delete;
};

} // namespace Zu::Properties::Internal
