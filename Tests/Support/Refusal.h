#pragma once

#include "ZuApi/Exception.h"

#include <ostream>
#include <string>
#include <utility>

namespace ZuTest
{

/// What a refused call says.
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

/// Runs `action`, which is expected to throw a Zu::Exception, and gives what that says; status 1 when it threw nothing.
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
