#pragma once

#include "ZuApi/Params/StructBase.h"

#include <string>

namespace Zu::Params
{

/// What every record derives from.
class ZUAPI_API Group : public StructBase
{
public:
    explicit Group(std::string const& newExtendedType = {});
    ~Group() override;

    Group(Group const&) = delete;
    Group& operator=(Group const&) = delete;
};

} // namespace Zu::Params
