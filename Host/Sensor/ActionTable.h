#pragma once

#include "ZuScan/ICommandTarget.h"

#include <functional>
#include <initializer_list>
#include <utility>

namespace ZuHost
{

/// Actions without arguments, by name. Each action must be thread-safe.
class ActionTable final : public ZuScan::ICommandTarget
{
public:
    /// Returns the result, which may be null.
    using Action = std::function<std::shared_ptr<Zu::Params::Group>()>;

    ActionTable(std::initializer_list<std::pair<std::string, Action>> newActions);
    ~ActionTable() override;

    std::vector<ZuScan::ActionInfo> ListActions() const override;
    std::shared_ptr<Zu::Params::Group> GetActionParams(std::string const& id) const override;
    std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& id,
                                                    std::shared_ptr<Zu::Params::Group> params) override;

private:
    Action const& Find(std::string const& id) const;

    std::vector<std::pair<std::string, Action>> const actions; // few: linear search
};

} // namespace ZuHost
