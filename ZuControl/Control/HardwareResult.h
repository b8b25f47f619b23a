#pragma once

#include "ZuApi/Params/Group.h"

#include <memory>
#include <typeinfo>

namespace ZuControl
{

/// What a command gave, as the record that it is to give; std::bad_cast for another one, or none.
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
