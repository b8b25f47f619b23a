#pragma once

#include "ZuApi/Params/ParamsBase.h"
#include "ZuApi/Properties/Array.h"

#include <functional>
#include <memory>
#include <utility>

namespace Zu::Params
{

/// An array of records as a parameter.
template <typename T>
class ZUAPI_API Array : public Properties::Array<T>, public ParamsBase
{
public:
    Array() : Array(&Properties::Array<T>::MakeDefault)
    {
    }

    /// Elements are made by `newFactory`.
    explicit Array(std::function<std::unique_ptr<T>()> newFactory)
        : Properties::Array<T>(&Array::BuildSchema, std::move(newFactory))
    {
    }

    ~Array() override = default;

    Array(Array const&) = delete;
    Array& operator=(Array const&) = delete;

    /// Takes over elements, attributes and marks; std::bad_cast for what is no such array.
    void CopyValues(Properties::Node const& other) override
    {
        auto const& source = dynamic_cast<Array const&>(other);
        Properties::Array<T>::CopyValues(other);
        CopyParams(this->MadeSchema(), source);
        EnableVisibility(IsVisibilityEnabled());
        extendedType.CopyFrom(source.extendedType);
    }

    /// Shows in the schema whether the array is in use, which `used` tells; -997 for true when visibility is enabled.
    Array& EnableUsed(bool enable)
    {
        ParamsBase::EnableUsed(this->MadeSchema(), enable);
        return *this;
    }

    /// Makes the mask, 0 at first, and shows it; -997 for true when used is enabled.
    Array& EnableVisibility(bool enable)
    {
        ParamsBase::EnableVisibility(this->MadeSchema(), enable);
        return *this;
    }

    /// Shows `readOnly` in the schema.
    Array& EnableReadOnly()
    {
        ParamsBase::EnableReadOnly(this->MadeSchema());
        return *this;
    }

    TextAttribute extendedType; ///< goes with a copy; no schema shows it

protected:
    static void BuildSchema(Properties::Node& node, Properties::Structure& schema)
    {
        Properties::Array<T>::BuildSchema(node, schema);
        static_cast<Array&>(node).EnterParams(schema);
    }
};

} // namespace Zu::Params
