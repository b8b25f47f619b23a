#include "ZuScan/ScannerInstance.h"

#include "ZuApi/Exception.h"

#include <algorithm>

namespace ZuScan::Internal
{

ScannerInstance::ScannerInstance(std::string scannerId, IScanner& describedScanner, ICommandTarget* scannerCommands)
    : id(std::move(scannerId)), scanner(describedScanner), commands(scannerCommands)
{
}

ScannerInstance::~ScannerInstance() = default;

void ScannerInstance::AddSensor(std::string const& sensorId, ISensor& sensor)
{
    if (std::ranges::any_of(sensors, [&](auto const& known) { return known.first == sensorId; }))
    {
        ZU_THROW(Zu::Status::ALREADY_EXISTS, "Scanner %s has a sensor %s already", id.c_str(), sensorId.c_str());
    }
    sensors.emplace_back(sensorId, &sensor);
}

std::string const& ScannerInstance::Id() const
{
    return id;
}

std::vector<std::string> ScannerInstance::ListSensors() const
{
    std::vector<std::string> ids;
    ids.reserve(sensors.size());
    for (auto const& [sensorId, sensor] : sensors)
    {
        ids.push_back(sensorId);
    }
    return ids;
}

ISensor& ScannerInstance::FindSensor(std::string const& sensorId) const
{
    for (auto const& [knownId, sensor] : sensors)
    {
        if (knownId == sensorId)
        {
            return *sensor;
        }
    }
    ZU_THROW(Zu::Status::NOT_FOUND, "Scanner %s has no sensor %s", id.c_str(), sensorId.c_str());
}

IScanner& ScannerInstance::Scanner() const
{
    return scanner;
}

ICommandTarget* ScannerInstance::CommandTarget() const
{
    return commands;
}

} // namespace ZuScan::Internal
