#pragma once

#include "ZuApi/Properties/ValueTransfer.h"
#include "ZuApi/Properties/ValueWrapper.h"
#include "ZuApi/Structure.h"

#include <string>
#include <utility>
#include <vector>

namespace Zu::Properties
{

/// A node with one value of type T, which describes itself by its JSON type.
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

    /// Throws when a change to `candidate` is refused. A plain value takes everything.
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

    /// Stores what `change` makes of the value, without a copy where nobody observes it. Where that throws it may be half done.
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

    /// The stored value, whatever the effective one is.
    void WriteValue(IValueWriter& writer) const override
    {
        Internal::ValueTransfer<T>::Write(writer, value);
    }

    /// A value that is stored already is never refused.
    void ValidateValue(IValueReader& reader) override
    {
        T const candidate = Internal::ValueTransfer<T>::Read(reader);
        if (!(candidate == value))
        {
            CheckValidation(candidate);
        }
    }

    static constexpr Internal::TypeHandle type{Internal::ValueTransfer<T>::KIND};
    static constexpr Internal::TypeHandle itemType{Internal::ItemKind<T>()}; ///< the empty name for a scalar

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

    /// Runs the observers while the old value still stands, and stores the new one last.
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
        T kept = newValue; // an observer may change what the reference names
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
