#include "ZuControl/Control/ControlActionInfo.h"

#include <utility>

namespace ZuControl
{

ControlActionInfo::ControlActionInfo(char const* idText, char const* displayNameText)
    : id(idText != nullptr ? idText : ""), displayName(displayNameText != nullptr ? displayNameText : "")
{
}

ControlActionInfo::ControlActionInfo(ControlActionInfo const&) = default;
ControlActionInfo::ControlActionInfo(ControlActionInfo&&) noexcept = default;
ControlActionInfo& ControlActionInfo::operator=(ControlActionInfo const&) = default;
ControlActionInfo& ControlActionInfo::operator=(ControlActionInfo&&) noexcept = default;
ControlActionInfo::~ControlActionInfo() = default;

std::string const& ControlActionInfo::Id() const
{
    return id;
}

std::string const& ControlActionInfo::DisplayName() const
{
    return displayName;
}

} // namespace ZuControl
