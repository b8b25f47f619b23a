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

/// A parameter: a value with a title and optional attributes, which validates values from outside.
///
/// The program uses `Set` and assignment, which do not validate. A value from outside is first validated and then read;
/// see `JsonSerializer`. The unsigned integers have a minimum of 0 from construction.
template <typename T>
class ZUAPI_API Value : public Properties::Value<T>, public ParamsBase
{
public:
    Value();
    explicit Value(T initial);
    ~Value() override;

    Value(Value const&) = delete;
    Value& operator=(Value const&) = delete;

    /// Copies the effective value of `other`, its attributes and its marks. Throws std::bad_cast if `other` has another
    /// type.
    void CopyValues(Properties::Node const& other) override;

    /// Checks an incoming value against the read-only mark and the bounds. A value out of bounds is logged and refused
    /// with `Zu::Status::BAD_ARGUMENT`. A write to a read-only parameter is only logged; the next `ReadValue` ignores
    /// it.
    void CheckValidation(T const& candidate) override;

    Value& operator=(T const& newValue) override;

    /// Returns the value of "actual" if that attribute is enabled, else the stored value.
    T const& Get() const override;

    Value& Set(T const& newValue) override;

    /// Stores the value from `reader`, except for the value that the read-only mark has just rejected.
    void ReadValue(Properties::IValueReader& reader) override;

    // Each creates or removes an attribute and its schema entry, and returns this object, so that calls chain.
    Value& EnableUnits(bool enable);
    Value& EnableDescription(bool enable);
    Value& EnableActual(bool enable);
    Value& EnableMinimum(bool enable);
    Value& EnableMaximum(bool enable);
    Value& EnableExclusiveMinimum(bool enable);
    Value& EnableExclusiveMaximum(bool enable);
    Value& EnableScale(bool enable); ///< the initial value is `ScaleOption::LINEAR`
    Value& EnableFormat(bool enable);

    // Each throws `Zu::Status::BAD_ARGUMENT` if the attribute is not enabled. The returned node lives until it is
    // disabled.
    Properties::Value<std::string>& GetUnits() const;
    Properties::Value<std::string>& GetDescription() const;
    Properties::Value<T>& GetActual() const;
    Properties::Value<T>& GetMinimum() const;
    Properties::Value<T>& GetMaximum() const;
    Properties::Value<T>& GetExclusiveMinimum() const;
    Properties::Value<T>& GetExclusiveMaximum() const;
    Properties::Value<ScaleOption>& GetScale() const;
    Properties::Value<std::string>& GetFormat() const;

    /// Stores the bound. Throws `Zu::Status::BAD_ARGUMENT` if it is not enabled.
    Value& SetMinimum(T bound);

    /// Stores the text and shows it in the schema. The empty text removes the attribute.
    Value& SetExtendedType(std::string const& text);

    /// Returns the text of "extendedType", empty if there is none.
    std::string const& ExtendedType() const;

    /// Shows `used`, which tells whether the parameter is in use, in the schema. Throws `Zu::Status::BAD_ARGUMENT` for
    /// true while visibility is enabled.
    Value& EnableUsed(bool enable);

    /// Creates the `visibility` mask with the value 0 and shows it in the schema. False removes it. Throws
    /// `Zu::Status::BAD_ARGUMENT` for true while used is enabled.
    Value& EnableVisibility(bool enable);

    /// Shows `readOnly`, which is false until it is set, in the schema. From now on the parameter ignores validated
    /// writes while `readOnly` is true.
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

    // Null until one attribute is needed, possibly by a reader; the attributes are then the initial ones. The store of
    // the address publishes the complete object.
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

// The definitions, for enumerations in other libraries.
#include "ZuApi/Params/ValueDefinition.h"
