#include "Host/Operation/SensorFigures.h"

#include "Host/Module/SensorModule.h"
#include "wApi/wTime.h"

#include <algorithm>

namespace ZuHost
{

namespace
{

constexpr std::size_t SHOWN_BYTES = 64;
constexpr double USEC_A_SECOND = 1e6;

using IoType = DeskIo::IoType;

std::string EndOf(std::string const& sent)
{
    std::string end = sent.substr(sent.size() - std::min(sent.size(), SHOWN_BYTES));
    std::ranges::replace_if(
        end, [](char character) { return character < ' ' || character > '~'; }, '?');
    return end;
}

void AddOutputs(SensorFigures& figures, DeskIo& io)
{
    for (uint64 i = 0; i < DeskIo::Count(IoType::DIGITAL_OUTPUT); ++i)
    {
        io.UseDigitalOutput(i, [&](DeskDigitalOutput& output, uint64 nowUsec) {
            double const ageSec = static_cast<double>(nowUsec - output.LastPulseUsec()) / USEC_A_SECOND;
            figures.digitalOutputs.push_back({output.IsEnabled(), output.Level(nowUsec), output.PulseCount(), ageSec});
        });
    }
    for (uint64 i = 0; i < DeskIo::Count(IoType::ANALOG_OUTPUT); ++i)
    {
        io.UseAnalogOutput(i, [&](DeskAnalogOutput& output, uint64 nowUsec) {
            figures.analogOutputs.push_back({output.IsEnabled(), output.Current(nowUsec)});
        });
    }
    for (uint64 i = 0; i < DeskIo::Count(IoType::SERIAL_OUTPUT); ++i)
    {
        io.UseSerialOutput(i, [&](DeskSerialOutput& output) {
            figures.serialOutputs.push_back({output.IsEnabled(), output.SentCount(), EndOf(output.Sent())});
        });
    }
}

void AddInputs(SensorFigures& figures, DeskIo const& io)
{
    uint16 const bits = io.InputBits();
    for (uint64 i = 0; i < DeskIo::Count(IoType::DIGITAL_INPUT); ++i)
    {
        figures.digitalInputs.push_back({io.IsEnabled(IoType::DIGITAL_INPUT, i), (bits >> i & 1U) != 0});
    }
}

} // namespace

SensorFigures SensorFigures::Of(SensorModule& module)
{
    Sensor& sensor = module.UsedSensor();
    SensorFigures figures;
    figures.state = module.Core().GetRunState();
    figures.setRateHz = sensor.RateHz();
    figures.rateHz = figures.state == ZuCore::RunState::RUNNING ? sensor.Frames().RateHz(wTime_NowUsec()) : 0;
    figures.taken = sensor.PublishedCount();
    figures.missed = sensor.MissedCount();
    figures.droppedSets = module.ResultHub().DroppedCount();
    AddOutputs(figures, sensor.Io());
    AddInputs(figures, sensor.Io());
    return figures;
}

} // namespace ZuHost
