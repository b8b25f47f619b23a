#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuScan/ICommandTarget.h"

#include <functional>
#include <utility>

namespace ZuHost
{

/// Commands with arguments, by name. What they do takes care of its own threads.
class CommandTable final : public ZuScan::ICommandTarget
{
public:
    using Result = std::shared_ptr<Zu::Params::Group>; ///< null where a command has none

    CommandTable();
    ~CommandTable() override;

    CommandTable(CommandTable const&) = delete;
    CommandTable& operator=(CommandTable const&) = delete;

    /// Adds a command whose arguments are the record `Params`. All are added before another thread sees the table.
    template <typename Params>
    void Offer(char const* id, std::function<Result(Params const&)> command)
    {
        Add({id, [] { return std::make_shared<Params>(); },
             [inner = std::move(command)](Zu::Params::Group const* given, Result& result) {
            auto const* const params = dynamic_cast<Params const*>(given);
            if (params != nullptr)
            {
                result = inner(*params);
            }
            return params != nullptr;
             }});
    }

    std::vector<ZuScan::ActionInfo> ListActions() const override;
    std::shared_ptr<Zu::Params::Group> GetActionParams(std::string const& id) const override;

    /// Throws -997 for arguments that are not of the record that the command takes.
    Result InvokeAction(std::string const& id, std::shared_ptr<Zu::Params::Group> params) override;

private:
    struct Command
    {
        std::string id;
        std::function<Result()> makeParams;
        std::function<bool(Zu::Params::Group const* given, Result& result)>
            invoke; // false for arguments of another kind
    };

    void Add(Command command);
    Command const& Find(std::string const& id) const;

    std::vector<Command> commands; // few: searched in order
};

} // namespace ZuHost
