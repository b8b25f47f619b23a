#pragma once

#include "ZuApi/ArrayBase.h"
#include "ZuApi/Structure.h"

#include <concepts>
#include <functional>
#include <memory>
#include <utility>

namespace Zu::Properties
{

/// An array that owns elements of one class of structure.
template <typename T>
class ZUAPI_API Array : public Internal::ArrayBase
{
public:
    /// Elements are made with their default constructor.
    Array() : Array(&Array::MakeDefault)
    {
    }

    /// Elements are made by `newFactory`.
    explicit Array(std::function<std::unique_ptr<T>()> newFactory) : Array(&Array::BuildSchema, std::move(newFactory))
    {
    }

    ~Array() override = default;

    Array(Array const&) = delete;
    Array& operator=(Array const&) = delete;

    /// -999 behind the last.
    T& At(uint64 index)
    {
        return static_cast<T&>(ElementAt(index));
    }

    T const& At(uint64 index) const
    {
        return static_cast<T const&>(ElementAt(index));
    }

    T& operator[](uint64 index)
    {
        return At(index);
    }

    T const& operator[](uint64 index) const
    {
        return At(index);
    }

    /// Adds one element behind the others and gives it.
    T& Add()
    {
        Resize(Count() + 1);
        return At(Count() - 1);
    }

protected:
    Array(SchemaBuilder builder, std::function<std::unique_ptr<T>()> newFactory)
        : ArrayBase(builder, Factory(std::move(newFactory)))
    {
        static_assert(std::derived_from<T, Structure>);
    }

    static std::unique_ptr<T> MakeDefault()
    {
        return std::make_unique<T>();
    }
};

} // namespace Zu::Properties
