#pragma once

#include "ZuApi/Exception.h"

#include <ostream>
#include <string>
#include <utility>

namespace ZuTest
{

/// The status and the text of a refused call.
struct Refusal
{
    int32 status;
    std::string text;

    bool operator==(Refusal const&) const = default;
};

inline std::ostream& operator<<(std::ostream& stream, Refusal const& refusal)
{
    return stream << refusal.status << " \"" << refusal.text << '"';
}

/// Runs `action` and returns the status and text of the Zu::Exception that it throws; status 1 if it throws nothing.
template <typename Action>
Refusal RefusalOf(Action&& action)
{
    try
    {
        std::forward<Action>(action)();
    }
    catch (Zu::Exception const& exception)
    {
        return {exception.Status(), exception.what()};
    }
    return {Zu::Status::SUCCESS, ""};
}

} // namespace ZuTest
