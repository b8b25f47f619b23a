#pragma once

#include "ZuApi/Params/Value.h"

#include <string>
#include <vector>

namespace Zu::Params
{

/// A parameter with a fixed list of options, each with a display text. Without options it refuses every change.
template <typename T>
class ZUAPI_API Enum : public Value<T>
{
public:
    Enum() : Enum(T{})
    {
    }

    explicit Enum(T initial) : Value<T>(&Enum::BuildSchema, initial)
    {
    }

    ~Enum() override = default;

    Enum(Enum const&) = delete;
    Enum& operator=(Enum const&) = delete;

    /// Copies the base, then the lists of values and texts.
    void CopyValues(Properties::Node const& other) override
    {
        auto const& source = dynamic_cast<Enum const&>(other);
        Value<T>::CopyValues(other);
        enumValues.Set(source.enumValues.Get());
        enumTexts.Set(source.enumTexts.Get());
    }

    /// Runs the checks of the base, then throws `Zu::Status::BAD_ARGUMENT` if `candidate` is not in the list of values.
    void CheckValidation(T const& candidate) override
    {
        Value<T>::CheckValidation(candidate);
        for (T const& option : enumValues.Get())
        {
            if (option == candidate)
            {
                return;
            }
        }
        this->Refuse(__LINE__, __FILE__, ZU_FUNCTION_LABEL, "%1$s was set to a value outside of the enum.",
                     "%s was set to a value outside of the enum.");
    }

    Enum& operator=(T const& newValue) override
    {
        this->Store(newValue);
        return *this;
    }

    Enum& Set(T const& newValue) override
    {
        this->Store(newValue);
        return *this;
    }

    /// Appends an option. The two lists run in parallel.
    Enum& AddOption(T value, std::string text)
    {
        enumValues.Modify([&](std::vector<T>& values) { values.push_back(value); });
        enumTexts.Modify([&](std::vector<std::string>& texts) { texts.push_back(std::move(text)); });
        return *this;
    }

    Properties::Value<std::vector<T>> enumValues;
    Properties::Value<std::vector<std::string>> enumTexts;

protected:
    static void BuildSchema(Properties::Node& node, Properties::Structure& schema)
    {
        auto& value = static_cast<Enum&>(node);
        Value<T>::BuildSchema(node, schema);
        schema.Register("enum", value.enumValues);
        schema.Register("enumText", value.enumTexts);
    }
};

} // namespace Zu::Params

/// Declares the parameter templates of an enumeration, for its header. They are compiled once, in the library that uses
/// `ZU_INSTANTIATE_ENUM_VALUE` in a source. Use both macros outside of any namespace.
#define ZU_DECLARE_ENUM_VALUE(Enumeration)                                                                             \
    extern template class Zu::Properties::Value<Enumeration>;                                                          \
    extern template class Zu::Properties::Value<std::vector<Enumeration>>;                                             \
    extern template class Zu::Params::Value<Enumeration>;                                                              \
    extern template class Zu::Params::Enum<Enumeration>

#define ZU_INSTANTIATE_ENUM_VALUE(Enumeration)                                                                         \
    template class Zu::Properties::Value<Enumeration>;                                                                 \
    template class Zu::Properties::Value<std::vector<Enumeration>>;                                                    \
    template class Zu::Params::Value<Enumeration>;                                                                     \
    template class Zu::Params::Enum<Enumeration>
