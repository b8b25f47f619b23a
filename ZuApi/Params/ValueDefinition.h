#pragma once

#include "ZuApi/Exception.h"
#include "ZuApi/LazyBuildLock.h"
#include "ZuApi/Params/Value.h"
#include "ZuApi/Structure.h"
#include "wApi/wMutex.h"

#include <type_traits>
#include <utility>

namespace Zu::Params
{

template <typename T>
Value<T>::Value() : Value(T{})
{
}

template <typename T>
Value<T>::Value(T initial) : Value(&Value::BuildSchema, std::move(initial))
{
}

template <typename T>
Value<T>::Value(SchemaBuilder builder, T initial) : Properties::Value<T>(builder, std::move(initial))
{
}

template <typename T>
Value<T>::~Value()
{
    delete Made();
}

template <typename T>
void Value<T>::CopyValues(Properties::Node const& other)
{
    auto const& source = dynamic_cast<Value const&>(other);
    Set(source.Get());
    this->CopySchema(other);
    CopyParams(this->MadeSchema(), source);
    CopyAttributes(source);
}

template <typename T>
void Value<T>::CheckValidation(T const& candidate)
{
    ParamsBase::CheckValidation();
    if (IsReadOnlyRejected())
    {
        Make().rejectedValue = candidate;
    }
    if (Attributes const* const bounds = Made()) // the initial minimum refuses no value of the type
    {
        CheckBounds(*bounds, candidate, ZU_FUNCTION_LABEL);
    }
}

template <typename T>
Value<T>& Value<T>::operator=(T const& newValue)
{
    this->Store(newValue);
    return *this;
}

template <typename T>
T const& Value<T>::Get() const
{
    Attributes const* const made = Made();
    return made != nullptr && made->actual != nullptr ? made->actual->Get() : this->RawValue();
}

template <typename T>
Value<T>& Value<T>::Set(T const& newValue)
{
    this->Store(newValue);
    return *this;
}

template <typename T>
void Value<T>::ReadValue(Properties::IValueReader& reader)
{
    bool const isRejected = TakeReadOnlyRejected();
    T const incoming = Properties::Internal::ValueTransfer<T>::Read(reader);
    if (isRejected && incoming == Make().rejectedValue)
    {
        return;
    }
    Set(incoming);
}

template <typename T>
Value<T>& Value<T>::EnableUnits(bool enable)
{
    return Enable(&Attributes::units, "units", enable);
}

template <typename T>
Value<T>& Value<T>::EnableDescription(bool enable)
{
    return Enable(&Attributes::description, "description", enable);
}

template <typename T>
Value<T>& Value<T>::EnableActual(bool enable)
{
    return Enable(&Attributes::actual, "actual", enable);
}

template <typename T>
Value<T>& Value<T>::EnableMinimum(bool enable)
{
    if (enable && Made() == nullptr && HAS_MINIMUM_AT_BIRTH)
    {
        return *this;
    }
    return Enable(&Attributes::minimum, "minimum", enable);
}

template <typename T>
Value<T>& Value<T>::EnableMaximum(bool enable)
{
    return Enable(&Attributes::maximum, "maximum", enable);
}

template <typename T>
Value<T>& Value<T>::EnableExclusiveMinimum(bool enable)
{
    return Enable(&Attributes::exclusiveMinimum, "exclusiveMinimum", enable);
}

template <typename T>
Value<T>& Value<T>::EnableExclusiveMaximum(bool enable)
{
    return Enable(&Attributes::exclusiveMaximum, "exclusiveMaximum", enable);
}

template <typename T>
Value<T>& Value<T>::EnableScale(bool enable)
{
    return Enable(&Attributes::scale, "scale", enable);
}

template <typename T>
Value<T>& Value<T>::EnableFormat(bool enable)
{
    return Enable(&Attributes::format, "format", enable);
}

template <typename T>
Properties::Value<std::string>& Value<T>::GetUnits() const
{
    return Require(&Attributes::units, "Must enable 'units' before using it.", ZU_FUNCTION_LABEL);
}

template <typename T>
Properties::Value<std::string>& Value<T>::GetDescription() const
{
    return Require(&Attributes::description, "Must enable 'description' before using it.", ZU_FUNCTION_LABEL);
}

template <typename T>
Properties::Value<T>& Value<T>::GetActual() const
{
    return Require(&Attributes::actual, "Must enable 'actual' before using it.", ZU_FUNCTION_LABEL);
}

template <typename T>
Properties::Value<T>& Value<T>::GetMinimum() const
{
    if (IsMinimumEnabled())
    {
        Make(); // creates the node of the initial minimum
    }
    return Require(&Attributes::minimum, "Must enable 'minimum' before using it.", ZU_FUNCTION_LABEL);
}

template <typename T>
Properties::Value<T>& Value<T>::GetMaximum() const
{
    return Require(&Attributes::maximum, "Must enable 'maximum' before using it.", ZU_FUNCTION_LABEL);
}

template <typename T>
Properties::Value<T>& Value<T>::GetExclusiveMinimum() const
{
    return Require(&Attributes::exclusiveMinimum, "Must enable 'exclusiveMinimum' before using it.", ZU_FUNCTION_LABEL);
}

template <typename T>
Properties::Value<T>& Value<T>::GetExclusiveMaximum() const
{
    return Require(&Attributes::exclusiveMaximum, "Must enable 'exclusiveMaximum' before using it.", ZU_FUNCTION_LABEL);
}

template <typename T>
Properties::Value<ScaleOption>& Value<T>::GetScale() const
{
    return Require(&Attributes::scale, "Must enable 'scale' before using it.", ZU_FUNCTION_LABEL);
}

template <typename T>
Properties::Value<std::string>& Value<T>::GetFormat() const
{
    return Require(&Attributes::format, "Must enable 'format' before using it.", ZU_FUNCTION_LABEL);
}

template <typename T>
Value<T>& Value<T>::SetMinimum(T bound)
{
    if (!IsMinimumEnabled())
    {
        ZU_THROW(Status::BAD_ARGUMENT, "Must enable 'minimum' before setting the value.");
    }
    if (Made() != nullptr || !(bound == T{}))
    {
        Make().minimum->Set(bound);
    }
    return *this;
}

template <typename T>
Value<T>& Value<T>::SetExtendedType(std::string const& text)
{
    Enable(&Attributes::extendedType, "extendedType", !text.empty());
    if (!text.empty())
    {
        Make().extendedType->Set(text);
    }
    return *this;
}

template <typename T>
std::string const& Value<T>::ExtendedType() const
{
    static std::string const none;
    Attributes const* const made = Made();
    return made != nullptr && made->extendedType != nullptr ? made->extendedType->Get() : none;
}

template <typename T>
Value<T>& Value<T>::EnableUsed(bool enable)
{
    ParamsBase::EnableUsed(this->MadeSchema(), enable);
    return *this;
}

template <typename T>
Value<T>& Value<T>::EnableVisibility(bool enable)
{
    ParamsBase::EnableVisibility(this->MadeSchema(), enable);
    return *this;
}

template <typename T>
Value<T>& Value<T>::EnableReadOnly()
{
    ParamsBase::EnableReadOnly(this->MadeSchema());
    return *this;
}

template <typename T>
void Value<T>::BuildSchema(Properties::Node& node, Properties::Structure& schema)
{
    auto& value = static_cast<Value&>(node);
    Properties::Value<T>::BuildSchema(node, schema);
    value.EnterParams(schema);
    if (value.Made() == nullptr && !HAS_MINIMUM_AT_BIRTH)
    {
        return;
    }
    Attributes const& made = value.Make();
    auto const enter = [&schema](char const* key, auto const& attribute) {
        if (attribute != nullptr)
        {
            schema.Register(key, *attribute);
        }
    };
    enter("units", made.units);
    enter("description", made.description);
    enter("actual", made.actual);
    enter("minimum", made.minimum);
    enter("maximum", made.maximum);
    enter("exclusiveMinimum", made.exclusiveMinimum);
    enter("exclusiveMaximum", made.exclusiveMaximum);
    enter("scale", made.scale);
    enter("extendedType", made.extendedType);
    enter("format", made.format);
}

template <typename T>
typename Value<T>::Attributes* Value<T>::Made() const
{
    return attributes.load(std::memory_order_acquire);
}

template <typename T>
typename Value<T>::Attributes& Value<T>::Make() const
{
    if (Attributes* const made = Made())
    {
        return *made;
    }
    Zu::MutexLock const guard(Properties::Internal::LazyBuildLock());
    if (Made() == nullptr)
    {
        auto made = std::make_unique<Attributes>();
        SetToBirth(*made);
        attributes.store(made.release(), std::memory_order_release);
    }
    return *Made();
}

template <typename T>
void Value<T>::SetToBirth(Attributes& attributes)
{
    if constexpr (HAS_MINIMUM_AT_BIRTH)
    {
        attributes.minimum = std::make_unique<Properties::Value<T>>();
    }
}

template <typename T>
bool Value<T>::IsMinimumEnabled() const
{
    Attributes const* const made = Made();
    return made != nullptr ? made->minimum != nullptr : HAS_MINIMUM_AT_BIRTH;
}

template <typename T>
template <typename Attribute>
Value<T>& Value<T>::Enable(std::unique_ptr<Attribute> Attributes::*member, char const* key, bool enable)
{
    if (!enable && Made() == nullptr && !HAS_MINIMUM_AT_BIRTH)
    {
        return *this; // no attribute to disable
    }
    std::unique_ptr<Attribute>& attribute = Make().*member;
    if (!enable)
    {
        if (attribute != nullptr)
        {
            this->RemoveFromSchema(key);
            attribute.reset();
        }
        return *this;
    }
    if (attribute == nullptr)
    {
        attribute = std::make_unique<Attribute>();
        if constexpr (std::is_same_v<Attribute, Properties::Value<ScaleOption>>)
        {
            attribute->Set(ScaleOption::LINEAR);
        }
    }
    this->UpdateSchema(key, *attribute);
    return *this;
}

template <typename T>
template <typename Attribute>
Attribute& Value<T>::Require(std::unique_ptr<Attribute> Attributes::*member, char const* message,
                             char const* label) const
{
    Attributes const* const made = Made();
    if (made == nullptr || made->*member == nullptr)
    {
        throw Exception(__LINE__, __FILE__, Status::BAD_ARGUMENT, label, "%s", message);
    }
    return *(made->*member);
}

template <typename T>
template <typename Attribute>
void Value<T>::CopyAttribute(std::unique_ptr<Attribute> Attributes::*member, Attributes const& source)
{
    if (source.*member != nullptr)
    {
        (Make().*member)->Set((source.*member)->Get());
    }
}

template <typename T>
void Value<T>::CheckBounds(Attributes const& bounds, T const& candidate, char const* label) const
{
    if (bounds.minimum != nullptr && candidate < bounds.minimum->Get())
    {
        this->Refuse(__LINE__, __FILE__, label, "%1$s was set to be less than its minimum.",
                     "%s was set to be less than its minimum.");
    }
    if (bounds.maximum != nullptr && candidate > bounds.maximum->Get())
    {
        this->Refuse(__LINE__, __FILE__, label, "%1$s was set to be greater than its maximum.",
                     "%s was set to be greater than its maximum.");
    }
    if (bounds.exclusiveMinimum != nullptr && candidate <= bounds.exclusiveMinimum->Get())
    {
        this->Refuse(__LINE__, __FILE__, label, "%1$s was set to be less than or equal to its exclusive minimum.",
                     "%s was set to be less than or equal to its exclusive minimum.");
    }
    if (bounds.exclusiveMaximum != nullptr && candidate >= bounds.exclusiveMaximum->Get())
    {
        this->Refuse(__LINE__, __FILE__, label, "%1$s was set to be greater than or equal to its exclusive maximum.",
                     "%s was set to be greater than or equal to its exclusive maximum.");
    }
}

template <typename T>
void Value<T>::CopyAttributes(Value const& source)
{
    if (Made() == nullptr && source.Made() == nullptr)
    {
        return; // both have the initial attributes
    }
    Attributes atBirth;
    SetToBirth(atBirth);
    Attributes const& from = source.Made() != nullptr ? *source.Made() : atBirth;
    EnableUnits(from.units != nullptr);
    EnableDescription(from.description != nullptr);
    EnableActual(from.actual != nullptr);
    EnableMinimum(from.minimum != nullptr);
    EnableMaximum(from.maximum != nullptr);
    EnableExclusiveMinimum(from.exclusiveMinimum != nullptr);
    EnableExclusiveMaximum(from.exclusiveMaximum != nullptr);
    EnableScale(from.scale != nullptr);
    EnableFormat(from.format != nullptr);
    CopyAttribute(&Attributes::units, from);
    CopyAttribute(&Attributes::description, from);
    CopyAttribute(&Attributes::actual, from);
    CopyAttribute(&Attributes::minimum, from);
    CopyAttribute(&Attributes::maximum, from);
    CopyAttribute(&Attributes::exclusiveMinimum, from);
    CopyAttribute(&Attributes::exclusiveMaximum, from);
    CopyAttribute(&Attributes::scale, from);
    SetExtendedType(source.ExtendedType());
    CopyAttribute(&Attributes::format, from);
}

} // namespace Zu::Params
