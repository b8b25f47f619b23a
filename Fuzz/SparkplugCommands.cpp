// Input: the payload of a command message, as any client of the MQTT server may send it.
//
// Checks: a decoded payload is within the limits, a refused one leaves no metrics, and a command that is carried out has
// a known number and an argument that fits.

#include "Fuzz/Support/Check.h"
#include "Plugins/SparkplugMqtt/CommandPayload.h"
#include "Plugins/SparkplugMqtt/DeviceCommands.h"
#include "Plugins/SparkplugMqtt/HostState.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

using namespace SparkplugMqtt;
using namespace ZuControl::ControlProtocol;

namespace
{

void CheckMetrics(std::vector<CommandMetric> const& metrics)
{
    ZU_FUZZ_CHECK(metrics.size() <= CommandLimits::MOST_METRICS);
    for (CommandMetric const& metric : metrics)
    {
        ZU_FUZZ_CHECK(metric.name.size() <= CommandLimits::LONGEST_NAME);
        std::string const* const text = std::get_if<std::string>(&metric.value);
        ZU_FUZZ_CHECK(text == nullptr || text->size() <= CommandLimits::LONGEST_TEXT);
    }
}

void CheckCommand(DeviceCommand const& command)
{
    if (!command.refusal.empty())
    {
        ZU_FUZZ_CHECK(!command.name.empty());
        return;
    }
    ZU_FUZZ_CHECK(command.name.empty() == (command.id == CommandNone));
    ZU_FUZZ_CHECK((command.id == CommandLoadJob) != command.argument.empty());
    ZU_FUZZ_CHECK(command.argument.size() < ControlRegisterCommandData::TEXT_SIZE);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8 const* data, std::size_t size)
{
    std::vector<CommandMetric> metrics;
    if (DecodeCommand({data, size}, metrics))
    {
        CheckMetrics(metrics);
        CheckCommand(InterpretCommand(metrics));
    }
    else
    {
        ZU_FUZZ_CHECK(metrics.empty());
    }
    ReadHostState({reinterpret_cast<char const*>(data), size});
    return 0;
}
