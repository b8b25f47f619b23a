#include "Host/Sensor/CommandTable.h"

#include "Host/Sensor/DeskIo.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Params/Group.h"
#include "ZuStdScanners/ZucSensor/AnalogOutputRecords.h"
#include "ZuStdScanners/ZucSensor/DigitalRecords.h"
#include "ZuStdScanners/ZucSensor/IoRecords.h"
#include "ZuStdScanners/ZucSensor/SerialOutputRecords.h"

namespace ZuHost
{

ActionTable::ActionTable(std::initializer_list<std::pair<std::string, Action>> newActions) : actions(newActions)
{
}

ActionTable::~ActionTable() = default;

std::vector<ZuScan::ActionInfo> ActionTable::ListActions() const
{
    std::vector<ZuScan::ActionInfo> list;
    for (auto const& action : actions)
    {
        list.emplace_back(action.first);
    }
    return list;
}

std::shared_ptr<Zu::Params::Group> ActionTable::GetActionParams(std::string const& id) const
{
    Find(id);
    return std::make_shared<Zu::Params::Group>();
}

std::shared_ptr<Zu::Params::Group> ActionTable::InvokeAction(std::string const& id,
                                                             std::shared_ptr<Zu::Params::Group> /*params*/)
{
    return Find(id)();
}

ActionTable::Action const& ActionTable::Find(std::string const& id) const
{
    for (auto const& action : actions)
    {
        if (action.first == id)
        {
            return action.second;
        }
    }
    ZU_THROW(Zu::Status::NOT_FOUND, "There is no action '%s'", id.c_str());
}

CommandTable::CommandTable() = default;

CommandTable::~CommandTable() = default;

std::vector<ZuScan::ActionInfo> CommandTable::ListActions() const
{
    std::vector<ZuScan::ActionInfo> list;
    for (Command const& command : commands)
    {
        list.emplace_back(command.id);
    }
    return list;
}

std::shared_ptr<Zu::Params::Group> CommandTable::GetActionParams(std::string const& id) const
{
    return Find(id).makeParams();
}

CommandTable::Result CommandTable::InvokeAction(std::string const& id, std::shared_ptr<Zu::Params::Group> params)
{
    Result result;
    if (!Find(id).invoke(params.get(), result))
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The command '%s' takes other arguments", id.c_str());
    }
    return result;
}

void CommandTable::Add(Command command)
{
    commands.push_back(std::move(command));
}

CommandTable::Command const& CommandTable::Find(std::string const& id) const
{
    for (Command const& command : commands)
    {
        if (command.id == id)
        {
            return command;
        }
    }
    ZU_THROW(Zu::Status::NOT_FOUND, "There is no command '%s'", id.c_str());
}

using namespace ZuStdScanners::ZucSensor;

