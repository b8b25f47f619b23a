#include "ZuScan/ScanEngines.h"

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

ScanEngineInstance::ScanEngineInstance(std::string engineId) : id(std::move(engineId))
{
}

ScanEngineInstance::~ScanEngineInstance() = default;

ScannerInstance& ScanEngineInstance::AddScanner(std::string const& scannerId, IScanner& scanner,
                                                ICommandTarget* commands)
{
    if (std::ranges::any_of(scanners, [&](auto const& known) { return known->Id() == scannerId; }))
    {
        ZU_THROW(Zu::Status::ALREADY_EXISTS, "Scan engine %s has a scanner %s already", id.c_str(), scannerId.c_str());
    }
    return *scanners.emplace_back(std::make_unique<ScannerInstance>(scannerId, scanner, commands));
}

std::string const& ScanEngineInstance::Id() const
{
    return id;
}

std::vector<std::string> ScanEngineInstance::ListScanners() const
{
    std::vector<std::string> ids;
    ids.reserve(scanners.size());
    for (auto const& scanner : scanners)
    {
        ids.push_back(scanner->Id());
    }
    return ids;
}

ScannerInstance& ScanEngineInstance::FindScanner(std::string const& scannerId) const
{
    for (auto const& scanner : scanners)
    {
        if (scanner->Id() == scannerId)
        {
            return *scanner;
        }
    }
    ZU_THROW(Zu::Status::NOT_FOUND, "Scan engine %s has no scanner %s", id.c_str(), scannerId.c_str());
}

ScanEngineManager::ScanEngineManager() = default;

ScanEngineManager::~ScanEngineManager() = default;

ScanEngineInstance& ScanEngineManager::AddEngine(std::string const& name)
{
    if (std::ranges::any_of(engines, [&](auto const& known) { return known->Id() == name; }))
    {
        ZU_THROW(Zu::Status::ALREADY_EXISTS, "There is a scan engine %s already", name.c_str());
    }
    return *engines.emplace_back(std::make_unique<ScanEngineInstance>(name));
}

std::vector<std::string> ScanEngineManager::List() const
{
    std::vector<std::string> names;
    names.reserve(engines.size());
    for (auto const& engine : engines)
    {
        names.push_back(engine->Id());
    }
    return names;
}

ScanEngineInstance& ScanEngineManager::GetInstance(std::string const& name) const
{
    for (auto const& engine : engines)
    {
        if (engine->Id() == name)
        {
            return *engine;
        }
    }
    ZU_THROW(Zu::Status::NOT_FOUND, "There is no scan engine %s", name.c_str());
}

} // namespace ZuScan::Internal
