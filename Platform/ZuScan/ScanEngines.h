#pragma once

#include "wApi/wExport.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ZuScan
{
class ICommandTarget;
class IScanner;
class ISensor;
} // namespace ZuScan

namespace ZuScan::Internal
{

/// A scanner of an engine and its sensors. It refers to scanner, sensors and command target without owning them; they
/// must outlive it.
///
/// The host fills it before other threads can access it. Afterwards any thread may read it.
class ZUPLATFORM_API ScannerInstance final
{
public:
    /// `scannerCommands` is null if the scanner takes no commands.
    ScannerInstance(std::string scannerId, IScanner& describedScanner, ICommandTarget* scannerCommands);
    ~ScannerInstance();

    ScannerInstance(ScannerInstance const&) = delete;
    ScannerInstance& operator=(ScannerInstance const&) = delete;

    /// Appends a sensor. Throws `Zu::Status::ALREADY_EXISTS` if the id is in use.
    void AddSensor(std::string const& sensorId, ISensor& sensor);

    std::string const& Id() const;

    /// The ids in order of addition.
    std::vector<std::string> ListSensors() const;

    /// Throws `Zu::Status::NOT_FOUND` for an unknown id.
    ISensor& FindSensor(std::string const& sensorId) const;

    IScanner& Scanner() const;

    /// Returns null if the scanner takes no commands.
    ICommandTarget* CommandTarget() const;

private:
    std::string const id;
    IScanner& scanner;
    ICommandTarget* const commands;
    std::vector<std::pair<std::string, ISensor*>> sensors; // few: searched in order
};

/// A scan engine and its scanners.
///
/// The host fills it before other threads can access it. Afterwards any thread may read it.
class ZUPLATFORM_API ScanEngineInstance final
{
public:
    explicit ScanEngineInstance(std::string engineId);
    ~ScanEngineInstance();

    ScanEngineInstance(ScanEngineInstance const&) = delete;
    ScanEngineInstance& operator=(ScanEngineInstance const&) = delete;

    /// Makes and appends a scanner; the arguments are those of the `ScannerInstance` constructor. Throws
    /// `Zu::Status::ALREADY_EXISTS` if the id is in use.
    ScannerInstance& AddScanner(std::string const& scannerId, IScanner& scanner, ICommandTarget* commands);

    /// The engine's name.
    std::string const& Id() const;

    /// The ids in order of addition.
    std::vector<std::string> ListScanners() const;

    /// Throws `Zu::Status::NOT_FOUND` for an unknown id.
    ScannerInstance& FindScanner(std::string const& scannerId) const;

private:
    std::string const id;
    std::vector<std::unique_ptr<ScannerInstance>> scanners; // few: searched in order
};

/// All scan engines of the application.
///
/// The host fills it before other threads can access it. Afterwards any thread may read it.
class ZUPLATFORM_API ScanEngineManager final
{
public:
    ScanEngineManager();
    ~ScanEngineManager();

    ScanEngineManager(ScanEngineManager const&) = delete;
    ScanEngineManager& operator=(ScanEngineManager const&) = delete;

    /// Makes and appends an engine. Throws `Zu::Status::ALREADY_EXISTS` if the name is in use.
    ScanEngineInstance& AddEngine(std::string const& name);

    /// The names in order of addition.
    std::vector<std::string> List() const;

    /// Throws `Zu::Status::NOT_FOUND` for an unknown name.
    ScanEngineInstance& GetInstance(std::string const& name) const;

private:
    std::vector<std::unique_ptr<ScanEngineInstance>> engines; // few: searched in order
};

} // namespace ZuScan::Internal
