#pragma once

#include "wApi/wExport.h"

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

/// A scanner of an engine and its sensors. It owns none of them: they outlive it.
///
/// The host fills it before other threads see it; from then on any thread may look things up.
class ZUPLATFORM_API ScannerInstance final
{
public:
    /// `scannerCommands` is null when the scanner takes no commands.
    ScannerInstance(std::string scannerId, IScanner& describedScanner, ICommandTarget* scannerCommands);
    ~ScannerInstance();

    ScannerInstance(ScannerInstance const&) = delete;
    ScannerInstance& operator=(ScannerInstance const&) = delete;

    /// Adds a sensor behind those that are there. Throws -987 for an id that is taken.
    void AddSensor(std::string const& sensorId, ISensor& sensor);

    std::string const& Id() const;

    /// The ids in order of addition.
    std::vector<std::string> ListSensors() const;

    /// Throws -999 for an id that is not there.
    ISensor& FindSensor(std::string const& sensorId) const;

    IScanner& Scanner() const;

    /// Null when the scanner takes no commands.
    ICommandTarget* CommandTarget() const;

private:
    std::string const id;
    IScanner& scanner;
    ICommandTarget* const commands;
    std::vector<std::pair<std::string, ISensor*>> sensors; // few: searched in order
};

} // namespace ZuScan::Internal
