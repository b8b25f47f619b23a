#pragma once

#include "ZuApi/Params/StructBase.h"

#include <string>

namespace Zu::Params
{

/// The base of every record.
class ZUAPI_API Group : public StructBase
{
public:
    explicit Group(std::string const& newExtendedType = {});
    ~Group() override;

    Group(Group const&) = delete;
    Group& operator=(Group const&) = delete;
};

} // namespace Zu::Params
