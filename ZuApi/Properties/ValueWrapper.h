#pragma once

#include "wApi/wExport.h"

#include <concepts>
#include <type_traits>
#include <utility>

namespace Zu::Properties::Internal
{

/// The typed face of a value: it reads and compares as its effective value and is written by `Set` or assignment.
template <typename T>
class ZUAPI_API ValueWrapper
{
public:
    virtual ValueWrapper& operator=(T const& newValue) = 0;

    /// The effective value.
    virtual T const& Get() const = 0;

    /// The stored value. A change through the second form runs no observer.
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

    /// Stores the value and gives the object; runs the observers of the node first when it differs from the stored one.
    virtual ValueWrapper& Set(T const& newValue) = 0;

    /// Comparison with what is no T but can be compared with one: an integer of another type, a literal text.
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
