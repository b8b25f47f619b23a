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

    /// Makes elements with `newFactory`.
    explicit Array(std::function<std::unique_ptr<T>()> newFactory)
        : Properties::Array<T>(&Array::BuildSchema, std::move(newFactory))
    {
    }

    ~Array() override = default;

    Array(Array const&) = delete;
    Array& operator=(Array const&) = delete;

    /// Copies elements, attributes and marks. Throws std::bad_cast if `other` is no array of this type.
    void CopyValues(Properties::Node const& other) override
    {
        auto const& source = dynamic_cast<Array const&>(other);
        Properties::Array<T>::CopyValues(other);
        CopyParams(this->MadeSchema(), source);
        EnableVisibility(IsVisibilityEnabled());
        extendedType.CopyFrom(source.extendedType);
    }

    /// Shows `used`, which tells whether the array is in use, in the schema. Throws `Zu::Status::BAD_ARGUMENT` for true
    /// while visibility is enabled.
    Array& EnableUsed(bool enable)
    {
        ParamsBase::EnableUsed(this->MadeSchema(), enable);
        return *this;
    }

    /// Creates the `visibility` mask with the value 0 and shows it in the schema. False removes it. Throws
    /// `Zu::Status::BAD_ARGUMENT` for true while used is enabled.
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

    TextAttribute extendedType; ///< copied by `CopyValues`; not shown in the schema

protected:
    static void BuildSchema(Properties::Node& node, Properties::Structure& schema)
    {
        Properties::Array<T>::BuildSchema(node, schema);
        static_cast<Array&>(node).EnterParams(schema);
    }
};

} // namespace Zu::Params
