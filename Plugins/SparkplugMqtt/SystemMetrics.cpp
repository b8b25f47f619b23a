#include "Plugins/SparkplugMqtt/SystemMetrics.h"

#include <optional>

namespace SparkplugMqtt
{

namespace
{

constexpr uint64 FIRST_ALIAS = 1;

char const* NameOfRunState(uint8 runState)
{
    constexpr char const* NAMES[] = {"ready", "running", "error"};
    return runState < std::size(NAMES) ? NAMES[runState] : "unknown";
}

} // namespace

void SystemMetrics::Take(PluginCommon::StateFetcher::State const& state)
{
    present.runState = NameOfRunState(state.system.stateByte0);
    present.job.assign(state.system.jobFileName, state.system.jobFileNameLength);
    present.alignment = state.scanner.scannerByte0;
    present.isLaserOn = state.scanner.scannerByte1 != 0;
    present.problems = state.system.stateByte3;
}

void SystemMetrics::WriteChanges(MetricWriter& writer, uint64 utcMsec)
{
    Write(writer, utcMsec, nullptr);
}

void SystemMetrics::WriteBirth(MetricWriter& birth, uint64 utcMsec, std::vector<uint64>& aliases)
{
    Write(birth, utcMsec, &aliases);
}

/// Writes all metrics into a birth, which has aliases; otherwise the changed ones.
void SystemMetrics::Write(MetricWriter& writer, uint64 utcMsec, std::vector<uint64>* aliases)
{
    uint64 alias = FIRST_ALIAS;
    auto const one = [&](std::string_view name, DataType type, MetricValue const& value, bool hasChanged) {
        bool const isBirth = aliases != nullptr;
        if (isBirth)
        {
            aliases->push_back(alias);
        }
        if (isBirth || hasChanged)
        {
            writer.Add({.name = isBirth ? name : std::string_view(),
                        .alias = alias,
                        .timestampMsec = utcMsec,
                        .type = isBirth ? std::optional(type) : std::nullopt,
                        .value = value});
        }
        ++alias;
    };
    one("State/Run State", DataType::STRING, std::string_view(present.runState), present.runState != told.runState);
    one("State/Job", DataType::STRING, std::string_view(present.job), present.job != told.job);
    one("State/Alignment", DataType::UINT64, uint64{present.alignment}, present.alignment != told.alignment);
    one("State/Laser", DataType::BOOLEAN, present.isLaserOn, present.isLaserOn != told.isLaserOn);
    one("State/Problems", DataType::UINT64, uint64{present.problems}, present.problems != told.problems);
    told = present;
}

} // namespace SparkplugMqtt
