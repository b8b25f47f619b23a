#pragma once

#include "ZuApi/Properties/ValueTransfer.h"
#include "ZuApi/Properties/ValueWrapper.h"
#include "ZuApi/Structure.h"

#include <string>
#include <utility>
#include <vector>

namespace Zu::Properties
{

/// A node with one value of type T. Its schema shows its JSON type.
template <typename T>
class ZUAPI_API Value : public Internal::ValueBase, public Internal::ValueWrapper<T>
{
public:
    Value() : Value(T{})
    {
    }

    explicit Value(T initial) : Value(&Value::BuildSchema, std::move(initial))
    {
    }

    ~Value() override = default;

    Value(Value const&) = delete;
    Value& operator=(Value const&) = delete;

    void CopyValues(Node const& other) override
    {
        auto const& source = dynamic_cast<Value const&>(other);
        Set(source.Get());
        CopySchema(other);
    }

    /// Throws if the value must not change to `candidate`. A plain value accepts everything.
    virtual void CheckValidation(T const& /*candidate*/)
    {
    }

    Value& operator=(T const& newValue) override
    {
        Store(newValue);
        return *this;
    }

    T const& Get() const override
    {
        return value;
    }

    T const& RawValue() const override
    {
        return value;
    }

    T& RawValue() override
    {
        return value;
    }

    operator T const&() const override
    {
        return Get();
    }

    Value& Set(T const& newValue) override
    {
        Store(newValue);
        return *this;
    }

    /// Changes the value with `change`. Without observers it works in place; if `change` throws, the value may be
    /// partly changed. With observers it works on a copy.
    template <typename Change>
    void Modify(Change const& change)
    {
        if (!HasObservers())
        {
            change(value);
            return;
        }
        T kept = value;
        change(kept);
        RunObservers();
        value = std::move(kept);
    }

    void ReadValue(IValueReader& reader) override
    {
        Set(Internal::ValueTransfer<T>::Read(reader));
    }

    /// Writes the stored value, not the effective one.
    void WriteValue(IValueWriter& writer) const override
    {
        Internal::ValueTransfer<T>::Write(writer, value);
    }

    /// Checks an incoming value with `CheckValidation`, unless it equals the stored value.
    void ValidateValue(IValueReader& reader) override
    {
        T const candidate = Internal::ValueTransfer<T>::Read(reader);
        if (!(candidate == value))
        {
            CheckValidation(candidate);
        }
    }

    static constexpr Internal::TypeHandle type{Internal::ValueTransfer<T>::KIND};
    static constexpr Internal::TypeHandle itemType{Internal::ItemKind<T>()}; ///< empty for a scalar

protected:
    Value(SchemaBuilder builder, T initial) : ValueBase(builder), value(std::move(initial))
    {
    }

    static void BuildSchema(Node& /*node*/, Structure& schema)
    {
        schema.Register("type", type.Node());
        if constexpr (Internal::ItemKind<T>() != Internal::NodeType::Kind::NONE)
        {
            schema.Register("items", Internal::SharedItems(Internal::ItemKind<T>()));
        }
    }

    /// Runs the observers before it stores a different value. Does nothing for the stored value.
    void Store(T const& newValue)
    {
        if (value == newValue)
        {
            return;
        }
        if (!HasObservers())
        {
            value = newValue;
            return;
        }
        T kept = newValue; // a copy: an observer may change the object behind the reference
        RunObservers();
        value = std::move(kept);
    }

private:
    T value;
};

extern template class Value<bool>;
extern template class Value<std::string>;
extern template class Value<double>;
extern template class Value<uint16>;
extern template class Value<uint32>;
extern template class Value<uint64>;
extern template class Value<int32>;
extern template class Value<std::vector<std::string>>;

} // namespace Zu::Properties
