#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuScan/Sensor.h"

#include <functional>
#include <initializer_list>
#include <utility>

namespace ZuHost
{

class DeskIo;

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

/// Adds the commands that drive the inputs and outputs. `io` outlives the table. Each command throws as the called
/// operation of `DeskIo` or of its channel does: `Zu::Status::NOT_FOUND` for a channel, `Zu::Status::BAD_ARGUMENT` for
/// an argument, `Zu::Status::WRONG_STATE` for a state, `Zu::Status::FULL` for a full queue.
void OfferIoCommands(CommandTable& table, DeskIo& io);

} // namespace ZuHost
