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
    /// Makes elements with their default constructor.
    Array() : Array(&Array::MakeDefault)
    {
    }

    /// Makes elements with `newFactory`.
    explicit Array(std::function<std::unique_ptr<T>()> newFactory) : Array(&Array::BuildSchema, std::move(newFactory))
    {
    }

    ~Array() override = default;

    Array(Array const&) = delete;
    Array& operator=(Array const&) = delete;

    /// Throws `Zu::Status::NOT_FOUND` if there is no such element.
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

    /// Appends one element and returns it.
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
