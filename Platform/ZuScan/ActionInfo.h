#pragma once

#include <string>

namespace ZuScan
{

/// One action that a scanner or a sensor offers.
class ActionInfo final
{
public:
    ActionInfo() = default;

    explicit ActionInfo(std::string actionId) : id(std::move(actionId))
    {
    }

    /// The name under which the action is called.
    std::string const& Id() const noexcept
    {
        return id;
    }

private:
    std::string id;
};

} // namespace ZuScan
