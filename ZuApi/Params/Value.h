#pragma once

#include "ZuApi/Params/OptionalAttributes.h"
#include "ZuApi/Params/ParamsBase.h"
#include "ZuApi/Params/ScaleOption.h"
#include "ZuApi/Properties/Value.h"

#include <atomic>
#include <concepts>
#include <memory>
#include <string>

namespace Zu::Params
{

/// A parameter: a value with a title and optional attributes that checks a value before it comes in from outside.
///
/// `Set` and assignment are for the program and check nothing. From outside a value is first validated and then read: see
/// JsonSerializer. The unsigned integers are born with a minimum of 0.
template <typename T>
class ZUAPI_API Value : public Properties::Value<T>, public ParamsBase
{
public:
    Value();
    explicit Value(T initial);
    ~Value() override;

    Value(Value const&) = delete;
    Value& operator=(Value const&) = delete;

    /// Takes over the other's effective value, its attributes and marks; std::bad_cast for another type of value.
    void CopyValues(Properties::Node const& other) override;

    /// Tests a value that is to come in: read-only mark, bounds. What is out of bounds is logged and refused with -997; a
    /// write to a read-only parameter is only logged, and the read that follows ignores it.
    void CheckValidation(T const& candidate) override;

    Value& operator=(T const& newValue) override;

    /// The value of "actual" when that is enabled, else the stored one.
    T const& Get() const override;

    Value& Set(T const& newValue) override;

    /// Takes over what `reader` has, but for one value that was refused just before because of the read-only mark.
    void ReadValue(Properties::IValueReader& reader) override;

    // Each makes or ends an attribute and its entry in the schema, and gives this object, so that calls chain.
    Value& EnableUnits(bool enable);
    Value& EnableDescription(bool enable);
    Value& EnableActual(bool enable);
    Value& EnableMinimum(bool enable);
    Value& EnableMaximum(bool enable);
    Value& EnableExclusiveMinimum(bool enable);
    Value& EnableExclusiveMaximum(bool enable);
    Value& EnableScale(bool enable); ///< starts at 1
    Value& EnableFormat(bool enable);

    // -997 when the attribute is not enabled. It lives until it is disabled.
    Properties::Value<std::string>& GetUnits() const;
    Properties::Value<std::string>& GetDescription() const;
    Properties::Value<T>& GetActual() const;
    Properties::Value<T>& GetMinimum() const;
    Properties::Value<T>& GetMaximum() const;
    Properties::Value<T>& GetExclusiveMinimum() const;
    Properties::Value<T>& GetExclusiveMaximum() const;
    Properties::Value<ScaleOption>& GetScale() const;
    Properties::Value<std::string>& GetFormat() const;

    /// Stores the bound; -997 when it is not enabled.
    Value& SetMinimum(T bound);

    /// Stores the text, and shows it in the schema; the empty text ends the attribute.
    Value& SetExtendedType(std::string const& text);

    /// The text of "extendedType", empty when there is none.
    std::string const& ExtendedType() const;

    /// Shows in the schema whether the parameter is in use, which `used` tells; -997 for true when visibility is enabled.
    Value& EnableUsed(bool enable);

    /// Makes the mask, 0 at first, and shows it; -997 for true when used is enabled.
    Value& EnableVisibility(bool enable);

    /// Shows in the schema whether the parameter is read-only, which `readOnly` tells: false until it is set.
    Value& EnableReadOnly();

protected:
    using typename Properties::Node::SchemaBuilder;

    Value(SchemaBuilder builder, T initial);

    static void BuildSchema(Properties::Node& node, Properties::Structure& schema);

private:
    using Attributes = Internal::OptionalAttributes<T>;

    static constexpr bool HAS_MINIMUM_AT_BIRTH =
        std::same_as<T, uint16> || std::same_as<T, uint32> || std::same_as<T, uint64>;

    Attributes* Made() const;
    Attributes& Make() const;
    static void SetToBirth(Attributes& attributes);
    bool IsMinimumEnabled() const;

    template <typename Attribute>
    Value& Enable(std::unique_ptr<Attribute> Attributes::*member, char const* key, bool enable);

    template <typename Attribute>
    Attribute& Require(std::unique_ptr<Attribute> Attributes::*member, char const* message, char const* label) const;

    template <typename Attribute>
    void CopyAttribute(std::unique_ptr<Attribute> Attributes::*member, Attributes const& source);

    void CheckBounds(Attributes const& bounds, T const& candidate, char const* label) const;
    void CopyAttributes(Value const& source);

    // Made when one is first needed, by readers too; this publishes the whole of it. While there is none the attributes
    // are those at birth.
    mutable std::atomic<Attributes*> attributes{nullptr};
};

extern template class Value<bool>;
extern template class Value<std::string>;
extern template class Value<double>;
extern template class Value<uint16>;
extern template class Value<uint32>;
extern template class Value<uint64>;
extern template class Value<int32>;

} // namespace Zu::Params

// The definitions, for the enumerations of other libraries.
#include "ZuApi/Params/ValueDefinition.h"
