#pragma once

#include "ZuControl/Export.h"

#include <string>

namespace ZuControl
{

/// Names one action of an action target.
class ZUCONTROL_API ControlActionInfo
{
public:
    /// `id` names the action for callers, `displayName` names it for a person.
    ControlActionInfo(char const* id, char const* displayName);
    ControlActionInfo(ControlActionInfo const&);
    ControlActionInfo(ControlActionInfo&&) noexcept;
    ControlActionInfo& operator=(ControlActionInfo const&);
    ControlActionInfo& operator=(ControlActionInfo&&) noexcept;
    ~ControlActionInfo();

    std::string const& Id() const;
    std::string const& DisplayName() const;

private:
    std::string id;
    std::string displayName;
};

} // namespace ZuControl