namespace
{

using Result = CommandTable::Result;

// Each adds a command for one output or input. `step` gets the channel and the arguments.

template <typename Params>
void OfferToAnalog(CommandTable& table, DeskIo& io, char const* id,
                   void (*step)(DeskAnalogOutput&, Params const&, uint64 nowUsec))
{
    table.Offer<Params>(id, [&io, step](Params const& params) -> Result {
        io.UseAnalogOutput(params.index.Get(),
                           [&](DeskAnalogOutput& output, uint64 now) { step(output, params, now); });
        return nullptr;
    });
}

template <typename Params>
void OfferToSerial(CommandTable& table, DeskIo& io, char const* id, void (*step)(DeskSerialOutput&, Params const&))
{
    table.Offer<Params>(id, [&io, step](Params const& params) -> Result {
        io.UseSerialOutput(params.index.Get(), [&](DeskSerialOutput& output) { step(output, params); });
        return nullptr;
    });
}

template <typename Params>
void OfferToOutput(CommandTable& table, DeskIo& io, char const* id,
                   void (*step)(DeskDigitalOutput&, Params const&, uint64 nowUsec))
{
    table.Offer<Params>(id, [&io, step](Params const& params) -> Result {
        io.UseDigitalOutput(params.index.Get(),
                            [&](DeskDigitalOutput& output, uint64 now) { step(output, params, now); });
        return nullptr;
    });
}

template <typename Params>
void OfferToInput(CommandTable& table, DeskIo& io, char const* id, void (*step)(DeskDigitalInput&, Params const&))
{
    table.Offer<Params>(id, [&io, step](Params const& params) -> Result {
        io.UseDigitalInput(params.index.Get(), [&](DeskDigitalInput& input) { step(input, params); });
        return nullptr;
    });
}

void OfferToAll(CommandTable& table, DeskIo& io)
{
    table.Offer<EnableIoOutputAtParams>("enableIoOutputAt", [&io](EnableIoOutputAtParams const& params) -> Result {
        io.Enable(params.ioType.Get(), params.index.Get(), params.enable.Get());
        return nullptr;
    });
    table.Offer<QueryIoOutputEnabledParams>("queryIoOutputEnabledAt", [&io](QueryIoOutputEnabledParams const& params) {
        auto result = std::make_shared<QueryIoOutputEnabledResult>();
        result->enabled.Set(io.IsEnabled(params.ioType.Get(), params.index.Get()));
        return result;
    });
    table.Offer<QueryIoOutputCountParams>("queryIoOutputCount", [](QueryIoOutputCountParams const& params) {
        auto result = std::make_shared<QueryIoOutputCountResult>();
        result->count.Set(DeskIo::Count(params.ioType.Get()));
        return result;
    });
}

void OfferToDigitalOutputs(CommandTable& table, DeskIo& io)
{
    using Output = DeskDigitalOutput;
    OfferToOutput<IoIndexParams>(table, io, "digitalOutClear",
                                 [](Output& output, IoIndexParams const&, uint64) { output.Clear(); });
    OfferToOutput<DigitalOutputSetControlTypeParams>(
        table, io, "digitalOutSetControlType",
        [](Output& output, auto const& params, uint64) { output.SetControlType(params.controlType.Get()); });
    OfferToOutput<DigitalOutputSetControlIdParams>(
        table, io, "digitalOutSetControlId",
        [](Output& output, auto const& params, uint64) { output.SetControlId(params.controlId.Get()); });
    OfferToOutput<DigitalOutputSetExposureParams>(
        table, io, "digitalOutSetExposure",
        [](Output& output, auto const& params, uint64) { output.SetExposure(params.exposure.Get()); });
    OfferToOutput<DigitalOutputSetPolarityParams>(
        table, io, "digitalOutSetPolarity",
        [](Output& output, auto const& params, uint64) { output.SetPolarity(params.isActiveHigh.Get()); });
    OfferToOutput<DigitalOutputSetStateParams>(
        table, io, "digitalOutSetState",
        [](Output& output, auto const& params, uint64) { output.SetState(params.state.Get()); });
    OfferToOutput<IoIndexParams>(table, io, "digitalOutTrigger",
                                 [](Output& output, IoIndexParams const&, uint64 now) { output.Trigger(now); });
}

void OfferToDigitalInputs(CommandTable& table, DeskIo& io)
{
    using Input = DeskDigitalInput;
    OfferToInput<IoIndexParams>(table, io, "digitalInClear", [](Input& input, IoIndexParams const&) { input.Clear(); });
    OfferToInput<DigitalInputSetPinTypeParams>(
        table, io, "digitalInSetPinType", [](Input& input, auto const& params) { input.SetPin(params.pin.Get()); });
    OfferToInput<DigitalInputEnableEventsParams>(
        table, io, "digitalInEnableEvents",
        [](Input& input, auto const& params) { input.EnableEvents(params.pin.Get(), params.enable.Get()); });
}

void OfferToAnalogOutputs(CommandTable& table, DeskIo& io)
{
    using Output = DeskAnalogOutput;
    OfferToAnalog<AnalogOutputEnqueueOutputParams>(
        table, io, "analogOutEnqueueOutput",
        [](Output& output, auto const& params, uint64 now) { output.Enqueue(params.current.Get(), now); });
    table.Offer<IoIndexParams>("analogOutQueryConstraint", [&io](IoIndexParams const& params) {
        auto result = std::make_shared<AnalogOutputQueryConstraintResult>();
        io.UseAnalogOutput(params.index.Get(), [&result](Output&, uint64) {
            result->absoluteMin.Set(Output::MIN_CURRENT);
            result->absoluteMax.Set(Output::MAX_CURRENT);
        });
        return result;
    });
    OfferToAnalog<AnalogOutputSetControlIdParams>(
        table, io, "analogOutSetControlId",
        [](Output& output, auto const& params, uint64) { output.SetControlId(params.controlId.Get()); });
    OfferToAnalog<AnalogOutputSetControlTypeParams>(
        table, io, "analogOutSetControlType",
        [](Output& output, auto const& params, uint64) { output.SetControlType(params.controlType.Get()); });
}

void OfferToSerialOutputs(CommandTable& table, DeskIo& io)
{
    using Output = DeskSerialOutput;
    OfferToSerial<SerialOutputSetBitRateParams>(
        table, io, "serialOutSetBitRate",
        [](Output& output, auto const& params) { output.SetBitRate(params.bitRate.Get()); });
    OfferToSerial<SerialOutputSetControlIdParams>(
        table, io, "serialOutSetControlId",
        [](Output& output, auto const& params) { output.SetControlId(params.controlId.Get()); });
    OfferToSerial<SerialOutputSetModeParams>(table, io, "serialOutSetMode", [](Output& output, auto const& params) {
        output.SetMode(params.controlMode.Get());
    });
    OfferToSerial<SerialOutputSetControlTypeParams>(
        table, io, "serialOutSetControlType",
        [](Output& output, auto const& params) { output.SetControlType(params.controlType.Get()); });
    OfferToSerial<SerialOutputWriteParams>(table, io, "serialOutWrite", [](Output& output, auto const& params) {
        output.Write(params.size.Get(), params.buffer.Get());
    });
}

} // namespace

void OfferIoCommands(CommandTable& table, DeskIo& io)
{
    OfferToAll(table, io);
    OfferToDigitalOutputs(table, io);
    OfferToDigitalInputs(table, io);
    OfferToAnalogOutputs(table, io);
    OfferToSerialOutputs(table, io);
}

} // namespace ZuHost
