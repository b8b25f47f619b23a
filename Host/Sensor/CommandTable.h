#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuScan/ICommandTarget.h"

#include <functional>
#include <utility>

namespace ZuHost
{

/// Commands with arguments, by name. Each command must be thread-safe.
class CommandTable final : public ZuScan::ICommandTarget
{
public:
    using Result = std::shared_ptr<Zu::Params::Group>; ///< null if the command has no result

    CommandTable();
    ~CommandTable() override;

    CommandTable(CommandTable const&) = delete;
    CommandTable& operator=(CommandTable const&) = delete;

    /// Adds a command that takes a `Params` record. Add all commands before another thread uses the table.
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

    /// Throws `Zu::Status::BAD_ARGUMENT` if `params` is not the record type of the command.
    Result InvokeAction(std::string const& id, std::shared_ptr<Zu::Params::Group> params) override;

private:
    struct Command
    {
        std::string id;
        std::function<Result()> makeParams;
        /// Returns false for arguments of another type.
        std::function<bool(Zu::Params::Group const* given, Result& result)> invoke;
    };

    void Add(Command command);
    Command const& Find(std::string const& id) const;

    std::vector<Command> commands; // few: linear search
};

} // namespace ZuHost
