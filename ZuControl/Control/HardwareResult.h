#pragma once

#include "ZuApi/Params/Group.h"

#include <memory>
#include <typeinfo>

namespace ZuControl
{

/// The result of a command as a record of class `Result`. Throws std::bad_cast for a record of another class, or for
/// null.
template <typename Result>
Result const& HardwareResult(std::shared_ptr<Zu::Params::Group> const& given)
{
    auto const* const result = dynamic_cast<Result const*>(given.get());
    if (result == nullptr)
    {
        throw std::bad_cast();
    }
    return *result;
}

} // namespace ZuControl
